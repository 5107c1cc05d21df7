// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window/WebPages.h"

#include "platform/desktop/Bundle.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>

namespace tidewright {

namespace {

QByteArray packagedAddresses()
{
    const QString path = bundle::resource(QStringLiteral("web-pages.json"));
    QFile file(path);
    return !path.isEmpty() && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QUrl urlOf(const QString &address)
{
    const QUrl url(address);
    if (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http")) {
        return url;
    }
    const bool isFileName = !address.isEmpty() && url.scheme().isEmpty();
    const QString path = isFileName ? bundle::resource(address) : QString();
    return path.isEmpty() ? QUrl() : QUrl::fromLocalFile(path);
}

} // namespace

WebPages::WebPages()
    : WebPages(packagedAddresses())
{
}

WebPages::WebPages(const QByteArray &json)
{
    const QJsonObject addresses = QJsonDocument::fromJson(json).object();
    const std::pair<WebPage, const char *> keys[]
        = {{WebPage::Documentation, "documentation"}, {WebPage::ReportIssue, "issues"},
            {WebPage::Feedback, "feedback"}, {WebPage::Changelog, "changelog"}, {WebPage::MoreApps, "home"}};
    for (const auto &[page, key] : keys) {
        const QUrl url = urlOf(addresses.value(QLatin1String(key)).toString());
        if (url.isValid()) {
            m_addresses.insert(page, url);
        }
    }
}

QUrl WebPages::address(WebPage page, const QString &versionNumber) const
{
    QUrl url = m_addresses.value(page);
    if (page == WebPage::Feedback && !url.isEmpty()) {
        QUrlQuery query(url);
        query.addQueryItem(QStringLiteral("product_name"), QStringLiteral("Tidewright"));
        query.addQueryItem(QStringLiteral("version_number"),
            QString(versionNumber).replace(QLatin1Char(' '), QLatin1Char('+')));
        url.setQuery(query);
    }
    return url;
}

} // namespace tidewright

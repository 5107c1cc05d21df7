// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/live/LiveRequests.h"

#include "core/KubeCtl.h"
#include "resources/decoding/ListDecoder.h"
#include "resources/decoding/ObjectLines.h"
#include "resources/decoding/TemplateDecoder.h"
#include "resources/decoding/WatchDecoder.h"
#include "resources/live/ResourcePaths.h"

#include <QUrl>

#include <algorithm>
#include <utility>

namespace tidewright {

namespace {

/// Objects of the first page: more than a screen's worth.
constexpr qint64 firstPage = 500;
/// A run of kubectl takes a while before it asks, so the rest comes in few. None is a burden to a server.
constexpr qint64 pageBytes = qint64(64) << 20;
constexpr qint64 smallestPage = 100;
constexpr qint64 largestPage = 32'000;
const auto tellsOfTheAnswer = QStringLiteral("-v=6");

/// Collects what is not about objects.
class TextDecoder : public LiveDecoder
{
public:
    void take(QByteArrayView bytes, std::vector<LiveChange> &) override { m_run.text += bytes; }
};

QString escaped(const QByteArray &value)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(QString::fromUtf8(value)));
}

qint64 pageAfter(const LiveRun &page)
{
    const qint64 objectBytes = page.bytes / std::max<qint64>(page.objects, 1) + 1;
    return std::clamp(pageBytes / objectBytes, smallestPage, largestPage);
}

} // namespace

LiveRequests::LiveRequests(std::shared_ptr<const ResourceKind> kind, LivePlace place)
    : m_kind(std::move(kind))
    , m_place(std::move(place))
{
    QString problem = QStringLiteral("What kubectl prints of this kind cannot be followed.");
    if (!m_kind->isConfidential) {
        QString unknown;
        auto lines = std::make_shared<ObjectLines>(*m_kind, unknown);
        if (unknown.isEmpty()) {
            m_lines = std::move(lines);
            return;
        }
        problem = unknown;
    }
    if (!watchOutputArguments(*m_kind)) {
        m_obstacle = problem;
    }
}

ResourcePaths &LiveRequests::paths() const
{
    return ResourcePaths::of(m_place.server);
}

LiveRequest LiveRequests::page(const LiveRun *before) const
{
    const QString query = before
        ? QStringLiteral("?limit=%1&continue=%2").arg(pageAfter(*before)).arg(escaped(before->continueToken))
        : QStringLiteral("?limit=%1").arg(firstPage);
    const QString place = path(query);
    return place.isEmpty() ? LiveRequest()
                           : get({QStringLiteral("--raw"), place}, std::make_shared<ListDecoder>(m_lines));
}

LiveRequest LiveRequests::watch(const QByteArray &version) const
{
    if (isRaw()) {
        return rawWatch(QStringLiteral("&resourceVersion=%1").arg(escaped(version)));
    }
    QStringList arguments{tellsOfTheAnswer, m_kind->listWord};
    if (m_kind->namespaced) {
        arguments += namespaceArgument(m_place.nameSpace);
    }
    arguments += labelSelectorArguments(m_place.labelSelector);
    arguments += watchOutputArguments(*m_kind).value_or(QStringList());
    return get(arguments, std::make_shared<TemplateDecoder>());
}

LiveRequest LiveRequests::stateAndWatch() const
{
    return rawWatch(QStringLiteral("&sendInitialEvents=true&resourceVersionMatch=NotOlderThan"));
}

LiveRequest LiveRequests::rawWatch(const QString &parameters) const
{
    const QString place = path(QStringLiteral("?watch=1&allowWatchBookmarks=true") + parameters);
    return place.isEmpty()
        ? LiveRequest()
        : get({tellsOfTheAnswer, QStringLiteral("--raw"), place}, std::make_shared<WatchDecoder>(m_lines));
}

LiveRequest LiveRequests::discovery() const
{
    return {context() + ResourcePaths::discoveryArguments(), std::make_shared<TextDecoder>()};
}

LiveRequest LiveRequests::get(const QStringList &arguments, std::shared_ptr<LiveDecoder> decoder) const
{
    return {QStringList(QStringLiteral("get")) + context() + arguments, std::move(decoder)};
}

QStringList LiveRequests::context() const
{
    return m_place.context.isEmpty() ? QStringList() : QStringList(contextArgument(m_place.context));
}

QString LiveRequests::path(const QString &query) const
{
    auto path = paths().find(m_kind->listWord);
    if (!path && !m_kind->apiVersion.isEmpty()) {
        path = {m_kind->apiVersion, m_kind->listWord.section(QLatin1Char('.'), 0, 0), m_kind->namespaced};
    }
    return path && path->isWatchable ? path->listPath(m_place.server, m_place.nameSpace) + query
            + labelSelectorQuery(m_place.labelSelector)
                                     : QString();
}

} // namespace tidewright

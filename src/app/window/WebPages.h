// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QUrl>

namespace tidewright {

enum class WebPage { Documentation, ReportIssue, Feedback, Changelog, MoreApps };

/// The pages that the Help menu opens. Their addresses are the packager's: a JSON object in the package
/// (share/tidewright/web-pages.json) of "documentation", "issues", "feedback", "changelog" and "home", each
/// an http or https address, or the name of a file of the package, or empty when there is no such page.
class WebPages
{
public:
    /// Of the package; without a file that can be read there are no pages.
    WebPages();
    explicit WebPages(const QByteArray &json);

    /// Empty when there is no such page. The feedback page is told the product and its version.
    QUrl address(WebPage page, const QString &versionNumber) const;
    bool has(WebPage page) const { return m_addresses.contains(page); }

private:
    QHash<WebPage, QUrl> m_addresses;
};

} // namespace tidewright

// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/preview/RelationsLine.h"

#include "platform/text/DisplayText.h"

namespace tidewright {

namespace {

constexpr int mostOfOneTitle = 8;
constexpr qsizetype longestName = 80;

/// Titles and names stay whole where the line wraps.
QString unbroken(const QString &html)
{
    return QLatin1String("<span style=\"white-space:nowrap\">") + html + QLatin1String("</span>");
}

} // namespace

RelationsLine::RelationsLine()
{
    setTextFormat(Qt::RichText); // of texts that are escaped here
    setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    setFocusPolicy(Qt::StrongFocus);
    setWordWrap(true);
    setContentsMargins(12, 0, 12, 8);
    setAccessibleName(tr("Relations"));
    connect(this, &QLabel::linkActivated, this, [this](const QString &link) {
        if (const auto index = link.toUInt(); index < m_relations.size()) {
            Q_EMIT followed(Relation(m_relations[index]));
        }
    });
    hide();
}

QString RelationsLine::linkText(std::size_t index, bool isLink) const
{
    const Relation &relation = m_relations[index];
    const QString name = relation.object.name.isEmpty() ? tr("show all") : relation.object.name;
    const QString shown = display_text::shortened(display_text::clean(name), longestName, 1).toHtmlEscaped();
    return isLink ? unbroken(QStringLiteral("<a href=\"%1\">").arg(index) + shown + QLatin1String("</a>"))
        : relation.object.nameSpace.isEmpty()
        ? shown
        : tr("%1 (in %2)")
              .arg(shown, display_text::clean(relation.object.nameSpace).left(longestName).toHtmlEscaped());
}

void RelationsLine::show(
    const std::vector<Relation> &relations, const std::function<bool(const Relation &)> &canFollow)
{
    m_relations = relations;
    QStringList groups;
    for (std::size_t i = 0; i < relations.size();) {
        const QString &title = relations[i].title;
        QStringList names;
        int left = 0;
        for (; i < relations.size() && relations[i].title == title; ++i) {
            if (names.size() < mostOfOneTitle) {
                names.append(linkText(i, canFollow(relations[i])));
            } else {
                ++left;
            }
        }
        groups.append(unbroken(QStringLiteral("<b>%1</b>").arg(title.toHtmlEscaped()))
            + QLatin1String("&nbsp;") + names.join(QLatin1String(", "))
            + (left > 0 ? tr(" and %1 more").arg(left) : QString()));
    }
    setText(groups.join(QStringLiteral(" &nbsp;·&nbsp; ")));
    setVisible(!groups.isEmpty());
}

void RelationsLine::clearRelations()
{
    m_relations.clear();
    clear();
}

} // namespace tidewright

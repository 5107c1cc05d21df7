// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/OtherKinds.h"

#include "app/content/KindTabs.h"
#include "app/content/OtherKindsDialog.h"
#include "app/content/PrimaryContentController.h"
#include "app/content/SidebarController.h"
#include "platform/settings/UserDefaults.h"
#include "resources/live/ResourcePaths.h"
#include "resources/table/SharedContentViewController.h"

#include <algorithm>
#include <utility>

namespace tidewright {

namespace {

const auto settingKey = QStringLiteral("pinnedKinds");

/// Other windows, and other instances, pin theirs there too.
std::vector<ServedKind> pinnedIn(const QString &context)
{
    const auto stored = userDefaults().dictionary(settingKey).value_or(UserDefaults::Dictionary());
    return servedKindsFromSetting(stored.value(context));
}

auto of(const QString &resource)
{
    return [resource](const ServedKind &kind) { return kind.resource() == resource; };
}

bool has(const std::vector<ServedKind> &kinds, const QString &resource)
{
    return std::any_of(kinds.begin(), kinds.end(), of(resource));
}

/// Whether what follows "kubectl get" for a kind of the house stands for that one, in any version.
bool means(const QString &listWord, const ServedKind &kind)
{
    const auto usual = ResourcePaths().find(listWord);
    return usual && usual->plural == kind.plural
        && (kind.group.isEmpty() ? !usual->apiVersion.contains(QLatin1Char('/'))
                                 : usual->apiVersion.startsWith(kind.group + QLatin1Char('/')));
}

} // namespace

OtherKinds::OtherKinds(
    WindowState &window, PrimaryContentController &content, SidebarController &sidebar, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_content(content)
    , m_sidebar(sidebar)
{
    connect(&sidebar, &SidebarController::otherKindsRequested, this, &OtherKinds::choose);
    connect(&sidebar, &SidebarController::closeRequested, this, [this](const QString &resource) {
        setPinned(resource, false); // or it would come back
        close(resource);
    });
    connect(&sidebar, &SidebarController::pinRequested, this, &OtherKinds::setPinned);
}

void OtherKinds::choose()
{
    auto *dialog = new OtherKindsDialog(m_window, m_content.window());
    connect(dialog, &OtherKindsDialog::chosen, this, &OtherKinds::open);
    dialog->open();
}

void OtherKinds::open(const ServedKind &kind)
{
    for (const KindTab &tab : kindTabs()) {
        if (means(tab.kind().listWord, kind)) {
            m_sidebar.select(QString::fromLatin1(tab.name));
            return;
        }
    }
    add(kind);
    m_sidebar.select(kind.resource());
}

void OtherKinds::add(const ServedKind &kind)
{
    const QString resource = kind.resource();
    if (isOpen(resource)) {
        return;
    }
    m_open.push_back(kind);
    m_content.putTable(resource, makeTable(kind));
    m_sidebar.addOtherKind(resource, kind.title(), has(pinnedIn(m_context), resource));
}

SharedContentViewController *OtherKinds::makeTable(const ServedKind &kind)
{
    auto *table
        = new SharedContentViewController(printedKind(kind, m_titles.value(kind.resource())), m_window);
    connect(table, &SharedContentViewController::otherTitles, this,
        [this, kind](const QStringList &others) { replaceTable(kind, others); });
    return table;
}

/// A table has the columns that it was made with.
void OtherKinds::replaceTable(const ServedKind &kind, const QStringList &titles)
{
    if (!isOpen(kind.resource())) {
        return;
    }
    m_titles.insert(kind.resource(), titles);
    SharedContentViewController *table = makeTable(kind);
    m_content.putTable(kind.resource(), table);
    table->load({.unattended = true});
}

bool OtherKinds::isShown(const QString &resource) const
{
    return isOpen(resource) && m_content.tableNamed(resource) == m_content.currentWidget();
}

bool OtherKinds::isOpen(const QString &resource) const
{
    return has(m_open, resource);
}

void OtherKinds::close(const QString &resource)
{
    if (!isOpen(resource)) {
        return;
    }
    if (isShown(resource)) {
        m_sidebar.selectFirst();
    }
    std::erase_if(m_open, of(resource));
    m_sidebar.removeOtherKind(resource);
    m_content.removeTable(resource);
}

void OtherKinds::setPinned(const QString &resource, bool pinned)
{
    const auto found = std::find_if(m_open.begin(), m_open.end(), of(resource));
    const QString context = m_window.currentContext();
    if (found == m_open.end() || context.isEmpty()) {
        return;
    }
    auto stored = userDefaults().dictionary(settingKey).value_or(UserDefaults::Dictionary());
    std::vector<ServedKind> kinds = servedKindsFromSetting(stored.value(context));
    std::erase_if(kinds, of(resource));
    if (pinned) {
        kinds.push_back(*found);
    }
    stored.insert(context, settingOf(kinds));
    userDefaults().set(settingKey, stored);
    m_sidebar.setPinned(resource, pinned);
}

void OtherKinds::followContext()
{
    const QString old = std::exchange(m_context, m_window.currentContext());
    if (old == m_context) {
        return;
    }
    const std::vector<ServedKind> pinned = pinnedIn(m_context);
    for (const ServedKind &kind : pinnedIn(old)) {
        if (!has(pinned, kind.resource()) && !isShown(kind.resource())) {
            close(kind.resource());
        }
    }
    for (const ServedKind &kind : pinned) {
        add(kind);
    }
    for (const ServedKind &kind : m_open) {
        m_sidebar.setPinned(kind.resource(), has(pinned, kind.resource()));
    }
}

} // namespace tidewright

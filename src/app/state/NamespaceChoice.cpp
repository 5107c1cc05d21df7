// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/NamespaceChoice.h"

#include "platform/threads/MainQueue.h"

#include <utility>

namespace tidewright {

namespace {

/// Rows of a cluster nearby are there by then.
constexpr auto leisureBegins = std::chrono::milliseconds(250);
constexpr int leisurely = 10; // niceness

const auto lastChosenKey = QStringLiteral("lastNamespaces");

/// Other windows, and other instances, remember theirs there too.
UserDefaults::Dictionary stored()
{
    return userDefaults().dictionary(lastChosenKey).value_or(UserDefaults::Dictionary());
}

} // namespace

NamespaceChoice::NamespaceChoice(const KubeCtl &kubeCtl)
    : m_kubeCtl(kubeCtl)
    , m_lastChosen(stored())
{
    m_leisure.setSingleShot(true);
    m_leisure.setInterval(leisureBegins);
    m_leisure.callOnTimeout(this, [this] { ask(leisurely); });
}

NamespaceChoice::~NamespaceChoice()
{
    cancel();
}

void NamespaceChoice::load(bool atLeisure)
{
    cancel();
    m_list = {.loading = true};
    m_error.clear();
    if (atLeisure) {
        m_leisure.start();
    } else {
        ask(0);
    }
}

void NamespaceChoice::ask(int niceness)
{
    const QPointer<NamespaceChoice> self(this);
    m_shell = m_kubeCtl.loadNamespaces(
        onMain(self,
            [request = m_request](NamespaceChoice &choice, const QStringList &names) {
                if (request == choice.m_request) {
                    choice.listed(names);
                }
            }),
        onMain(self,
            [request = m_request](NamespaceChoice &choice, const QString &error) {
                if (request == choice.m_request) {
                    choice.m_error = error;
                }
            }),
        niceness);
}

void NamespaceChoice::listed(const QStringList &names)
{
    m_shell.reset();
    // Who may not list them may still work in one.
    const bool isForbidden = m_error.contains(QLatin1String("forbidden"), Qt::CaseInsensitive);
    m_list = {.entries = names, .acceptsOthers = isForbidden};
    Q_EMIT loaded(m_error);
}

void NamespaceChoice::stop()
{
    if (m_leisure.isActive()) {
        m_leisure.stop();
        listed({});
    } else if (m_shell) {
        m_shell->cancel(); // answers with nothing
    }
}

void NamespaceChoice::cancel()
{
    ++m_request;
    m_leisure.stop();
    if (const auto shell = std::exchange(m_shell, nullptr)) {
        shell->cancel();
    }
}

void NamespaceChoice::clear()
{
    cancel();
    m_list = {};
}

void NamespaceChoice::remember(const QString &context, const QString &name)
{
    constexpr qsizetype longest = 253; // of any name; a server that lies must not fill the settings' file
    m_lastChosen = stored();
    if (name.size() > longest) {
        return;
    }
    m_lastChosen.insert(context, name);
    userDefaults().set(lastChosenKey, m_lastChosen);
}

QString NamespaceChoice::remembered(const QString &context) const
{
    return stored().value(context);
}

QString NamespaceChoice::firstToShow(const QString &context, const QString &own) const
{
    const QStringList &names = m_list.entries;
    const auto isThere
        = [&](const QString &name) { return !name.isEmpty() && (names.isEmpty() || names.contains(name)); };
    const QString last = remembered(context);
    if (isThere(last) || (last == allNamespaces && !names.isEmpty())) {
        return last;
    }
    return isThere(own) ? own : names.value(0, own);
}

} // namespace tidewright

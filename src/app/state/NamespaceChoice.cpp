// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/NamespaceChoice.h"

#include "platform/threads/MainQueue.h"

#include <utility>

namespace tidewright {

namespace {

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
}

NamespaceChoice::~NamespaceChoice()
{
    cancel();
}

void NamespaceChoice::load(int niceness)
{
    cancel();
    m_list = {.loading = true};
    m_error.clear();
    const QPointer<NamespaceChoice> self(this);
    m_shell = m_kubeCtl.loadNamespaces(
        onMain(self,
            [request = m_request](NamespaceChoice &choice, const QStringList &names) {
                if (request == choice.m_request) {
                    choice.m_shell.reset();
                    // Who may not list them may still work in one.
                    const bool isForbidden
                        = choice.m_error.contains(QLatin1String("forbidden"), Qt::CaseInsensitive);
                    choice.m_list = {.entries = names, .acceptsOthers = isForbidden};
                    Q_EMIT choice.loaded(choice.m_error);
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

void NamespaceChoice::stop()
{
    if (m_shell) {
        m_shell->cancel(); // answers with nothing
    }
}

void NamespaceChoice::cancel()
{
    ++m_request;
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

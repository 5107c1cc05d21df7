// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/state/ChoiceList.h"
#include "core/KubeCtl.h"
#include "platform/settings/UserDefaults.h"

#include <QObject>
#include <QTimer>

namespace tidewright {

/// The namespaces that a cluster window offers: asks the cluster for them, and remembers in the settings
/// which one was chosen last in each context. Only the latest request is answered; letting it go ends its
/// run. Main thread.
class NamespaceChoice : public QObject
{
    Q_OBJECT
public:
    /// `kubeCtl` must outlive the choice.
    explicit NamespaceChoice(const KubeCtl &kubeCtl);
    ~NamespaceChoice() override;

    /// The names that the cluster returned; "All Namespaces" is not among them.
    const ChoiceList &list() const { return m_list; }
    bool isLoading() const { return m_shell != nullptr || m_leisure.isActive(); }

    /// `atLeisure`: the user waits for something else, which begins first and goes first.
    void load(bool atLeisure);
    /// Ends a load, which then has found nothing.
    void stop();
    /// Ends a load without an answer. What is listed stays.
    void cancel();
    /// The same, and nothing is listed any more.
    void clear();
    void select(const QString &name) { m_list.selected = name; }
    void setEnabled(bool enabled) { m_list.enabled = enabled; }
    /// Takes back that it is loading.
    void endLoading() { m_list.loading = false; }

    /// As the settings had it, for each context.
    const UserDefaults::Dictionary &lastChosen() const { return m_lastChosen; }
    void remember(const QString &context, const QString &name);
    /// As the settings have it now; empty: none.
    QString remembered(const QString &context) const;
    /// Which one to begin with in a context: the one remembered, else the context's `own`, else the first.
    QString firstToShow(const QString &context, const QString &own) const;

Q_SIGNALS:
    /// Disabled still. `error` is kubectl's text, empty when there is none.
    void loaded(const QString &error);

private:
    void ask(int niceness);
    void listed(const QStringList &names);

    const KubeCtl &m_kubeCtl;
    ChoiceList m_list;
    QTimer m_leisure;
    quint64 m_request = 0;
    std::shared_ptr<Shell> m_shell;
    QString m_error;
    UserDefaults::Dictionary m_lastChosen;
};

} // namespace tidewright

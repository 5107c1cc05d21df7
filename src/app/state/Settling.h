// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/kubeconfig/KubeConfigWatch.h"
#include "app/state/PlaceSetting.h"

#include <QTimer>

namespace tidewright {

/// The context and namespace of a window.
struct ShownPlace
{
    QString context;
    QString nameSpace;
    /// From the choice of a context until its namespaces are known: the tables show the old one.
    bool isBeingChosen = false;
};

/// Holds back the commands of one window until they act where its tables come from: until a change of its
/// place is through, and it has been looked whether the kubeconfig still leads there. It looks regularly,
/// too. Letting it go answers those that wait, from the event loop. Main thread.
class Settling : public QObject
{
    Q_OBJECT
public:
    using Settled = std::function<void(const QString &obstacle)>;

    /// All of them must outlive it.
    Settling(const KubeCtl &kubeCtl, const ShownPlace &shown, PlaceSetting &setting);
    ~Settling() override;

    /// Answers with why nothing may be started that goes by the window's place; with the empty text when it
    /// may.
    void wait(Settled completion);
    /// The window turns to another place: those that wait are answered.
    void begin();
    /// Looks whether the kubeconfig leads elsewhere by now.
    void look();
    /// In what way it does: a sentence; empty when it does not.
    QString displacement() const { return m_displacement; }
    /// Answers those that wait, unless they have to go on waiting.
    void answerWaiting();

Q_SIGNALS:
    void displacementChanged();

private:
    void setDisplacement(const QString &sentence);
    void lookedBeforeCommand(const QString &change);
    bool hasItsPlace() const { return m_setting.isAt(m_shown.context, m_shown.nameSpace); }
    QString obstacle() const;
    /// The same, as far as it is not the kubeconfig that leads elsewhere.
    QString whyNoPlace() const;

    const KubeCtl &m_kubeCtl;
    const ShownPlace &m_shown;
    PlaceSetting &m_setting;
    KubeConfigWatch m_watch;
    QTimer m_timer;
    QString m_displacement;
    bool m_isLooking = false; ///< before a command
    std::vector<Settled> m_waiting;
};

} // namespace tidewright

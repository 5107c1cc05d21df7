// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/KubeCtl.h"

#include <QObject>

namespace tidewright {

/// Gives a window's view of its kubeconfig the context or the namespace that the window turns to. Only the
/// latest change is answered; letting it go ends its run. Main thread, on which also everything is answered.
class PlaceSetting : public QObject
{
    Q_OBJECT
public:
    /// `kubeCtl` must outlive it.
    explicit PlaceSetting(KubeCtl &kubeCtl);
    ~PlaceSetting() override;

    bool isUnderWay() const { return m_shell != nullptr; }
    /// Whether children act there by now.
    bool isAt(const QString &context, const QString &nameSpace) const;

    /// Until the context is switched, nothing that is started goes anywhere.
    void useContext(const QString &name);
    void setNamespace(const QString &name);
    /// Ends a change without an answer.
    void cancel();

Q_SIGNALS:
    void contextUsed(bool success);
    void namespaceSet();

private:
    KubeCtl &m_kubeCtl;
    quint64 m_request = 0;
    std::shared_ptr<Shell> m_shell; ///< while a place is being set
};

} // namespace tidewright

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/state/ChoiceList.h"
#include "core/KubeCtl.h"

#include <QObject>

namespace tidewright {

/// The contexts that a cluster window offers: reads them from the window's kubeconfig. Only the latest
/// request is answered; letting it go ends its runs. Main thread.
class ContextChoice : public QObject
{
    Q_OBJECT
public:
    /// `kubeCtl` must outlive the choice.
    explicit ContextChoice(const KubeCtl &kubeCtl);
    ~ContextChoice() override;

    const ChoiceList &list() const { return m_list; }
    bool isLoading() const { return m_namesShell != nullptr; }

    void load();
    /// Ends a load, which then fails with that reason.
    void stop(const QString &reason);
    void select(const QString &name) { m_list.selected = name; }

Q_SIGNALS:
    /// The list is that of the kubeconfig now, whose current context is selected in it if it is there.
    void loaded(const QString &current, const KubeConfigContents &contents);
    /// The list goes on saying that it is loading. The reason is empty when there are no contexts.
    void failed(const QString &reason);

private:
    void cancel();
    void fail(quint64 request, const QString &reason);
    void bothRead(quint64 request, const QStringList &names, const QString &current);

    const KubeCtl &m_kubeCtl;
    ChoiceList m_list;
    quint64 m_request = 0;
    std::shared_ptr<Shell> m_namesShell;
    std::shared_ptr<Shell> m_contentsShell; ///< reads m_contents beside it
    std::optional<KubeConfigContents> m_contents;
};

} // namespace tidewright

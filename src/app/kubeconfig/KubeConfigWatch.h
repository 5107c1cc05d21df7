// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/KubeCtl.h"

#include <QPointer>

namespace tidewright {

/// Notices when a window's kubeconfig is edited or replaced so that the window's context is gone or leads to
/// another cluster, whose objects its tables do not show. Nothing of it waits on the main thread, where it is
/// used: the file may lie on a server that does not answer.
class KubeConfigWatch : public QObject
{
    Q_OBJECT
public:
    /// A sentence that says what has changed; empty when the context leads where it did.
    using Looked = std::function<void(const QString &change)>;

    /// `kubeCtl` must outlive the watch.
    explicit KubeConfigWatch(const KubeCtl &kubeCtl, QObject *parent = nullptr);
    ~KubeConfigWatch() override;

    /// The window has another place now; looks under way tell nothing any more.
    void begin();
    /// Looks whether the files are still the same and, if they are not, what has become of the context.
    /// Answers a file that does not within some seconds with a sentence that says so.
    void look(const Looked &completion);

private:
    void lookAtFiles();
    void stopReading();
    void compareFiles(const QByteArray &state);
    void compareContents(const std::optional<KubeConfigContents> &contents);
    void answer(const QString &change);

    const KubeCtl &m_kubeCtl;
    quint64 m_place = 0;
    quint64 m_looks = 0;
    QByteArray m_state; ///< of the files, when they were read last
    QString m_change;
    std::vector<Looked> m_waiting;
    bool m_isLooking = false; ///< at the files
    std::shared_ptr<Shell> m_reading; ///< what they hold
};

} // namespace tidewright

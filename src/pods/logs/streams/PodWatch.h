// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/streams/LogOptions.h"
#include "pods/logs/streams/PodListing.h"

#include <QTimer>

namespace tidewright {

/// Looks again and again which pods a workload or a service selects, with `kubectl get`: a pod that comes has
/// its log kept for it until somebody reads it, so nothing is lost by looking late. The first runs are told
/// in the main window's console. Main thread; ends with its child.
class PodWatch : public QObject
{
    Q_OBJECT
public:
    /// `workload` is what kubectl takes, such as "deploy/web".
    PodWatch(LogPlace place, QString workload, QString nameSpace);
    ~PodWatch() override;

    void start();
    /// Something has happened to a pod: looks in a moment.
    void lookSoon();

    /// Between two looks.
    static constexpr int usualMilliseconds = 5000;

Q_SIGNALS:
    void listed(const std::vector<LogPod> &pods);
    /// Why it is not known which pods there are, as a sentence; it is tried again.
    void failed(const QString &problem);

private:
    void look();
    void run(const QStringList &arguments, void (PodWatch::*take)(const QByteArray &output));
    void takeSelector(const QByteArray &json);
    void takePods(const QByteArray &output);

    const LogPlace m_place;
    const QString m_workload;
    const QString m_nameSpace;
    std::optional<QString> m_selector; ///< once it is known
    bool m_isTold = false; ///< the first listing
    std::shared_ptr<Shell> m_shell; ///< while it runs
    QTimer m_timer;
};

} // namespace tidewright

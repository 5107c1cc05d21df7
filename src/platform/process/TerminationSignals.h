// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/FileDescriptor.h"

#include <QObject>
#include <QSocketNotifier>

namespace tidewright {

/// Turns the signals by which a session or a terminal asks a program to end (SIGTERM, SIGINT, SIGHUP) into
/// `received`, so that it ends as by its own command. A second one ends it at once. One per process; main
/// thread.
class TerminationSignals : public QObject
{
    Q_OBJECT
public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    void received();

private:
    void drain();

    WakeSignal m_wake;
    QSocketNotifier m_notifier;
};

} // namespace tidewright

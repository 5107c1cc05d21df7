// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kubeconfig/KubeConfigWatch.h"

#include "app/kubeconfig/LoginCommands.h"
#include "core/running/Shell.h"
#include "platform/settings/AtomicFile.h"
#include "platform/threads/MainQueue.h"

#include <QFile>
#include <QTimer>

#include <utility>

namespace tidewright {

namespace {

constexpr auto patience = std::chrono::seconds(5);

/// Changes whenever somebody writes one of the files.
QByteArray stateOf(const QString &files)
{
    QByteArray state;
    for (const QString &path : files.split(QLatin1Char(':'))) {
        const FileIdentity file = FileIdentity::at(QFile::encodeName(path));
        for (const auto part : {std::int64_t(file.device), std::int64_t(file.inode), file.size,
                 file.modifiedSeconds, file.modifiedNanoseconds}) {
            state += QByteArray::number(qint64(part)) + ' ';
        }
    }
    return state;
}

} // namespace

KubeConfigWatch::KubeConfigWatch(const KubeCtl &kubeCtl, QObject *parent)
    : QObject(parent)
    , m_kubeCtl(kubeCtl)
{
}

KubeConfigWatch::~KubeConfigWatch()
{
    stopReading();
}

void KubeConfigWatch::begin()
{
    ++m_place;
    stopReading();
    m_state.clear();
    answer(QString());
}

void KubeConfigWatch::look(const Looked &completion)
{
    m_waiting.push_back(completion);
    if (m_waiting.size() > 1) {
        return;
    }
    lookAtFiles();
    QTimer::singleShot(patience, this, [this, number = ++m_looks] {
        if (number == m_looks) {
            stopReading();
            for (const auto &waiting : std::exchange(m_waiting, {})) {
                waiting(tr("The kubeconfig of this window cannot be looked at: its disk does not answer."));
            }
        }
    });
}

/// A thread that hangs with the disk is not joined by a second one.
void KubeConfigWatch::lookAtFiles()
{
    if (std::exchange(m_isLooking, true)) {
        return;
    }
    const QPointer<KubeConfigWatch> self(this);
    shellQueue().post([self, place = m_place, files = kubeConfigFiles(m_kubeCtl.configPath)] {
        postToMain(self, [place, state = stateOf(files)](KubeConfigWatch &watch) {
            watch.m_isLooking = false;
            if (watch.m_waiting.empty()) {
                return;
            }
            if (place == watch.m_place) {
                watch.compareFiles(state);
            } else {
                watch.lookAtFiles();
            }
        });
    });
}

void KubeConfigWatch::stopReading()
{
    if (const auto shell = std::exchange(m_reading, nullptr)) {
        shell->cancel();
    }
}

void KubeConfigWatch::compareFiles(const QByteArray &state)
{
    if (state == m_state) {
        answer(m_change);
        return;
    }
    stopReading();
    m_reading = m_kubeCtl.readKubeConfig(
        [self = QPointer(this), place = m_place, look = m_looks, state](const auto &contents) {
            if (self && place == self->m_place && look == self->m_looks) {
                self->m_reading.reset();
                self->m_state = contents ? state : QByteArray();
                self->compareContents(contents);
            }
        });
}

/// A file that kubectl cannot read now leads nowhere; kubectl itself says so.
void KubeConfigWatch::compareContents(const std::optional<KubeConfigContents> &contents)
{
    const auto view = m_kubeCtl.view();
    if (!contents || !view || !m_kubeCtl.contents().hasContext(view->context())) {
        answer(m_change);
        return;
    }
    const QString context = view->context();
    const KubeConfigContents &known = m_kubeCtl.contents();
    if (!contents->hasContext(context)) {
        answer(tr("The kubeconfig has no context %1 any more.").arg(context));
    } else if (contents->server(context) != known.server(context)) {
        answer(tr("The context %1 of the kubeconfig leads to another cluster now: %2 instead of %3.")
                   .arg(context, contents->server(context), known.server(context)));
    } else if (contents->destination(context) != known.destination(context)) {
        answer(tr("The context %1 of the kubeconfig names another cluster or user now.").arg(context));
    } else if (!login_commands::unseen(*contents, m_kubeCtl.configPath).isEmpty()) {
        answer(tr("The kubeconfig has other programs run to log in now, which you have not allowed."));
    } else {
        answer(QString());
    }
}

void KubeConfigWatch::answer(const QString &change)
{
    m_change = change;
    for (const auto &waiting : std::exchange(m_waiting, {})) {
        waiting(change);
    }
}

} // namespace tidewright

// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/ContextChoice.h"

#include "platform/threads/MainQueue.h"

#include <utility>

namespace tidewright {

ContextChoice::ContextChoice(const KubeCtl &kubeCtl)
    : m_kubeCtl(kubeCtl)
{
}

ContextChoice::~ContextChoice()
{
    cancel();
}

void ContextChoice::cancel()
{
    for (auto *shell : {&m_namesShell, &m_contentsShell}) {
        if (const auto running = std::exchange(*shell, nullptr)) {
            running->cancel();
        }
    }
}

/// Two readings beside each other: the names in their order, and what they stand for.
void ContextChoice::load()
{
    cancel();
    const quint64 request = ++m_request;
    m_list = {.loading = true};
    const QPointer<ContextChoice> self(this);
    const auto loaded = std::make_shared<std::pair<QStringList, QString>>();
    const auto readOne = [request, loaded, read = std::make_shared<int>(0)](ContextChoice &choice) {
        if (++*read == 2) {
            choice.bothRead(request, loaded->first, loaded->second);
        }
    };
    m_namesShell = m_kubeCtl.loadContexts(
        onMain(self,
            [loaded, readOne](ContextChoice &choice, const QStringList &names, const QString &current) {
                *loaded = {names, current};
                readOne(choice);
            }),
        onMain(
            self, [request](ContextChoice &choice, const QString &reason) { choice.fail(request, reason); }));
    m_contentsShell = m_kubeCtl.readKubeConfig([self, request, readOne](const auto &contents) {
        if (self && request == self->m_request) {
            self->m_contents = contents;
            readOne(*self);
        }
    });
}

void ContextChoice::stop(const QString &reason)
{
    fail(m_request, reason);
}

void ContextChoice::fail(quint64 request, const QString &reason)
{
    if (request == m_request) {
        cancel();
        Q_EMIT failed(reason);
    }
}

void ContextChoice::bothRead(quint64 request, const QStringList &names, const QString &current)
{
    if (request != m_request) {
        return;
    }
    if (!m_contents) {
        fail(request, tr("kubectl could not read the kubeconfig."));
        return;
    }
    m_namesShell.reset();
    m_contentsShell.reset();
    m_list = {.entries = names, .selected = names.contains(current) ? current : QString(), .enabled = true};
    Q_EMIT loaded(current, *m_contents);
}

} // namespace tidewright

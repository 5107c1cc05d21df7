// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/PlaceSetting.h"

#include "platform/threads/MainQueue.h"

#include <utility>

namespace tidewright {

PlaceSetting::PlaceSetting(KubeCtl &kubeCtl)
    : m_kubeCtl(kubeCtl)
{
}

PlaceSetting::~PlaceSetting()
{
    cancel();
}

void PlaceSetting::cancel()
{
    ++m_request;
    if (const auto shell = std::exchange(m_shell, nullptr)) {
        shell->cancel();
    }
}

bool PlaceSetting::isAt(const QString &context, const QString &nameSpace) const
{
    const auto view = m_kubeCtl.view();
    return view && view->context() == context
        && (nameSpace == allNamespaces || view->nameSpace() == nameSpace);
}

void PlaceSetting::useContext(const QString &name)
{
    cancel();
    m_kubeCtl.adopt(m_kubeCtl.contents(), QString());
    m_shell = m_kubeCtl.useContext(
        name, onMain(QPointer(this), [request = m_request](PlaceSetting &setting, bool success) {
            if (request == setting.m_request) {
                setting.m_shell.reset();
                Q_EMIT setting.contextUsed(success);
            }
        }));
}

void PlaceSetting::setNamespace(const QString &name)
{
    cancel();
    m_shell = m_kubeCtl.setNamespace(name, [self = QPointer(this), request = m_request](bool) {
        if (self && request == self->m_request) {
            self->m_shell.reset();
            Q_EMIT self->namespaceSet();
        }
    });
}

} // namespace tidewright

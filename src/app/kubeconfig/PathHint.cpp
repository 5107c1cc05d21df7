// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kubeconfig/PathHint.h"

#include "core/running/Shell.h"
#include "platform/threads/MainQueue.h"

#include <QLabel>
#include <QPointer>

namespace tidewright {

PathHint::PathHint(QLabel *label, Explanation explanation, QObject *parent)
    : QObject(parent)
    , m_label(label)
    , m_explanation(std::move(explanation))
{
}

void PathHint::explain(const QString &text)
{
    m_text = text;
    if (!m_isLooking) {
        look();
    }
}

void PathHint::look()
{
    m_isLooking = true;
    shellQueue().post([text = m_text, explanation = m_explanation, self = QPointer(this)] {
        const QString found = explanation(text);
        postToMain(self, [text, found](PathHint &hint) {
            hint.m_isLooking = false;
            if (text == hint.m_text) {
                hint.m_label->setText(found);
            } else {
                hint.look();
            }
        });
    });
}

} // namespace tidewright

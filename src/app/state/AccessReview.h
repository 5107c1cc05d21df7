// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/KubeCtl.h"
#include "resources/listing/AccessRules.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QObject>

namespace tidewright {

/// What the user may do in the namespaces of a window's context, as the cluster said it some minutes ago at
/// the most. It is asked in the background, with low priority, and untold; where it does not answer, or only
/// in part, everything counts as allowed. Main thread only.
class AccessReview : public QObject
{
    Q_OBJECT
public:
    /// `kubeCtl` must outlive it.
    explicit AccessReview(
        const KubeCtl &kubeCtl, std::chrono::milliseconds lifetime = std::chrono::minutes(5));
    ~AccessReview() override;

    /// Asks for the rules of a namespace, unless they are known and young enough, or are being asked for;
    /// those of another one are not waited for any more. Nothing is asked about all namespaces at once.
    void need(const QString &context, const QString &nameSpace);
    /// The window turns to another context, or its kubeconfig is read anew.
    void forget();

    /// False only when the rules of that namespace are known and do not allow it.
    bool mayDo(const Access &access, const QString &nameSpace) const;

Q_SIGNALS:
    /// Rules have come, or gone.
    void changed();

private:
    struct Answer
    {
        std::optional<AccessRules> rules; ///< none: it is not known
        QDeadlineTimer isYoung;
    };

    void cancel();
    void answered(const QString &nameSpace, const ShellResult &result);

    const KubeCtl &m_kubeCtl;
    const std::chrono::milliseconds m_lifetime;
    QHash<QString, Answer> m_answers; ///< by namespace
    std::shared_ptr<Shell> m_shell; ///< of the run under way
    QString m_asked; ///< its namespace
    quint64 m_request = 0;
};

} // namespace tidewright

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFileDialog>

#include <functional>
#include <optional>

class QLabel;
class QLineEdit;

namespace tidewright {

struct KubeConfigChoice
{
    QString path;
    QString title; ///< a name for the window that will use it; may be empty
};

/// Told once: nothing when the user cancelled.
using KubeConfigChosen = std::function<void(const std::optional<KubeConfigChoice> &choice)>;

/// Asks over the window of `parent` for a kubeconfig file and, with `showTitleRow`, for a name for the window
/// that will use it. Returns at once; `chosen` is called later unless `receiver` is gone by then. Main
/// thread.
void chooseKubeConfig(QWidget *parent, bool showTitleRow, QObject *receiver, KubeConfigChosen chosen);

/// The dialog of chooseKubeConfig(). Files whose names end in .yml, .yaml or in no extension can be chosen.
class KubeConfigChooser : public QFileDialog
{
    Q_OBJECT
public:
    KubeConfigChooser(QWidget *parent, bool showTitleRow);

    static bool isAllowed(const QString &fileName);
    KubeConfigChoice choice() const;

    /// Refuses files that are not allowed, which can still be typed.
    void accept() override;

private:
    void addTitleRow();
    void addRefusalRow();

    QLineEdit *m_title = nullptr;
    QLabel *m_refusal = nullptr;
};

} // namespace tidewright

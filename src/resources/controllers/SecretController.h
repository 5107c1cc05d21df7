// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/controllers/CommandTable.h"

namespace tidewright {

/// The table of secrets. The values of their keys stay out of the program but for the one that the user asks
/// to see, while it is seen.
class SecretController : public CommandTable
{
    Q_OBJECT
public:
    explicit SecretController(WindowState &window, QWidget *parent = nullptr);

public Q_SLOTS:
    /// Asks kubectl for the keys of the chosen secret, then which of them is to be shown, and shows it in a
    /// window of its own.
    void decodeKey();

protected:
    void extendContextMenu(QMenu &menu) override;

private:
    using Read = std::function<void(const QByteArray &output)>;
    /// Runs kubectl with a template on the secret, untold: what it prints must not stand in the console.
    void read(const ChangePlace &place, const ObjectName &secret, const QString &goTemplate, Read read);
    void chooseKey(const ChangePlace &place, const ObjectName &secret, const QStringList &keys);
    void show(const ChangePlace &place, const ObjectName &secret, const QString &key);
};

} // namespace tidewright

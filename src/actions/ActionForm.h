// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QWidget>

#include <map>
#include <optional>
#include <variant>
#include <vector>

namespace tidewright {

/// One field of a form that a Python action asks for.
struct FormField
{
    QString name;
    QString type; ///< "textfield", "dropdown" or "checkbox"; any other gets no row
    QString label;
    QString placeholder; ///< of a text field
    std::optional<QString> initial; ///< of a text field or a drop-down
    QStringList choices; ///< of a drop-down
    bool checked = false; ///< of a check box
};

/// By field name: the text, the chosen item's title, or whether the box is checked.
using FormValues = std::map<QString, std::variant<QString, bool>>;

/// The rows of a form, one for each field in the given order, 300 points wide (more when its labels need it)
/// and as tall as its rows. Each control's accessible name is its label. Main thread.
class ActionForm : public QWidget
{
    Q_OBJECT
public:
    explicit ActionForm(const std::vector<FormField> &fields, QWidget *parent = nullptr);

    FormValues values() const;

private:
    QWidget *addRow(const FormField &field, int row);
    void addLabelled(const FormField &field, QWidget *control, int row);

    std::map<QString, QWidget *> m_controls;
};

} // namespace tidewright

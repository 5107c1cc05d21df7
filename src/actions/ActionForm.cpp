// SPDX-License-Identifier: GPL-3.0-or-later
#include "actions/ActionForm.h"

#include "platform/text/DisplayText.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

#include <algorithm>

namespace tidewright {

namespace {

constexpr int formWidth = 300;
constexpr int controlWidth = 200;
constexpr int controlHeight = 24; // more when the font needs it

enum Column { LabelColumn, ControlColumn };

} // namespace

ActionForm::ActionForm(const std::vector<FormField> &fields, QWidget *parent)
    : QWidget(parent)
{
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setColumnStretch(LabelColumn, 1);
    int row = 0;
    for (const FormField &field : fields) {
        QWidget *control = addRow(field, row);
        if (!control) {
            continue;
        }
        control->setAccessibleName(field.label);
        m_controls[field.name] = control;
        if (row++ == 0) {
            setFocusProxy(control);
        }
    }
    setMinimumWidth(formWidth);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QWidget *ActionForm::addRow(const FormField &field, int row)
{
    if (field.type == QLatin1String("textfield")) {
        auto *text = new QLineEdit(field.initial.value_or(QString()));
        text->setPlaceholderText(field.placeholder);
        addLabelled(field, text, row);
        return text;
    }
    if (field.type == QLatin1String("dropdown")) {
        auto *list = new QComboBox;
        list->addItems(field.choices);
        if (const int chosen = field.initial ? list->findText(*field.initial) : -1; chosen >= 0) {
            list->setCurrentIndex(chosen);
        }
        addLabelled(field, list, row);
        return list;
    }
    if (field.type == QLatin1String("checkbox")) {
        auto *box = new QCheckBox(display_text::withoutMnemonics(field.label));
        box->setChecked(field.checked);
        static_cast<QGridLayout *>(layout())->addWidget(box, row, ControlColumn);
        return box;
    }
    return nullptr;
}

void ActionForm::addLabelled(const FormField &field, QWidget *control, int row)
{
    auto *label = new QLabel(field.label + QLatin1Char(':'));
    label->setTextFormat(Qt::PlainText);
    control->setFixedSize(controlWidth, std::max(controlHeight, control->sizeHint().height()));
    auto *grid = static_cast<QGridLayout *>(layout());
    grid->addWidget(label, row, LabelColumn, Qt::AlignRight | Qt::AlignVCenter);
    grid->addWidget(control, row, ControlColumn);
}

FormValues ActionForm::values() const
{
    FormValues values;
    for (const auto &[name, control] : m_controls) {
        if (const auto *text = qobject_cast<const QLineEdit *>(control)) {
            values[name] = text->text();
        } else if (const auto *list = qobject_cast<const QComboBox *>(control)) {
            values[name] = list->currentText();
        } else if (const auto *box = qobject_cast<const QCheckBox *>(control)) {
            values[name] = box->isChecked();
        }
    }
    return values;
}

} // namespace tidewright

// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/SecretWindow.h"

#include "platform/text/DisplayText.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QStringDecoder>
#include <QVBoxLayout>

namespace tidewright {

namespace {

struct ShownValue
{
    QString text;
    QString note;
};

ShownValue shownValue(const QByteArray &value)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder.decode(value);
    if (decoder.hasError() || text.contains(QChar(0))) {
        return {QString::fromLatin1(value.toBase64()),
            QObject::tr("%n byte(s) that are no text, in base64:", nullptr, static_cast<int>(value.size()))};
    }
    return {text, value.isEmpty() ? QObject::tr("The value is empty.") : QString()};
}

} // namespace

SecretWindow::SecretWindow(
    const QString &secret, const QString &key, const QByteArray &value, QWidget *parent)
    : QDialog(parent)
    , m_value(new QPlainTextEdit)
    , m_remaining(new QLabel)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(display_text::name(tr("%1 of %2").arg(key, secret)));
    const ShownValue shown = shownValue(value);
    m_value->setReadOnly(true);
    m_value->setUndoRedoEnabled(false);
    m_value->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_value->setAccessibleName(tr("Value of %1").arg(key));
    m_value->setPlainText(shown.text);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    auto *layout = new QVBoxLayout(this);
    if (!shown.note.isEmpty()) {
        auto *note = new QLabel(shown.note);
        note->setTextFormat(Qt::PlainText);
        layout->addWidget(note);
    }
    layout->addWidget(m_value);
    layout->addWidget(m_remaining);
    layout->addWidget(buttons);
    resize(520, 260);
    connect(this, &QDialog::finished, this, &SecretWindow::clearValue);
    connect(&m_seconds, &QTimer::timeout, this, &SecretWindow::passSecond);
    m_seconds.start(std::chrono::seconds(1));
    showRemaining();
}

SecretWindow::~SecretWindow() = default;

void SecretWindow::passSecond()
{
    if (m_left > 0 && --m_left == 0) {
        clearValue();
    }
    showRemaining();
}

void SecretWindow::clearValue()
{
    m_left = 0;
    m_seconds.stop();
    m_value->clear();
}

void SecretWindow::showRemaining()
{
    m_remaining->setText(m_left > 0 ? tr("Cleared in %1 s. What you copy stays in the clipboard.").arg(m_left)
                                    : tr("The value was cleared."));
}

} // namespace tidewright

// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/DiffView.h"

#include "core/running/Shell.h"
#include "platform/text/DisplayText.h"
#include "platform/threads/MainQueue.h"
#include "resources/widgets/NamedImages.h"

#include <QFileDialog>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSaveFile>
#include <QScreen>
#include <QSyntaxHighlighter>

#include <algorithm>

namespace tidewright {

namespace {

/// A block's state says whether the next line may belong to a file's header.
class DiffHighlighter : public QSyntaxHighlighter
{
public:
    using QSyntaxHighlighter::QSyntaxHighlighter;

protected:
    void highlightBlock(const QString &line) override
    {
        bool isInHeader = previousBlockState() == 1;
        QTextCharFormat format;
        switch (diffLine(line, isInHeader)) {
        case DiffLine::Context:
            break;
        case DiffLine::Header:
            format.setFontWeight(QFont::Bold);
            break;
        case DiffLine::Added:
            format.setForeground(isDarkPalette() ? QColor(0x7E, 0xD0, 0x72) : QColor(0x1D, 0x6E, 0x00));
            break;
        case DiffLine::Removed:
            format.setForeground(namedColour(QStringLiteral("red")));
            break;
        }
        setFormat(0, static_cast<int>(line.size()), format);
        setCurrentBlockState(isInHeader ? 1 : 0);
    }
};

QByteArray beginning(const QByteArray &diff)
{
    if (diff.size() <= DiffView::shownAtMost) {
        return diff;
    }
    const qsizetype end = diff.lastIndexOf('\n', DiffView::shownAtMost);
    return diff.first(std::max<qsizetype>(end, 0));
}

/// A sentence, or the empty text.
QString writeFile(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    const bool isWritten
        = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
    return isWritten ? QString() : file.errorString();
}

} // namespace

DiffLine diffLine(QStringView line, bool &isInHeader)
{
    const bool beginsHunk = line.startsWith(u"@@");
    const bool beginsFile = line.startsWith(u"diff ");
    isInHeader = beginsFile || (isInHeader && !beginsHunk);
    if (isInHeader || beginsHunk) {
        return DiffLine::Header;
    }
    return line.startsWith(u'+') ? DiffLine::Added
        : line.startsWith(u'-')  ? DiffLine::Removed
                                 : DiffLine::Context;
}

DiffView::DiffView(const QByteArray &diff, QWidget *parent)
    : QWidget(parent)
    , m_diff(diff)
{
    constexpr QSize comfortable(760, 380);
    constexpr double partOfScreen = 0.5;
    auto *text = new QPlainTextEdit;
    text->setReadOnly(true);
    text->setUndoRedoEnabled(false);
    text->setTabChangesFocus(true);
    text->setLineWrapMode(QPlainTextEdit::NoWrap);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text->setAccessibleName(tr("Differences"));
    new DiffHighlighter(text->document());
    const QByteArray shown = beginning(diff);
    text->setPlainText(display_text::clean(QString::fromUtf8(shown)));
    text->setMinimumSize(comfortable.boundedTo(screen()->availableSize() * partOfScreen));
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(text);
    if (shown.size() == diff.size()) {
        return;
    }
    m_note = new QLabel(
        tr("The first %1 of %2 are shown.")
            .arg(QLocale().formattedDataSize(shown.size()), QLocale().formattedDataSize(diff.size())));
    m_note->setTextFormat(Qt::PlainText);
    m_note->setWordWrap(true);
    auto *save = new QPushButton(tr("Save All Differences…"));
    save->setAutoDefault(false);
    connect(save, &QPushButton::clicked, this, &DiffView::askWhereToSave);
    auto *row = new QHBoxLayout;
    row->addWidget(m_note, 1);
    row->addWidget(save);
    column->addLayout(row);
}

void DiffView::askWhereToSave()
{
    auto *dialog = new QFileDialog(this, tr("Save Differences"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->selectFile(QStringLiteral("differences.diff"));
    connect(dialog, &QFileDialog::fileSelected, this, &DiffView::saveTo);
    dialog->open();
}

void DiffView::saveTo(const QString &path)
{
    shellQueue().post([self = QPointer(this), path, diff = m_diff] {
        const QString problem = writeFile(path, diff + "\n"); // which a shell trims
        postToMain(self, [path, problem](DiffView &view) {
            if (view.m_note) {
                const QString shown = display_text::clean(path);
                view.m_note->setText(problem.isEmpty() ? tr("Saved to %1.").arg(shown)
                                                       : tr("%1 could not be saved: %2").arg(shown, problem));
            }
        });
    });
}

} // namespace tidewright

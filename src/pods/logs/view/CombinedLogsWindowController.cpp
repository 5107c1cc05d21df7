// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/CombinedLogsWindowController.h"

#include "platform/text/DisplayText.h"
#include "pods/logs/text/LogExport.h"
#include "pods/logs/text/LogSearch.h"
#include "pods/logs/view/CombinedLogsViewController.h"
#include "pods/logs/view/LogPatternBar.h"

#include <QAction>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QProgressBar>
#include <QScreen>
#include <QToolBar>
#include <QToolButton>

namespace tidewright {

namespace {

constexpr QSize usualSize(1000, 640);
constexpr QSize smallestSize(420, 240);

QString counted(qint64 number)
{
    return QLocale().toString(number);
}

QString tooComplicated(qint64 lines)
{
    return CombinedLogsWindowController::tr("too complicated for %1 lines").arg(counted(lines));
}

/// How the streams are doing, where that is not simply well.
QStringList streamParts(const CombinedLogsViewController &content)
{
    using Window = CombinedLogsWindowController;
    const auto &sources = content.sources();
    const auto count = [&](auto what) { return std::count_if(sources.cbegin(), sources.cend(), what); };
    QStringList parts;
    const auto hasChoice = [](const LogSource &source) { return source.choice.has_value(); };
    if (const auto chosen = count(hasChoice); chosen == 1) {
        const auto source = std::find_if(sources.cbegin(), sources.cend(), hasChoice);
        const ContainerPair &pair = content.containers[static_cast<std::size_t>(source - sources.cbegin())];
        // The number first: a narrow window cuts the end.
        parts.append(Window::tr("only 1 of the %1 pods of %2 is followed: %3")
                         .arg(source->choice->pods, pair.pod, source->choice->pod));
    } else if (chosen > 1) {
        parts.append(Window::tr("of %1 sources only one pod of several is followed").arg(chosen));
    }
    if (const auto ended = count([](const LogSource &source) { return source.ended; }); ended > 0) {
        parts.append(ended == std::ssize(sources)
                ? Window::tr("all streams have ended")
                : Window::tr("%1 of %2 streams have ended").arg(ended).arg(sources.size()));
    }
    if (const auto failed = count([](const LogSource &source) { return source.failure.has_value(); })) {
        parts.append(Window::tr("%1 with errors").arg(failed));
    }
    return parts;
}

QString bytesText(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

} // namespace

CombinedLogsWindowController::CombinedLogsWindowController()
    : m_content(new CombinedLogsViewController)
    , m_search(new LogSearch(m_content->document(), this))
    , m_findBar(new LogPatternBar(tr("Find"), tr("Text in the log"), true))
    , m_filterBar(new LogPatternBar(tr("Filter"), tr("Show only lines with…"), false))
    , m_status(new QLabel)
    , m_notice(new QLabel)
    , m_progress(new QProgressBar)
    , m_following(new QLabel(tr("Following")))
    , m_followRefused(new QToolButton)
    , m_jump(new QToolButton)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setMinimumSize(smallestSize);
    resize(usualSize.boundedTo(QGuiApplication::primaryScreen()->availableSize() * 0.9));
    buildToolBar();
    buildLayout();
    connectParts();
    m_content->logTextView()->setFocus();
    updateStatus();
}

CombinedLogsWindowController::~CombinedLogsWindowController()
{
    // The search refers to the content's document.
    delete m_search;
    m_content->windowWillClose();
    if (m_export) {
        m_export->leaveAlone();
    }
}

QAction *CombinedLogsWindowController::addCommand(
    const QString &text, const QString &tip, const QKeySequence &shortcut)
{
    auto *action = new QAction(text, this);
    action->setShortcut(shortcut);
    action->setToolTip(display_text::toolTip(shortcut.isEmpty()
            ? tip
            : QStringLiteral("%1 (%2)").arg(tip, shortcut.toString(QKeySequence::NativeText))));
    addAction(action);
    return action;
}

void CombinedLogsWindowController::buildToolBar()
{
    LogView *view = m_content->logTextView();
    auto *bar = addToolBar(tr("Commands"));
    bar->setMovable(false);
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    const auto command
        = [&](const QString &text, const QString &tip, const QKeySequence &shortcut, auto slot) {
              QAction *action = addCommand(text, tip, shortcut);
              connect(action, &QAction::triggered, this, slot);
              return action;
          };
    QAction *find
        = command(tr("Find"), tr("Find in the log"), QKeySequence::Find, [this] { m_findBar->open(); });
    QAction *filter = command(tr("Filter"), tr("Show only matching lines"), QKeySequence(tr("Ctrl+Shift+F")),
        [this] { m_filterBar->open(); });
    m_wrap = command(tr("Wrap"), tr("Wrap long lines"), QKeySequence(tr("Alt+Z")),
        [this, view] { view->scroll().setWrapping(m_wrap->isChecked()); });
    m_wrap->setCheckable(true);
    m_wrap->setChecked(view->scroll().isWrapping());
    QAction *smaller
        = command(tr("A−"), tr("Smaller text"), QKeySequence::ZoomOut, [view] { view->zoom(-1); });
    QAction *larger = command(tr("A+"), tr("Larger text"), QKeySequence::ZoomIn, [view] { view->zoom(1); });
    QAction *usual = command(
        tr("Usual Text Size"), tr("Usual text size"), QKeySequence(tr("Ctrl+0")), [view] { view->zoom(0); });
    m_save = command(
        tr("Save…"), tr("Save the whole log to a file"), QKeySequence::Save, [this] { chooseFile(); });
    QAction *clearAction = command(tr("Clear"), tr("Let all text that has arrived go"),
        QKeySequence(tr("Ctrl+Shift+K")), [this] { clear(); });
    command(tr("Close"), tr("Close the window"), QKeySequence(tr("Ctrl+W")), [this] { close(); });
    command(tr("Find Next"), {}, QKeySequence::FindNext, [this] { m_search->goOn(true); });
    command(tr("Find Previous"), {}, QKeySequence::FindPrevious, [this] { m_search->goOn(false); });
    bar->addActions({find, filter});
    bar->addSeparator();
    bar->addActions({m_wrap, smaller, larger});
    bar->addSeparator();
    bar->addActions({m_save, clearAction});
    // The same where the text is, in its context menu.
    QAction *copy = command(tr("Copy"), {}, {}, [view] { view->selection().copy(); });
    QAction *all = command(tr("Select All"), {}, {}, [view] { view->selection().selectAll(); });
    connect(&view->selection(), &LogSelection::changed, copy,
        [view, copy] { copy->setEnabled(!view->selection().isEmpty()); });
    copy->setEnabled(false);
    auto *line = new QAction(this);
    line->setSeparator(true);
    view->addActions({copy, all, line, find, filter, m_wrap, usual, m_save, clearAction});
    view->setContextMenuPolicy(Qt::ActionsContextMenu);
}

void CombinedLogsWindowController::buildLayout()
{
    // What is said here holds file names and texts of other programs.
    m_status->setTextFormat(Qt::PlainText);
    m_notice->setTextFormat(Qt::PlainText);
    m_status->setAccessibleName(tr("Status"));
    m_status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_notice->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_progress->setMaximumWidth(160);
    m_progress->hide();
    m_following->setToolTip(tr("The view follows the text; scroll up to stop it."));
    m_followRefused->setText(tr("Follow All Containers"));
    m_followRefused->setToolTip(tr("kubectl follows five containers at most unless it is asked for more."));
    m_followRefused->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_jump->setText(tr("Jump to End ↓"));
    m_jump->setToolTip(tr("Scroll to the end and follow the text (Ctrl+End)"));
    m_jump->setAutoRaise(true);
    m_jump->setToolButtonStyle(Qt::ToolButtonTextOnly);
    auto *line = new QWidget;
    auto *lineLayout = new QHBoxLayout(line);
    lineLayout->setContentsMargins(8, 2, 8, 2);
    lineLayout->addWidget(makePlaceLabel());
    lineLayout->addWidget(m_status);
    lineLayout->addStretch(1);
    lineLayout->addWidget(m_notice);
    lineLayout->addWidget(m_progress);
    lineLayout->addWidget(m_followRefused);
    lineLayout->addWidget(m_following);
    lineLayout->addWidget(m_jump);
    // The same with the label as with the button: the text above must not move.
    line->setMinimumHeight(m_jump->sizeHint().height() + 4);
    m_status->setMinimumWidth(60);
    m_status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    lineLayout->setStretchFactor(m_status, 4);

    auto *central = new QWidget;
    auto *layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_content, 1);
    layout->addWidget(m_filterBar);
    layout->addWidget(m_findBar);
    layout->addWidget(line);
    setCentralWidget(central);
}

/// Where the text comes from, also when the title is too long for its bar.
QWidget *CombinedLogsWindowController::makePlaceLabel()
{
    constexpr int widest = 320;
    auto *label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setAccessibleName(tr("Context and Namespace"));
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    label->setContentsMargins(0, 0, 12, 0);
    connect(this, &QWidget::windowTitleChanged, label, [this, label] {
        const QString place = display_text::clean(m_content->place());
        label->setText(label->fontMetrics().elidedText(place, Qt::ElideMiddle, widest));
        label->setToolTip(display_text::toolTip(place));
    });
    return label;
}

void CombinedLogsWindowController::connectParts()
{
    LogView *view = m_content->logTextView();
    LogDocument *document = &m_content->document();
    connect(m_findBar, &LogPatternBar::patternChanged, this, &CombinedLogsWindowController::find);
    connect(m_findBar, &LogPatternBar::stepped, m_search, &LogSearch::goOn);
    connect(m_filterBar, &LogPatternBar::patternChanged, document, &LogDocument::setFilter);
    for (LogPatternBar *bar : {m_findBar, m_filterBar}) {
        connect(bar, &LogPatternBar::closed, view, [view] { view->setFocus(); });
    }
    connect(m_search, &LogSearch::changed, this, &CombinedLogsWindowController::updateFindResult);
    connect(m_search, &LogSearch::currentMoved, &view->scroll(), &LogScroll::reveal);
    connect(document, &LogDocument::appended, this, &CombinedLogsWindowController::updateStatus);
    connect(document, &LogDocument::replaced, this, &CombinedLogsWindowController::updateStatus);
    connect(m_content, &CombinedLogsViewController::sourcesChanged, this,
        &CombinedLogsWindowController::updateStatus);
    connect(&view->scroll(), &LogScroll::followingChanged, this, &CombinedLogsWindowController::updateStatus);
    connect(&view->selection(), &LogSelection::noticed, m_notice, &QLabel::setText);
    connect(m_followRefused, &QToolButton::clicked, m_content, &CombinedLogsViewController::followRefused);
    connect(m_jump, &QToolButton::clicked, view, [view] {
        view->scroll().follow();
        view->setFocus();
    });
}

void CombinedLogsWindowController::find(const LogPattern &pattern)
{
    m_search->setPattern(pattern, m_content->logTextView()->scroll().topPosition());
}

void CombinedLogsWindowController::updateFindResult()
{
    m_content->logTextView()->setHighlight(m_search->pattern(), m_search->current());
    if (m_search->pattern().isEmpty() || !m_search->pattern().isValid()) {
        return;
    }
    const QString more = (m_search->isSearching() ? QStringLiteral("…") : QString())
        + (m_search->cutOffLines() > 0 ? tr(" (%1)").arg(tooComplicated(m_search->cutOffLines()))
                                       : QString());
    if (m_search->count() == 0) {
        m_findBar->setResult((m_search->isSearching() ? tr("Searching") : tr("Not found")) + more);
    } else if (const qint64 number = m_search->currentNumber()) {
        m_findBar->setResult(tr("%1 of %2").arg(counted(number), counted(m_search->count())) + more);
    } else {
        m_findBar->setResult(tr("%1 found").arg(counted(m_search->count())) + more);
    }
}

QString CombinedLogsWindowController::statusText() const
{
    return m_status->text();
}

void CombinedLogsWindowController::updateStatus()
{
    const LogDocument &document = m_content->document();
    QStringList parts;
    if (document.size() == 0) {
        parts.append(tr("No text yet"));
    } else {
        parts.append(tr("%1 lines, %2").arg(counted(document.lines()), bytesText(document.size())));
    }
    if (document.isNarrowed()) {
        const qint64 size = document.size();
        parts.append(document.examined() < size - LogScan::usualSpan
                ? tr("%1 shown so far (%2 %)")
                      .arg(counted(document.shownLines()))
                      .arg(document.examined() * 100 / size)
                : tr("%1 shown").arg(counted(document.shownLines())));
    }
    if (document.cutOffLines() > 0 && m_filterBar->pattern() == document.filter()) {
        m_filterBar->setResult(tooComplicated(document.cutOffLines()));
    }
    parts += streamParts(*m_content);
    if (!document.problem().isEmpty()) {
        parts.prepend(document.isFull() ? tr("Stopped: %1").arg(document.problem()) : document.problem());
    }
    const QString text = parts.join(QStringLiteral(" · "));
    if (text != m_status->text()) {
        m_status->setText(text);
        m_status->setToolTip(display_text::toolTip(text));
    }
    const auto &sources = m_content->sources();
    m_followRefused->setVisible(std::any_of(sources.cbegin(), sources.cend(),
        [](const LogSource &source) { return !source.refusedContainers().isEmpty(); }));
    const bool following = m_content->logTextView()->scroll().isFollowing();
    m_following->setVisible(following);
    m_jump->setVisible(!following);
}

void CombinedLogsWindowController::clear()
{
    m_content->clear();
    m_notice->clear();
}

void CombinedLogsWindowController::chooseFile()
{
    auto *dialog = new QFileDialog(this, tr("Save Log"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave); // asks before it replaces a file
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setDefaultSuffix(QStringLiteral("log"));
    QString name = m_content->nameSpace;
    dialog->selectFile(name.replace(QLatin1Char('/'), QLatin1Char('-')) + QLatin1String("-logs.log"));
    connect(dialog, &QFileDialog::fileSelected, this, &CombinedLogsWindowController::saveTo);
    dialog->open();
}

void CombinedLogsWindowController::saveTo(const QString &path)
{
    m_content->document().commit();
    const LogBytes bytes = m_content->document().bytes();
    if (m_export) {
        m_export->disconnect(this);
        m_export->disconnect(m_progress);
        m_export->leaveAlone();
    }
    m_export = new LogExport(bytes, path);
    m_save->setEnabled(false);
    m_notice->setText(tr("Saving…"));
    m_progress->setValue(0);
    m_progress->show();
    connect(m_export, &LogExport::progressed, m_progress, &QProgressBar::setValue);
    connect(m_export, &LogExport::finished, this, [this, size = bytes.size()](const QString &problem) {
        const QString shown = QDir::toNativeSeparators(m_export->path());
        m_notice->setText(problem.isEmpty() ? tr("Saved %1 to %2").arg(bytesText(size), shown)
                                            : tr("%1 could not be saved: %2").arg(shown, problem));
        m_progress->hide();
        m_save->setEnabled(true);
        m_export = nullptr; // it goes by itself
    });
}

void CombinedLogsWindowController::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && !m_findBar->isHidden()) {
        m_findBar->close();
    } else if (event->key() == Qt::Key_Escape && !m_filterBar->isHidden()) {
        m_filterBar->close();
    } else {
        QMainWindow::keyPressEvent(event);
    }
}

void CombinedLogsWindowController::closeEvent(QCloseEvent *event)
{
    m_content->windowWillClose();
    QMainWindow::closeEvent(event);
}

} // namespace tidewright

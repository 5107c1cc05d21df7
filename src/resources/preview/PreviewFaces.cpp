// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/preview/PreviewFaces.h"

#include "platform/text/DisplayText.h"
#include "platform/text/Timestamp.h"
#include "resources/preview/ContainersTable.h"
#include "resources/preview/EventsTable.h"
#include "resources/preview/TextInPieces.h"
#include "resources/preview/YamlHighlighter.h"

#include <QEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr std::chrono::seconds progressDelay(1);

QPlainTextEdit *newText(const QString &accessibleName)
{
    auto *text = new QPlainTextEdit;
    text->setReadOnly(true);
    text->setTabChangesFocus(true);
    text->setFrameShape(QFrame::NoFrame);
    text->setLineWrapMode(QPlainTextEdit::NoWrap);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text->setAccessibleName(accessibleName);
    text->document()->setDocumentMargin(12);
    return text;
}

QProgressBar *newProgress()
{
    auto *progress = new QProgressBar;
    progress->setRange(0, 0);
    progress->setTextVisible(false);
    progress->setFixedHeight(3);
    QSizePolicy kept = progress->sizePolicy();
    kept.setRetainSizeWhenHidden(true);
    progress->setSizePolicy(kept);
    progress->hide();
    return progress;
}

/// A text as it is, or a reason, which wraps.
void setText(
    QPlainTextEdit &view, TextInPieces &pieces, const std::optional<QString> &text, const QString &reason)
{
    view.setLineWrapMode(text ? QPlainTextEdit::NoWrap : QPlainTextEdit::WidgetWidth);
    pieces.show(text.value_or(reason));
}

QVBoxLayout *newColumn(QWidget *parent)
{
    auto *layout = new QVBoxLayout(parent);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    return layout;
}

} // namespace

PreviewFaces::PreviewFaces()
    : m_tabs(new QTabBar)
    , m_progress(newProgress())
    , m_stack(new QStackedWidget)
    , m_text(newText(tr("Preview")))
    , m_textPieces(new TextInPieces(*m_text))
    , m_containers(new ContainersTable)
    , m_description(newText(tr("Description")))
    , m_descriptionPieces(new TextInPieces(*m_description))
    , m_eventsNote(new QLabel)
    , m_events(new EventsTable)
    , m_colours(new YamlHighlighter(m_text->document()))
{
    addTabs();
    addPages();
    auto *tabs = new QHBoxLayout;
    tabs->setContentsMargins(8, 0, 8, 0);
    tabs->addWidget(m_tabs);
    tabs->addStretch();
    QVBoxLayout *layout = newColumn(this);
    layout->addLayout(tabs);
    layout->addWidget(m_progress);
    layout->addWidget(m_stack, 1);
    m_progressDelay.setSingleShot(true);
    m_progressDelay.setInterval(progressDelay);
    connect(&m_progressDelay, &QTimer::timeout, m_progress, &QWidget::show);
}

void PreviewFaces::addTabs()
{
    for (const QString &title : {tr("&YAML"), tr("&Describe"), tr("&Events")}) {
        m_tabs->addTab(title);
    }
    m_tabs->setDocumentMode(true);
    m_tabs->setExpanding(false);
    m_tabs->setDrawBase(false);
    m_tabs->setFocusPolicy(Qt::TabFocus);
    m_tabs->setAccessibleName(tr("Faces"));
    connect(m_tabs, &QTabBar::currentChanged, this, [this](int index) {
        m_stack->setCurrentIndex(index);
        if (!m_tabs->hasFocus()) {
            focusFace();
        }
        Q_EMIT faceChanged();
    });
}

void PreviewFaces::addPages()
{
    m_stack->addWidget(m_text);
    auto *described = new QWidget;
    QVBoxLayout *layout = newColumn(described);
    auto *containers = new QHBoxLayout;
    containers->setContentsMargins(12, 8, 12, 0);
    containers->addWidget(m_containers);
    layout->addLayout(containers);
    layout->addWidget(m_description, 1);
    m_stack->addWidget(described);
    auto *happened = new QWidget;
    m_eventsNote->setTextFormat(Qt::PlainText);
    m_eventsNote->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_eventsNote->setWordWrap(true);
    m_eventsNote->setContentsMargins(12, 12, 12, 12);
    layout = newColumn(happened);
    layout->addWidget(m_eventsNote);
    layout->addWidget(m_events, 1);
    m_stack->addWidget(happened);
}

PreviewFace PreviewFaces::face() const
{
    return static_cast<PreviewFace>(m_tabs->currentIndex());
}

void PreviewFaces::setFace(PreviewFace face)
{
    const QSignalBlocker quiet(m_tabs);
    m_tabs->setCurrentIndex(static_cast<int>(face));
    m_stack->setCurrentIndex(m_tabs->currentIndex());
}

void PreviewFaces::stepFace(int by)
{
    m_tabs->setCurrentIndex((m_tabs->currentIndex() + by + m_tabs->count()) % m_tabs->count());
}

std::array<QWidget *, previewFaceCount + 1> PreviewFaces::readers() const
{
    return {m_text, m_description, m_events, m_containers};
}

void PreviewFaces::focusFace()
{
    readers()[static_cast<std::size_t>(m_tabs->currentIndex())]->setFocus();
}

void PreviewFaces::clear()
{
    m_textPieces->show({});
    m_containers->show({});
    m_descriptionPieces->show({});
    m_eventsNote->hide();
    m_events->show({}, 0);
}

void PreviewFaces::showYaml(const std::optional<QString> &text, const QString &reason)
{
    setText(*m_text, *m_textPieces, text, reason);
}

void PreviewFaces::showDescription(const std::optional<QString> &text, const QString &reason)
{
    setText(*m_description, *m_descriptionPieces, text, reason);
}

void PreviewFaces::showEvents(const std::optional<std::vector<ObjectEvent>> &events, const QString &reason)
{
    m_events->show(events.value_or(std::vector<ObjectEvent>()), currentTime());
    m_eventsNote->setText(events
            ? tr("No events of this object are known. Clusters forget events, most of them after an hour.")
            : display_text::clean(reason));
    m_eventsNote->setVisible(!events || events->empty());
}

void PreviewFaces::showContainers(const std::vector<ContainerFacts> &containers)
{
    m_containers->show(containers);
}

void PreviewFaces::setLoading(bool loading)
{
    if (!loading) {
        m_progressDelay.stop();
        m_progress->hide();
    } else if (!m_progressDelay.isActive() && m_progress->isHidden()) {
        m_progressDelay.start();
    }
}

void PreviewFaces::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange) {
        m_colours->rehighlight(); // the colours are those of a light or of a dark palette
    }
    QWidget::changeEvent(event);
}

} // namespace tidewright

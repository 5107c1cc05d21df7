// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/preview/PreviewPanel.h"

#include "platform/text/DisplayText.h"
#include "resources/preview/RelationsLine.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QShortcut>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr std::chrono::milliseconds faceDelay(200);

} // namespace

PreviewPanel &PreviewPanel::shared()
{
    static QPointer<PreviewPanel> panel;
    if (!panel) {
        panel = new PreviewPanel;
    }
    return *panel;
}

PreviewPanel::PreviewPanel()
    : m_title(new QLabel)
    , m_state(new QLabel)
    , m_relations(new RelationsLine)
    , m_faces(new PreviewFaces)
{
    setAttribute(Qt::WA_QuitOnClose, false);
    setAccessibleName(tr("Preview"));
    resize(760, 700);
    buildLayout();
    addKeys();
    connect(m_relations, &RelationsLine::followed, this, &PreviewPanel::follow);
    connect(m_faces, &PreviewFaces::faceChanged, this, &PreviewPanel::changeFace);
    m_faceDelay.setSingleShot(true);
    m_faceDelay.setInterval(faceDelay);
    connect(&m_faceDelay, &QTimer::timeout, this, [this] { load(m_faces->face()); });
}

void PreviewPanel::buildLayout()
{
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    m_title->setTextFormat(Qt::PlainText);
    m_title->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_title->setMinimumWidth(40);
    m_state->setTextFormat(Qt::PlainText);
    auto *header = new QHBoxLayout;
    header->setContentsMargins(12, 8, 12, 8);
    header->addWidget(m_title, 1);
    header->addWidget(m_state);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(header);
    layout->addWidget(m_relations);
    layout->addWidget(m_faces, 1);
}

void PreviewPanel::addKeys()
{
    for (QWidget *reader : m_faces->readers()) {
        reader->installEventFilter(this);
    }
    for (const auto &[key, by] :
        {std::pair(QKeySequence(Qt::Key_F6), 1), {QKeySequence(Qt::SHIFT | Qt::Key_F6), -1}}) {
        connect(new QShortcut(key, this), &QShortcut::activated, this,
            [this, by = by] { m_faces->stepFace(by); });
    }
}

void PreviewPanel::present(PreviewSource &source, QWidget &owner)
{
    if (!isVisible()) {
        m_faces->setFace(PreviewFace::Yaml);
    }
    setSource(source, owner);
    show();
    raise();
    activateWindow();
    m_faces->focusFace();
}

void PreviewPanel::setSource(PreviewSource &source, QWidget &owner)
{
    endLoading(); // of the former one
    m_source = &source;
    m_owner = &owner;
    m_index = 0;
    m_awaited.clear();
    showItem();
}

void PreviewPanel::selectionChanged(const PreviewSource &source)
{
    if (m_owner && m_source == &source && isVisible()) {
        m_index = 0;
        showItem();
    }
}

void PreviewPanel::objectFound(PreviewSource &source, QWidget &owner)
{
    if (isVisible() && !m_awaited.isEmpty() && owner.window() == m_awaitedIn
        && source.numberOfPreviewItems() == 1 && source.previewItemTitle(0) == m_awaited) {
        setSource(source, owner);
    }
}

void PreviewPanel::objectMissing(const QString &name)
{
    if (!m_awaited.isEmpty() && name == m_awaited) {
        m_awaited.clear();
        m_state->setText(tr("%1 is not in its table").arg(display_text::shortened(name, 60, 1)));
    }
}

bool PreviewPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->modifiers() == Qt::NoModifier && !key->isAutoRepeat() && handleKey(key->key())) {
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

/// What the tabs and links have no use for.
void PreviewPanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Escape) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void PreviewPanel::closeEvent(QCloseEvent *event)
{
    endLoading();
    m_awaited.clear();
    QWidget::closeEvent(event);
}

bool PreviewPanel::handleKey(int key)
{
    switch (key) {
    case Qt::Key_Space:
    case Qt::Key_Escape:
        close();
        return true;
    case Qt::Key_Up:
    case Qt::Key_Left:
        step(-1);
        return true;
    case Qt::Key_Down:
    case Qt::Key_Right:
        step(1);
        return true;
    default:
        return false;
    }
}

void PreviewPanel::step(int by)
{
    if (!m_owner) {
        return;
    }
    const int count = m_source->numberOfPreviewItems();
    if (count == 1) {
        m_source->movePreviewSelection(by);
    } else if (m_index + by >= 0 && m_index + by < count) {
        m_index += by;
        showItem();
    }
}

void PreviewPanel::follow(const Relation &relation)
{
    if (!m_owner) {
        return;
    }
    QWidget *window = m_owner->window();
    m_awaited = relation.object.name;
    m_awaitedIn = window;
    if (m_awaited.isEmpty()) { // the pods: there the user has to choose
        window->raise();
        window->activateWindow();
    }
    m_source->follow(relation);
}

void PreviewPanel::showItem()
{
    endLoading();
    m_loads.fill(Load::NotAsked);
    m_item.reset();
    m_reason.clear();
    m_relations->clearRelations();
    m_faces->clear();
    const int count = m_owner ? m_source->numberOfPreviewItems() : 0;
    if (m_index >= count) {
        m_title->setText(tr("Preview"));
        m_loads.fill(Load::Done);
        m_position = tr("Nothing is selected");
        showState();
        return;
    }
    m_position = count > 1 ? tr("%1 of %2").arg(m_index + 1).arg(count) : QString();
    m_title->setText(display_text::name(m_source->previewItemTitle(m_index)));
    setWindowTitle(display_text::name(tr("%1 – Preview").arg(m_title->text())));
    load(PreviewFace::Yaml);
    if (m_faces->face() != PreviewFace::Yaml) {
        m_faceDelay.start();
    }
    showState();
}

/// Whatever comes now of what was asked for is dropped.
void PreviewPanel::endLoading()
{
    ++m_request;
    m_faceDelay.stop();
    if (m_owner) {
        m_source->endLoading();
    }
}

void PreviewPanel::changeFace()
{
    m_faceDelay.stop();
    load(m_faces->face());
    showState();
}

void PreviewPanel::load(PreviewFace face)
{
    if (!m_owner || stateOf(face) != Load::NotAsked) {
        return;
    }
    switch (face) {
    case PreviewFace::Yaml:
        loadYaml();
        break;
    case PreviewFace::Describe:
        loadDescription();
        break;
    case PreviewFace::Events:
        loadEvents();
        break;
    }
    showState();
}

template <typename Show> auto PreviewPanel::answer(PreviewFace to, Show show)
{
    stateOf(to) = Load::UnderWay;
    return [panel = QPointer(this), request = m_request, to, show](const auto &value, const QString &reason) {
        if (panel && panel->m_request == request) {
            panel->stateOf(to) = value ? Load::Done : Load::Failed;
            show(*panel, value, reason);
            panel->showState();
        }
    };
}

void PreviewPanel::loadYaml()
{
    const auto show = [](PreviewPanel &panel, const std::optional<PreviewItem> &item, const QString &reason) {
        panel.m_item = item;
        panel.m_reason = reason;
        panel.m_faces->showYaml(item ? std::optional(item->text) : std::nullopt, reason);
        if (item) {
            panel.m_relations->show(item->story.relations,
                [&panel](const Relation &relation) { return panel.m_source->canFollow(relation); });
            panel.m_faces->showContainers(item->story.containers);
        }
        if (panel.m_faces->face() == PreviewFace::Events) { // they go by what the object says of itself
            panel.load(PreviewFace::Events);
        }
    };
    m_source->loadPreviewItem(m_index, answer(PreviewFace::Yaml, show));
}

void PreviewPanel::loadDescription()
{
    m_source->loadDescription(answer(PreviewFace::Describe,
        [](PreviewPanel &panel, const std::optional<QString> &description, const QString &reason) {
            panel.m_faces->showDescription(description, reason);
        }));
}

void PreviewPanel::loadEvents()
{
    const auto show = [](PreviewPanel &panel, const std::optional<std::vector<ObjectEvent>> &events,
                          const QString &reason) { panel.m_faces->showEvents(events, reason); };
    if (m_item) {
        m_source->loadEvents(m_item->story, answer(PreviewFace::Events, show));
    } else if (stateOf(PreviewFace::Yaml) == Load::Failed) {
        answer(PreviewFace::Events, show)(std::optional<std::vector<ObjectEvent>>(), m_reason);
    }
}

void PreviewPanel::showState()
{
    const Load shown = stateOf(m_faces->face());
    const bool loads = shown == Load::NotAsked || shown == Load::UnderWay;
    const std::array<QString, previewFaceCount> failures{
        tr("No preview"), tr("No description"), tr("No events")};
    m_state->setText(loads          ? tr("Loading…")
            : shown == Load::Failed ? failures[static_cast<std::size_t>(m_faces->face())]
                                    : m_position);
    m_faces->setLoading(loads);
}

} // namespace tidewright

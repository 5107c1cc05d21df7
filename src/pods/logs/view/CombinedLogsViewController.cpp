// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/CombinedLogsViewController.h"

#include "platform/desktop/Diagnostics.h"
#include "platform/text/DisplayText.h"
#include "pods/console/ConsoleStyle.h"
#include "pods/logs/view/ColorIndexView.h"
#include "pods/logs/view/EmptyLogs.h"
#include "resources/changes/Confirmation.h"
#include "resources/preview/PreviewFiles.h"
#include "resources/widgets/ContextBand.h"
#include "resources/widgets/NamedImages.h"

#include <QDir>
#include <QLocale>
#include <QScrollBar>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace tidewright {

namespace {

constexpr int indexTop = 20;
constexpr int indexRight = 16;

/// Where a log's file may lie: on the disk rather than in memory.
QStringList logFolders()
{
    return {cacheDirectory(), QStringLiteral("/var/tmp"), QDir::tempPath()};
}

} // namespace

CombinedLogsViewController::CombinedLogsViewController(QWidget *parent)
    : QWidget(parent)
    , foregroundColors{namedColour(QStringLiteral("solarized-base2")),
          namedColour(QStringLiteral("solarized-yellow")), namedColour(QStringLiteral("solarized-blue")),
          namedColour(QStringLiteral("solarized-orange")), namedColour(QStringLiteral("solarized-cyan"))}
    , m_document(logFolders())
    , m_logTextView(new LogView(m_document))
    , m_colorIndexView(new ColorIndexView(this))
    , m_band(new ContextBand)
{
    logAttributes.setBackground(namedColour(QStringLiteral("solarized-base03")));
    logAttributes.setFont(console_style::font());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_band);
    layout->addWidget(m_logTextView);
    m_colorIndexView->raise();
    m_colorIndexView->hide();
    connectParts();
}

CombinedLogsViewController::~CombinedLogsViewController()
{
    windowWillClose();
    delete m_logTextView; // before the document that it shows
}

void CombinedLogsViewController::connectParts()
{
    connect(
        m_colorIndexView, &ColorIndexView::sourceClicked, this, &CombinedLogsViewController::toggleSource);
    connect(&m_document, &LogDocument::appended, this, &CombinedLogsViewController::stopWhenFull);
    connect(&m_document, &LogDocument::appended, this, &CombinedLogsViewController::updateHint);
    connect(&m_document, &LogDocument::replaced, this, &CombinedLogsViewController::updateHint);
    m_streams.setHeldUp([this] { return m_document.isBehind(); });
    connect(&m_streams, &LogStreams::arrived, this,
        [this](int source, const QByteArray &bytes) { m_document.append(source, bytes); });
    connect(&m_streams, &LogStreams::changed, this, &CombinedLogsViewController::streamsChanged);
}

QTableWidget *CombinedLogsViewController::colorIndexTableView() const
{
    return m_colorIndexView->table();
}

QString CombinedLogsViewController::title() const
{
    QStringList names;
    for (const ContainerPair &pair : containers) {
        names.append(pair.container);
    }
    if (!workloads.empty()) {
        names.clear();
        for (const ContainerPair &workload : workloads) {
            names.append(tr("all pods of %1").arg(workload.pod));
        }
    }
    const QLatin1String what(options.previous ? " Previous Logs | " : " Logs | ");
    return nameSpace + what + names.join(QLatin1Char(',')) + QStringLiteral(" — ") + place();
}

/// Of a pod elsewhere with its namespace.
QString CombinedLogsViewController::nameOf(const ContainerPair &pair) const
{
    const bool isElsewhere = !pair.nameSpace.isEmpty() && pair.nameSpace != nameSpace;
    return (isElsewhere ? pair.nameSpace + QLatin1Char('/') : QString()) + pair.pod + QLatin1Char(':')
        + pair.container;
}

QString CombinedLogsViewController::place() const
{
    return context + QLatin1String(" / ") + nameSpace;
}

void CombinedLogsViewController::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    viewDidAppear();
}

void CombinedLogsViewController::viewDidAppear()
{
    if (m_appeared) {
        return;
    }
    m_appeared = true;
    window()->setWindowTitle(display_text::clean(title()));
    Q_EMIT placeKnown();
    m_band->setContext(contextKey);
    m_logTextView->setTextFont(logAttributes.font());
    m_logTextView->setBackground(logAttributes.background().color());
    m_logTextView->setSourceColours({foregroundColors.cbegin(), foregroundColors.cend()});
    updateHint();
    if (containers.empty() && workloads.empty()) {
        writeDiagnostic(QStringLiteral("No containers"));
    } else if (containers.size() > mostUnasked) {
        // Once the window stands where the question is to be.
        QTimer::singleShot(0, this, [this] {
            askForStreams(static_cast<int>(containers.size()),
                [this](bool agreed) { agreed ? startStreams() : (void)window()->close(); });
        });
    } else {
        startStreams();
    }
}

void CombinedLogsViewController::askForStreams(int count, std::function<void(bool agreed)> answered)
{
    constexpr qint64 megabytesOfOne = 40; // of a kubectl that follows a log
    const QString memory
        = QLocale().formattedDataSize(count * megabytesOfOne * 1'000'000, 1, QLocale::DataSizeSIFormat);
    const QString title = tr("Follow %1 Logs").arg(QLocale().toString(count));
    showConfirmation(this,
        {.title = title,
            .message
            = tr("Each is followed by a kubectl of its own. Together they will take about %1 of memory.")
                  .arg(memory),
            .yes = title},
        [self = QPointer<CombinedLogsViewController>(this), answered = std::move(answered)](bool agreed) {
            if (self) {
                answered(agreed);
            }
        });
}

void CombinedLogsViewController::addRow(const ContainerPair &container)
{
    const auto row = static_cast<std::size_t>(m_colorIndexView->table()->rowCount());
    m_colorIndexView->addRow(nameOf(container), foregroundColors[row % foregroundColors.size()]);
    m_names.append(nameOf(container));
    m_logTextView->setSourceNames(m_names);
}

void CombinedLogsViewController::startStreams()
{
    m_document.clear();
    if (!workloads.empty()) {
        startFollower();
    } else {
        for (std::size_t i = 0; i < containers.size(); ++i) {
            addRow(containers[i]);
            startStream(m_streams.add(), options);
        }
    }
    placeColorIndex();
    m_colorIndexView->show();
    m_colorIndexView->announce();
    updateHint();
}

void CombinedLogsViewController::startFollower()
{
    containers.clear();
    m_follower = std::make_unique<PodFollower>(m_streams, streamPlace(), workloads, options);
    connect(m_follower.get(), &PodFollower::added, this, [this](const ContainerPair &container) {
        containers.push_back(container);
        addRow(container);
        updateSource(m_streams.count() - 1);
    });
    connect(m_follower.get(), &PodFollower::happened, this, &CombinedLogsViewController::mark);
    connect(m_follower.get(), &PodFollower::podsChanged, this, [this] {
        placeColorIndex();
        updateHint();
        Q_EMIT sourcesChanged();
    });
    connect(m_follower.get(), &PodFollower::tooMany, this, [this](int streams) {
        askForStreams(streams, [this, streams](bool agreed) {
            if (!agreed && !hasRunningStreams()) {
                window()->close();
            } else if (m_follower) {
                agreed ? m_follower->allow(streams) : m_follower->decline();
            }
        });
    });
    m_follower->start();
}

void CombinedLogsViewController::startStream(int index, const LogOptions &wanted, const QStringList &more)
{
    const LogPlace place = streamPlace();
    m_streams.start(index, place.makeShell(),
        logArguments(place, containers[static_cast<std::size_t>(index)], wanted) + more);
}

void CombinedLogsViewController::followRefused()
{
    for (int i = 0; i < m_streams.count(); ++i) {
        const QString count = m_streams.source(i).refusedContainers();
        if (!count.isEmpty()) {
            m_document.resume();
            startStream(i, options, {QLatin1String("--max-log-requests=") + count});
        }
    }
}

void CombinedLogsViewController::restart()
{
    m_follower.reset();
    for (int i = 0; i < m_streams.count() && !workloads.empty(); ++i) {
        m_document.setSourceHidden(i, false); // another one will have its number
    }
    m_streams.forget();
    m_colorIndexView->clear();
    m_names.clear();
    m_logTextView->clearMarks();
    m_document.resume();
    m_cleared = false;
    window()->setWindowTitle(display_text::clean(title()));
    startStreams();
    Q_EMIT sourcesChanged();
}

bool CombinedLogsViewController::canFollowAgain() const
{
    const auto &all = sources();
    return !m_follower && !options.previous && !m_document.isFull()
        && std::any_of(all.cbegin(), all.cend(),
            [](const LogSource &source) { return source.ended && source.refusedContainers().isEmpty(); });
}

void CombinedLogsViewController::followAgain()
{
    m_document.resume();
    for (int i = 0; i < m_streams.count(); ++i) {
        LogSource &source = m_streams.source(i);
        if (source.ended && source.refusedContainers().isEmpty()) {
            LogOptions rest = options;
            rest.since = source.endedAt.toUTC().toString(Qt::ISODate).toLatin1();
            source.tell(tr("followed again"));
            mark(i, tr("followed again"));
            startStream(i, rest);
        }
    }
}

/// What has become of a source stands where its text goes on.
void CombinedLogsViewController::mark(int source, const QString &what)
{
    m_document.commit();
    m_logTextView->addMark(
        {m_document.size(), nameOf(containers[static_cast<std::size_t>(source)]) + u' ' + what});
    updateSource(source);
    m_colorIndexView->announce();
}

void CombinedLogsViewController::streamsChanged(const QList<int> &sources, bool isNews)
{
    for (const int source : sources) {
        updateSource(source);
    }
    if (isNews) {
        m_colorIndexView->announce();
    }
    placeColorIndex();
    if (hasRunningStreams()) {
        m_document.resume();
    } else {
        m_document.finish();
    }
    updateHint();
    Q_EMIT sourcesChanged();
}

void CombinedLogsViewController::stopWhenFull()
{
    if (m_document.isFull()) {
        m_follower.reset();
        m_streams.cancel();
    }
}

void CombinedLogsViewController::windowWillClose()
{
    m_follower.reset();
    m_streams.close();
}

void CombinedLogsViewController::toggleSource(int row)
{
    m_document.setSourceHidden(row, !m_document.isSourceHidden(row));
    updateSource(row);
    placeColorIndex();
    Q_EMIT sourcesChanged();
}

void CombinedLogsViewController::updateSource(int index)
{
    const LogSource &source = sources()[static_cast<std::size_t>(index)];
    ColorIndexView::State state;
    state.hidden = m_document.isSourceHidden(index);
    state.text = source.state();
    state.note = source.note();
    state.details = source.details();
    state.image = source.failure ? QStringLiteral("NSStatusUnavailable")
        : source.waits           ? QStringLiteral("NSStatusPartiallyAvailable")
        : source.ended           ? QStringLiteral("statusCompleted")
                                 : QStringLiteral("NSStatusAvailable");
    m_colorIndexView->setState(index, state);
}

void CombinedLogsViewController::clear()
{
    m_cleared = true;
    m_logTextView->clearMarks();
    m_document.clear();
}

/// Why there is nothing to see, while that is so.
void CombinedLogsViewController::updateHint()
{
    if (m_document.shown().lineCount() == 0) {
        m_logTextView->setHint(emptyLogsText(*this, m_cleared));
    }
}

void CombinedLogsViewController::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeColorIndex();
}

/// At the right, beside the scroll bar; its top edge stays where it is whatever its height.
void CombinedLogsViewController::placeColorIndex()
{
    const int bar = m_logTextView->verticalScrollBar()->sizeHint().width();
    const QSize size = m_colorIndexView->fittingSize(QSize(width() * 2 / 3, height() - 2 * indexTop));
    m_colorIndexView->setGeometry(
        width() - size.width() - bar - indexRight, indexTop, size.width(), std::max(0, size.height()));
}

} // namespace tidewright

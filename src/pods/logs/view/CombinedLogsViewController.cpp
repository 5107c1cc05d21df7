// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/CombinedLogsViewController.h"

#include "core/ApplicationRecord.h"
#include "core/ChildEnvironment.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/text/DisplayText.h"
#include "platform/threads/MainQueue.h"
#include "pods/console/ConsoleStyle.h"
#include "pods/logs/view/ColorIndexView.h"
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
#include <set>

namespace tidewright {

namespace {

constexpr int indexTop = 20;
constexpr int indexRight = 16;
constexpr int failuresInHint = 4;

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
    connect(
        m_colorIndexView, &ColorIndexView::sourceClicked, this, &CombinedLogsViewController::toggleSource);
    connect(&m_document, &LogDocument::appended, this, &CombinedLogsViewController::stopWhenFull);
    connect(&m_document, &LogDocument::appended, this, &CombinedLogsViewController::updateHint);
    connect(&m_document, &LogDocument::replaced, this, &CombinedLogsViewController::updateHint);
    const QPointer<CombinedLogsViewController> self(this);
    m_intake = std::make_shared<LogIntake>([self] {
        postToMain(self, [](CombinedLogsViewController &controller) { controller.takePieces(); });
    });
}

CombinedLogsViewController::~CombinedLogsViewController()
{
    windowWillClose();
    delete m_logTextView; // before the document that it shows
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
    return nameSpace + QLatin1String(" Logs | ") + names.join(QLatin1Char(',')) + QStringLiteral(" — ")
        + place();
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
    m_band->setContext(contextKey);
    m_logTextView->setTextFont(logAttributes.font());
    m_logTextView->setBackground(logAttributes.background().color());
    m_logTextView->setSourceColours({foregroundColors.cbegin(), foregroundColors.cend()});
    if (containers.empty()) {
        writeDiagnostic(QStringLiteral("No containers"));
        updateHint();
        return;
    }
    updateHint();
    if (containers.size() > mostUnasked) {
        // Once the window stands where the question is to be.
        QTimer::singleShot(0, this, &CombinedLogsViewController::askForStreams);
    } else {
        startStreams();
    }
}

void CombinedLogsViewController::askForStreams()
{
    constexpr qint64 megabytesOfOne = 40; // of a kubectl that follows a log
    const QString count = QLocale().toString(containers.size());
    const QString memory = QLocale().formattedDataSize(
        static_cast<qint64>(containers.size()) * megabytesOfOne * 1'000'000, 1, QLocale::DataSizeSIFormat);
    const QString title = tr("Follow %1 Logs").arg(count);
    showConfirmation(this,
        {.title = title,
            .message
            = tr("Each is followed by a kubectl of its own. Together they will take about %1 of memory.")
                  .arg(memory),
            .yes = title},
        [self = QPointer<CombinedLogsViewController>(this)](bool agreed) {
            if (self) {
                agreed ? self->startStreams() : (void)self->window()->close();
            }
        });
}

void CombinedLogsViewController::startStreams()
{
    m_document.clear();
    m_sources.resize(containers.size());
    for (std::size_t i = 0; i < containers.size(); ++i) {
        startStream(static_cast<int>(i));
        m_colorIndexView->addRow(nameOf(containers[i]), foregroundColors[i % foregroundColors.size()]);
        updateSource(static_cast<int>(i));
    }
    placeColorIndex();
    m_colorIndexView->show();
    m_colorIndexView->announce();
    updateHint();
}

void CombinedLogsViewController::startStream(int index, const QStringList &more)
{
    const auto &[pod, container, ownNamespace] = containers[static_cast<std::size_t>(index)];
    const std::shared_ptr<Shell> shell = Shell::create();
    child_environment::setKubeConfig(shell->environment, kubeConfigPath);
    m_shells.push_back(shell);
    follow(index, *shell,
        {kubectlPath(), QStringLiteral("logs"), QStringLiteral("-f"), QStringLiteral("--tail=50"),
            contextArgument(context),
            QLatin1String("-n") + (ownNamespace.isEmpty() ? nameSpace : ownNamespace), pod, container},
        more);
}

void CombinedLogsViewController::follow(
    int index, Shell &shell, const QStringList &arguments, const QStringList &more)
{
    shell.runStreaming(
        arguments + more,
        [intake = m_intake, index](const QByteArray &output, const std::optional<QByteArray> &error) {
            using Kind = LogIntake::Piece::Kind;
            intake->put({index, error ? Kind::Error : Kind::Output, error.value_or(output)});
        },
        [intake = m_intake, index](const auto &failure) { intake->end(index, failure); });
}

void CombinedLogsViewController::followRefused()
{
    for (std::size_t i = 0; i < m_sources.size(); ++i) {
        const QString count = m_sources[i].refusedContainers();
        if (!count.isEmpty()) {
            m_document.resume();
            m_sources[i] = {};
            startStream(static_cast<int>(i), {QLatin1String("--max-log-requests=") + count});
            updateSource(static_cast<int>(i));
        }
    }
    placeColorIndex();
    updateHint();
    Q_EMIT sourcesChanged();
}

void CombinedLogsViewController::takePieces()
{
    std::set<int> changed;
    bool isNews = false;
    for (const LogIntake::Piece &piece : m_intake->take()) {
        if (piece.kind == LogIntake::Piece::Kind::Output) {
            m_document.append(piece.source, piece.bytes);
            continue;
        }
        LogSource &source = m_sources[static_cast<std::size_t>(piece.source)];
        if (piece.kind == LogIntake::Piece::Kind::End) {
            source.ended = true;
            source.failure = piece.failure;
        } else {
            isNews = isNews || source.said.isEmpty();
            source.hear(piece.bytes);
        }
        isNews = isNews || source.failure;
        changed.insert(piece.source);
    }
    for (const int source : changed) {
        updateSource(source);
    }
    if (isNews) {
        m_colorIndexView->announce();
    }
    if (!changed.empty()) {
        placeColorIndex();
        if (!hasRunningStreams()) {
            m_document.finish();
        }
        updateHint();
        Q_EMIT sourcesChanged();
    }
}

bool CombinedLogsViewController::hasRunningStreams() const
{
    return std::any_of(
        m_sources.cbegin(), m_sources.cend(), [](const LogSource &source) { return !source.ended; });
}

void CombinedLogsViewController::stopWhenFull()
{
    if (m_document.isFull()) {
        for (const auto &shell : m_shells) {
            shell->cancel();
        }
    }
}

void CombinedLogsViewController::windowWillClose()
{
    if (m_closed) {
        return;
    }
    m_closed = true;
    m_intake->close();
    for (const auto &shell : m_shells) {
        const std::shared_ptr<ChildProcess> process = shell->process();
        const bool isRunning = process && process->isRunning();
        shell->cancel(); // also one whose child is only about to start
        if (isRunning) {
            writeDiagnostic(QStringLiteral("Process terminated"));
        }
    }
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
    const LogSource &source = m_sources[static_cast<std::size_t>(index)];
    ColorIndexView::State state;
    state.hidden = m_document.isSourceHidden(index);
    state.text = source.state();
    state.note = source.note();
    state.details = source.details();
    state.image = source.failure ? QStringLiteral("NSStatusUnavailable")
        : source.ended           ? QStringLiteral("statusCompleted")
                                 : QStringLiteral("NSStatusAvailable");
    m_colorIndexView->setState(index, state);
}

void CombinedLogsViewController::clear()
{
    m_cleared = true;
    m_document.clear();
}

/// Why there is nothing to see, while that is so.
void CombinedLogsViewController::updateHint()
{
    if (m_document.shown().lineCount() == 0) {
        m_logTextView->setHint(m_document.size() > 0 ? narrowedText() : emptyText());
    }
}

QString CombinedLogsViewController::narrowedText() const
{
    int hidden = 0;
    for (int i = 0; i < static_cast<int>(m_sources.size()); ++i) {
        hidden += m_document.isSourceHidden(i) ? 1 : 0;
    }
    if (hidden == static_cast<int>(m_sources.size())) {
        return tr("All containers are hidden.");
    }
    if (m_document.examined() < m_document.size() - LogScan::usualSpan) {
        return tr("Looking for lines to show…");
    }
    return m_document.filter().isEmpty() ? tr("The containers that are not hidden have written nothing.")
                                         : tr("No line matches the filter.");
}

QString CombinedLogsViewController::emptyText() const
{
    if (containers.empty()) {
        return tr("There are no containers to follow.");
    }
    if (m_sources.empty()) {
        return tr("Nothing is followed yet.");
    }
    if (m_cleared) {
        return tr("Cleared.");
    }
    if (hasRunningStreams()) {
        return containers.size() == 1 ? tr("Waiting for output of 1 container…")
                                      : tr("Waiting for output of %1 containers…").arg(containers.size());
    }
    QStringList lines{tr("No container has written anything, and none is followed any more.")};
    for (std::size_t i = 0; i < m_sources.size() && lines.size() <= failuresInHint; ++i) {
        if (m_sources[i].failure) {
            lines.append(containers[i].pod + QLatin1String(": ") + m_sources[i].details());
        }
    }
    return lines.join(QLatin1String("\n\n"));
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

// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/DestinationView.h"

#include "app/content/PrimaryContentController.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/text/DisplayText.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/changes/CreateFromFiles.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QLocale>
#include <QMimeData>
#include <QPainter>
#include <QToolTip>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr int frameWidth = 6;

/// Without the slash that some file managers put behind a folder's name.
QString localPath(const QUrl &url)
{
    return url.adjusted(QUrl::StripTrailingSlash).toLocalFile();
}

bool hasExpectedExtension(const QUrl &url)
{
    return url.isLocalFile() && DestinationView::expectedExt().contains(QFileInfo(localPath(url)).suffix());
}

} // namespace

DestinationView::DestinationView(PrimaryContentController &content, WindowState &window, QWidget *parent)
    : QWidget(parent)
    , m_content(content)
    , m_window(window)
{
    setAcceptDrops(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(&content);
}

bool DestinationView::isAcceptable(const QMimeData &dragged)
{
    const QList<QUrl> urls = dragged.urls();
    return !urls.isEmpty() && hasExpectedExtension(urls.first());
}

QStringList DestinationView::acceptedPaths(const QMimeData &dropped)
{
    QStringList paths;
    for (const QUrl &url : dropped.urls()) {
        if (hasExpectedExtension(url)) {
            paths.append(localPath(url));
        }
    }
    return paths;
}

void DestinationView::dragEnterEvent(QDragEnterEvent *event)
{
    writeDiagnostic(QStringLiteral("entered"));
    const QString reason = changeObstacle(m_window);
    if (!isAcceptable(*event->mimeData())) {
        return; // refused
    }
    if (!reason.isEmpty()) {
        QToolTip::showText(mapToGlobal(event->position().toPoint()), display_text::toolTip(reason), this);
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    setHighlighed(true);
}

void DestinationView::dragMoveEvent(QDragMoveEvent *event)
{
    event->setDropAction(Qt::CopyAction); // the files stay where they are
    event->accept();
}

void DestinationView::dragLeaveEvent(QDragLeaveEvent *)
{
    setHighlighed(false);
}

void DestinationView::dropEvent(QDropEvent *event)
{
    setHighlighed(false);
    event->setDropAction(Qt::CopyAction);
    event->accept();
    confirmAndCreate(acceptedPaths(*event->mimeData()));
}

void DestinationView::confirmAndCreate(const QStringList &paths)
{
    if (paths.isEmpty() || !canCreateIn(m_window)) {
        return;
    }
    QStringList names;
    for (const QString &path : paths) {
        names.append(display_text::withoutLineEnds(QFileInfo(path).fileName()));
    }
    const QString question = QLatin1String("Are you sure you want to add the following: \n    ")
        + names.join(QLatin1String(",\n    ")) + QLatin1Char('?');
    const ChangePlace place(m_window);
    const QString details
        = tr("Files: %1").arg(QLocale().toString(paths.size())) + QLatin1Char('\n') + place.text();
    confirmChange(this, place,
        {.title = QStringLiteral("Confirm Create"),
            .message = question,
            .yes = QStringLiteral("Create"),
            .accessory = confirmationDetails(details),
            .other = tr("Apply…"),
            .otherChosen =
                [self = QPointer<DestinationView>(this), paths, place] {
                    if (self) {
                        self->m_content.applyFrom(paths, place);
                    }
                }},
        [self = QPointer<DestinationView>(this), paths, place](bool confirmed) {
            if (self && confirmed) {
                self->m_content.createFrom(paths, place);
            }
        });
}

void DestinationView::setHighlighed(bool highlighed)
{
    delete m_overlay;
    if (highlighed) {
        m_overlay = new DropOverlayView(this);
        m_overlay->setGeometry(rect());
        m_overlay->show();
    }
}

void DestinationView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_overlay) {
        m_overlay->setGeometry(rect());
    }
}

DropOverlayView::DropOverlayView(QWidget *parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAccessibleName(tr("Drop to create"));
}

void DropOverlayView::paintEvent(QPaintEvent *)
{
    constexpr int half = frameWidth / 2;
    QPainter painter(this);
    painter.setPen(
        QPen(palette().color(QPalette::Highlight), frameWidth, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(rect().adjusted(half, half, -half, -half));
}

} // namespace tidewright

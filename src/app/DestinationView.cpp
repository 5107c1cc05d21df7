// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DestinationView.h"

#include "app/PrimaryContentController.h"
#include "platform/Diagnostics.h"
#include "resources/Confirmation.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QPainter>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr int frameWidth = 6;

bool hasExpectedExtension(const QUrl &url)
{
    return url.isLocalFile()
        && DestinationView::expectedExt().contains(QFileInfo(url.toLocalFile()).suffix());
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
            paths.append(url.toLocalFile());
        }
    }
    return paths;
}

void DestinationView::dragEnterEvent(QDragEnterEvent *event)
{
    writeDiagnostic(QStringLiteral("entered"));
    if (!isAcceptable(*event->mimeData())) {
        return; // refused
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    setHighlighed(true);
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
    if (paths.isEmpty()) {
        return;
    }
    QStringList names;
    for (const QString &path : paths) {
        names.append(QFileInfo(path).fileName());
    }
    const QString question = QLatin1String("Are you sure you want to add the following: \n    ")
        + names.join(QLatin1String(",\n    ")) + QLatin1Char('?');
    const QString context = m_window.currentContext();
    const QString nameSpace = m_window.currentNamespace();
    auto *where = new QLabel(tr("Context: %1\nNamespace: %2").arg(context, nameSpace));
    where->setTextFormat(Qt::PlainText);
    where->setContentsMargins(12, 0, 12, 8);
    showConfirmation(this, QStringLiteral("Confirm Create"), question, QStringLiteral("Create"),
        QStringLiteral("Cancel"), where,
        [self = QPointer<DestinationView>(this), paths, context, nameSpace](bool confirmed) {
            if (!self || !confirmed) {
                return;
            }
            WindowState &window = self->m_window;
            if (window.currentContext() == context && window.currentNamespace() == nameSpace) {
                self->m_content.createFrom(paths);
            } else {
                postConsoleEntry(window.console(), QString(), QString(),
                    makeConsoleError(
                        tr("Nothing was created: the window shows another context or namespace by now.")));
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

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QStringList>
#include <QWidget>

class QMimeData;

namespace tidewright {

class DropOverlayView;
class PrimaryContentController;
class WindowState;

/// The area of a cluster window's tables as the place where YAML files are dropped to create or apply what
/// they declare. While a drag hovers whose first file has the right extension, a frame shows that a drop
/// would be taken; the drop asks before anything is done.
class DestinationView : public QWidget
{
    Q_OBJECT
public:
    /// Takes `content` in. `window` must outlive the view.
    DestinationView(PrimaryContentController &content, WindowState &window, QWidget *parent = nullptr);

    static QStringList expectedExt() { return {QStringLiteral("yaml")}; }
    bool isHighlighed() const { return m_overlay; }

    /// Whether the first of the dragged files has an expected extension, in exactly that case.
    static bool isAcceptable(const QMimeData &dragged);
    /// The local paths of those dropped files that have, in their order.
    static QStringList acceptedPaths(const QMimeData &dropped);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void setHighlighed(bool highlighed);
    void confirmAndCreate(const QStringList &paths);

    PrimaryContentController &m_content;
    WindowState &m_window;
    QPointer<DropOverlayView> m_overlay;
};

/// The frame that shows that a drop would be taken.
class DropOverlayView : public QWidget
{
    Q_OBJECT
public:
    explicit DropOverlayView(QWidget *parent);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace tidewright

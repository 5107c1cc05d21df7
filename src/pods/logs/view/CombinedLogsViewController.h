// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Shell.h"
#include "core/WindowState.h"
#include "pods/logs/text/LogIntake.h"
#include "pods/logs/text/LogSource.h"
#include "pods/logs/view/LogView.h"

#include <QTextCharFormat>

#include <array>

class QTableWidget;

namespace tidewright {

class ColorIndexView;
class ContextBand;

/// The content of a logs window: follows the logs of containers, each with a `kubectl logs -f` of its own, in
/// one text, each in its own colour. Set the fields, then show it; the streams start once and end with the
/// window. Main thread.
class CombinedLogsViewController : public QWidget
{
    Q_OBJECT
public:
    explicit CombinedLogsViewController(QWidget *parent = nullptr);
    ~CombinedLogsViewController() override;

    /// What to follow, in the order of the colour index.
    std::vector<ContainerPair> containers;
    /// The value of KUBECONFIG; empty for kubectl's own.
    QString kubeConfigPath;
    /// Keeps what stands in it.
    std::shared_ptr<const void> kubeConfigView;
    QString context;
    /// Of the containers that name none; for the title. Of several it may be `allNamespaces`.
    QString nameSpace;
    /// Whose colour the window has.
    ContextKey contextKey;

    /// How the streams are doing, in the order of the containers.
    const std::vector<LogSource> &sources() const { return m_sources; }
    /// One for each started stream, in that order.
    const std::vector<std::shared_ptr<Shell>> &shells() const { return m_shells; }
    bool hasRunningStreams() const;
    /// Follows the sources again that kubectl refused because they have too many containers, and asks it for
    /// all of them.
    void followRefused();

    /// More streams than these are started only when the user agrees.
    static constexpr std::size_t mostUnasked = 20;

    /// Stream n takes entry n modulo their number; an invalid colour is absent.
    std::array<QColor, 5> foregroundColors;
    /// The font and the background of all text; the foreground comes from the palette.
    QTextCharFormat logAttributes;

    LogDocument &document() { return m_document; }
    LogView *logTextView() const { return m_logTextView; }
    ColorIndexView *colorIndexView() const { return m_colorIndexView; }
    QTableWidget *colorIndexTableView() const;

    /// The namespace and the containers' names, then the place.
    QString title() const;
    /// Context and namespace.
    QString place() const;
    /// Starts the streams, the first time.
    void viewDidAppear();
    /// Ends the streams that still run.
    void windowWillClose();
    void toggleSource(int row);
    /// Lets all text that has arrived go.
    void clear();

Q_SIGNALS:
    /// Something about the streams has changed.
    void sourcesChanged();

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QString nameOf(const ContainerPair &pair) const;
    void askForStreams();
    void startStreams();
    void startStream(int index, const QStringList &more = {});
    void follow(int index, Shell &shell, const QStringList &arguments, const QStringList &more);
    void takePieces();
    void stopWhenFull();
    void updateSource(int index);
    void updateHint();
    QString emptyText() const;
    QString narrowedText() const;
    void placeColorIndex();

    LogDocument m_document;
    LogView *m_logTextView;
    ColorIndexView *m_colorIndexView;
    ContextBand *m_band;
    std::vector<LogSource> m_sources;
    std::vector<std::shared_ptr<Shell>> m_shells;
    std::shared_ptr<LogIntake> m_intake;
    bool m_cleared = false;
    bool m_appeared = false;
    bool m_closed = false;
};

} // namespace tidewright

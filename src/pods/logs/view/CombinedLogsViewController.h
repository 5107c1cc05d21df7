// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/streams/PodFollower.h"
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

    /// What to follow, in the order of the colour index. Filled by the window itself when there are
    /// workloads.
    std::vector<ContainerPair> containers;
    /// Objects such as "deploy/web", all of whose pods are followed, also those that come later.
    std::vector<ContainerPair> workloads;
    /// What is asked of kubectl; `restart` obeys another choice.
    LogOptions options;
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
    const std::vector<LogSource> &sources() const { return m_streams.sources(); }
    /// The latest stream of each, in that order.
    const std::vector<std::shared_ptr<Shell>> &shells() const { return m_streams.shells(); }
    bool hasRunningStreams() const { return m_streams.hasRunning(); }
    /// Null unless there are workloads.
    const PodFollower *follower() const { return m_follower.get(); }
    /// Lets all text go and starts all streams anew, as the options are by now.
    void restart();
    /// Whether there are streams that have ended and that nobody else takes up again.
    bool canFollowAgain() const;
    /// Starts these once more, from the moment on at which they ended.
    void followAgain();
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
    const LogDocument &document() const { return m_document; }
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
    /// There are more sources than colours to tell them apart.
    bool hasMoreSourcesThanColours() const { return containers.size() > foregroundColors.size(); }
    /// Lets all text that has arrived go.
    void clear();

Q_SIGNALS:
    /// `title` and `place` can be shown now.
    void placeKnown();
    /// Something about the streams has changed.
    void sourcesChanged();

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QString nameOf(const ContainerPair &pair) const;
    LogPlace streamPlace() const { return {kubeConfigPath, context, nameSpace}; }
    void connectParts();
    void askForStreams(int count, std::function<void(bool agreed)> answered);
    void startStreams();
    void startFollower();
    void startStream(int index, const LogOptions &options, const QStringList &more = {});
    void addRow(const ContainerPair &container);
    void streamsChanged(const QList<int> &sources, bool isNews);
    void mark(int source, const QString &what);
    void stopWhenFull();
    void updateSource(int index);
    void updateHint();
    void placeColorIndex();

    LogDocument m_document;
    LogView *m_logTextView;
    ColorIndexView *m_colorIndexView;
    ContextBand *m_band;
    QStringList m_names; ///< of the sources
    LogStreams m_streams;
    std::unique_ptr<PodFollower> m_follower;
    bool m_cleared = false;
    bool m_appeared = false;
};

} // namespace tidewright

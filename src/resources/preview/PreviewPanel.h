// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/preview/PreviewFaces.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <array>

class QLabel;

namespace tidewright {

class RelationsLine;

/// The panel that tells of the chosen objects, one for the whole application: whoever is asked for a preview
/// makes itself its source. Its faces are the YAML, with which it opens, a description and the events; what
/// the object has to do with stands above them as links. Arrows walk through the items, F6 through the faces,
/// space or Escape closes. Main thread.
class PreviewPanel : public QWidget
{
    Q_OBJECT
public:
    static PreviewPanel &shared();

    /// `source` is asked as long as `owner` lives. Opens beside `owner`'s window at first.
    void present(PreviewSource &source, QWidget &owner);
    /// The selection of a source has changed; ignored for any other than the current one.
    void selectionChanged(const PreviewSource &source);
    /// An object that somebody looked for in its table was selected there. When that was for a link of this
    /// panel, the table becomes its source.
    void objectFound(PreviewSource &source, QWidget &owner);
    /// The table of the kind has no such object.
    void objectMissing(const QString &name);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    enum class Load { NotAsked, UnderWay, Done, Failed };

    PreviewPanel();
    void buildLayout();
    void addKeys();
    bool handleKey(int key);
    void step(int by);
    void follow(const Relation &relation);

    void setSource(PreviewSource &source, QWidget &owner);
    void showItem();
    void endLoading();
    void changeFace();
    void load(PreviewFace face);
    void loadYaml();
    void loadDescription();
    void loadEvents();
    Load &stateOf(PreviewFace of) { return m_loads[static_cast<std::size_t>(of)]; }
    /// `show`, for the answer to this request about this item: one that comes later is dropped.
    template <typename Show> auto answer(PreviewFace to, Show show);
    void showState();

    PreviewSource *m_source = nullptr;
    QPointer<QWidget> m_owner; // lives exactly as long as m_source may be used
    int m_index = 0;
    quint64 m_request = 0; // answers to older requests are dropped
    std::array<Load, previewFaceCount> m_loads = {};
    std::optional<PreviewItem> m_item; ///< the one that is shown, once it is there
    QString m_reason; ///< why it is not
    QString m_position; ///< "1 of 3"
    QString m_awaited; ///< the object to which a link leads
    QPointer<QWidget> m_awaitedIn; ///< that window
    QTimer m_faceDelay; ///< who walks on quickly is not asked to wait for each description
    QLabel *m_title;
    QLabel *m_state;
    RelationsLine *m_relations;
    PreviewFaces *m_faces;
};

} // namespace tidewright

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/preview/PreviewSource.h"

#include <QTimer>
#include <QWidget>

#include <array>

class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QStackedWidget;
class QTabBar;

namespace tidewright {

class ContainersTable;
class EventsTable;
class TextInPieces;
class YamlHighlighter;

/// What the preview panel shows of an object, face by face, with the tabs that choose one and the progress of
/// what is being loaded. Knows nothing of where it comes from. Main thread.
class PreviewFaces : public QWidget
{
    Q_OBJECT
public:
    PreviewFaces();

    PreviewFace face() const;
    /// Without `faceChanged`.
    void setFace(PreviewFace face);
    /// To the next one, or the one before; from the last to the first.
    void stepFace(int by);
    /// The widgets in which the user reads: one of each face, and the table of containers.
    std::array<QWidget *, previewFaceCount + 1> readers() const;
    void focusFace();

    /// Nothing is known of an object yet.
    void clear();
    // Something to show, or the reason why there is nothing.
    void showYaml(const std::optional<QString> &text, const QString &reason);
    void showDescription(const std::optional<QString> &text, const QString &reason);
    void showEvents(const std::optional<std::vector<ObjectEvent>> &events, const QString &reason);
    /// Of a pod, above its description.
    void showContainers(const std::vector<ContainerFacts> &containers);
    /// Shows progress after a second of it.
    void setLoading(bool loading);

Q_SIGNALS:
    /// The user has chosen another face.
    void faceChanged();

protected:
    void changeEvent(QEvent *event) override;

private:
    void addTabs();
    void addPages();

    QTabBar *m_tabs;
    QProgressBar *m_progress;
    QTimer m_progressDelay;
    QStackedWidget *m_stack;
    QPlainTextEdit *m_text;
    TextInPieces *m_textPieces;
    ContainersTable *m_containers;
    QPlainTextEdit *m_description;
    TextInPieces *m_descriptionPieces;
    QLabel *m_eventsNote;
    EventsTable *m_events;
    YamlHighlighter *m_colours;
};

} // namespace tidewright

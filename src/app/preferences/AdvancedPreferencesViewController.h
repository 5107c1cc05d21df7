// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/preferences/EnvVarTableModel.h"
#include "app/preferences/PreferencesViewController.h"

class QButtonGroup;
class QLabel;
class QPlainTextEdit;
class QTableView;

namespace tidewright {

class PathHint;

/// The environment variables of custom actions, in a table to edit, and the folders of helper programs
/// (program_folders). Ending an edit and deleting save the variables, all of them; of several rows with one
/// name the last counts. The settings are read once, when the pane is first shown.
class AdvancedPreferencesViewController : public PreferencesViewController
{
    Q_OBJECT
public:
    enum Segment { AddSegment, DeleteSegment };

    explicit AdvancedPreferencesViewController(QWidget *parent = nullptr);

    QTableView *envvarTableView() const { return m_envvarTableView; }
    /// Two buttons, whose ids are the segments.
    QButtonGroup *envvarSegmentedControl() const { return m_envvarSegmentedControl; }
    /// A folder on each line.
    QPlainTextEdit *foldersField() const { return m_foldersField; }
    const QList<EnvVar> &customEnvvars() const { return m_model->customEnvvars(); }

    void envvarSegmentedControlClicked(int segment);
    /// Deletes the selected variables.
    void deleteRows();

protected:
    void viewDidLoad() override;

private:
    void buildTable();
    void buildLayout();
    void buildFolders();
    void browseForFolder();
    void saveFolders();
    QWidget *makeSegments();
    void addVariable();
    void editName(int row);
    void save();

    EnvVarTableModel *m_model;
    QTableView *m_envvarTableView;
    QButtonGroup *m_envvarSegmentedControl;
    QPlainTextEdit *m_foldersField;
    QLabel *m_foldersHint = nullptr;
    PathHint *m_foldersExplained = nullptr;
};

} // namespace tidewright

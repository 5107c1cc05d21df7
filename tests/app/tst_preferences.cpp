// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeCluster.h"
#include "app/AppDelegate.h"
#include "app/kubeconfig/KubeConfigChooser.h"
#include "app/preferences/AdvancedPreferencesViewController.h"
#include "app/preferences/ContextPreferencesViewController.h"
#include "app/preferences/GeneralPreferencesViewController.h"
#include "app/preferences/PreferencesWindowController.h"
#include "app/window/ClusterWindowFrame.h"
#include "app/window/MainWindowController.h"
#include "platform/settings/UserDefaults.h"
#include "platform/threads/MainQueue.h"
#include "support/Patience.h"
#include "support/Table.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QButtonGroup>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTabBar>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

using Dictionary = UserDefaults::Dictionary;

const auto envVars = u"customEnvVars"_s;
const auto kubeConfigPath = u"defaultKubeConfigPath"_s;

/// The window as the user has it open.
struct Preferences
{
    explicit Preferences(int pane)
    {
        window.tabBar()->setCurrentIndex(pane);
        window.showWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
    }
    QTableView &table() const { return *window.advancedPane().envvarTableView(); }
    QStringList rows() const
    {
        QStringList result;
        for (const EnvVar &variable : window.advancedPane().customEnvvars()) {
            result.append(variable.key + u'=' + variable.value);
        }
        return result;
    }
    void clickSegment(int segment) const
    {
        QTest::mouseClick(window.advancedPane().envvarSegmentedControl()->button(segment), Qt::LeftButton);
    }
    QPoint at(int row, int column) const
    {
        return table().visualRect(table().model()->index(row, column)).center();
    }
    void doubleClick(int row, int column) const
    {
        QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, at(row, column));
        QTest::mouseDClick(table().viewport(), Qt::LeftButton, {}, at(row, column));
    }
    /// The field of the cell being edited, or null.
    QLineEdit *field() const { return table().viewport()->findChild<QLineEdit *>(); }
    void rename(int row, int column, const QString &text) const
    {
        doubleClick(row, column);
        QVERIFY(field());
        QTest::keyClicks(field(), text);
        QTest::keyClick(field(), Qt::Key_Return);
        QTRY_VERIFY(!field());
    }

    PreferencesWindowController window;
};

KubeConfigChooser *chooser()
{
    return qobject_cast<KubeConfigChooser *>(QApplication::activeModalWidget());
}

} // namespace

class TestPreferences : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { mainQueue(); }
    void init() { m_cluster = std::make_unique<FakeCluster>(); }
    void cleanup() { m_cluster.reset(); }
    void variablesAreLoaded_data()
    {
        const Table<QByteArray, QStringList> table;
        table.row("sorted", R"({"B": "2", "A": "1", "": "", "a": "0"})"_ba,
            QStringList{u"="_s, u"A=1"_s, u"B=2"_s, u"a=0"_s});
        table.row("a number among the values", R"({"A": "1", "B": 2})"_ba, QStringList());
        table.row("no dictionary", R"("A=1")"_ba, QStringList());
    }

    void variablesAreLoaded()
    {
        const auto [stored, rows] = Table<QByteArray, QStringList>::current();
        QVERIFY(settings().flush()); // or it would be written over what follows
        m_cluster->write(u"settings.json"_s, R"({"customEnvVars": )" + stored + '}');
        const Preferences open(2);
        QCOMPARE(open.rows(), rows);
        // The next save replaces what was there, whatever it was.
        open.clickSegment(AdvancedPreferencesViewController::AddSegment);
        QTest::keyClicks(open.field(), u"NEW"_s);
        QTest::keyClick(open.field(), Qt::Key_Return);
        QTRY_COMPARE(settings().dictionary(envVars).value_or(Dictionary()).size(), open.rows().size());
        QCOMPARE(settings().dictionary(envVars).value_or(Dictionary()).value(u"NEW"_s, u"-"_s), QString());
    }

    /// The default kubeconfig has the contexts a and b, a policy is stored for one of another kubeconfig.
    void contexts()
    {
        m_cluster->answer(u"contexts"_s, "a\na\tb\t");
        settings().set(kubeConfigPath, m_cluster->kubeConfig());
        settings().set(u"contextPolicies"_s, Dictionary{{u"z-prod\n/other"_s, u"protected;none"_s}});
        const Preferences open(1);
        const ContextPreferencesViewController &pane = open.window.contextsPane();
        const auto rows = [&pane] {
            QStringList all;
            for (int row = 0; row < pane.table()->rowCount(); ++row) {
                QStringList cells;
                for (int column = 0; column < ContextPreferencesViewController::ColumnCount; ++column) {
                    cells.append(pane.table()->item(row, column)->text().section(u'/', -1));
                }
                all.append(cells.join(u' '));
            }
            return all;
        };
        const QString other = u"z-prod other Protected None"_s;
        QTRY_COMPARE(rows(), QStringList({u"a kubeconfig Free None"_s, u"b kubeconfig Free None"_s, other}));
        pane.table()->selectRow(1);
        QTest::keyClicks(pane.accessList(), u"Read"_s);
        QTest::keyClicks(pane.colourList(), u"Bl"_s);
        QCOMPARE(rows(), QStringList({u"a kubeconfig Free None"_s, u"b kubeconfig Read-only Blue"_s, other}));
        QCOMPARE(ContextPolicies::policy({m_cluster->kubeConfig(), u"b"_s}).word(), u"read-only;blue"_s);
        QVERIFY(!pane.suggestionButton()->isVisible());
        pane.table()->selectRow(2);
        QTest::mouseClick(pane.suggestionButton(), Qt::LeftButton);
        QCOMPARE(rows().last(), u"z-prod other Protected Red"_s);
    }

    void addingTwice()
    {
        const Preferences open(2);
        const QAbstractItemModelTester tester(
            open.table().model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        open.clickSegment(AdvancedPreferencesViewController::AddSegment);
        QVERIFY(!settings().dictionary(envVars));
        open.clickSegment(AdvancedPreferencesViewController::AddSegment);
        QCOMPARE(open.rows(), QStringList({u"="_s}));
        QTRY_VERIFY(open.field() && open.field()->hasFocus());
        QCOMPARE(open.field()->objectName(), u"CustomEnvVarField");
        QTest::keyClicks(open.field(), u"A B"_s);
        QTest::keyClick(open.field(), Qt::Key_Tab);
        QTRY_VERIFY(open.field() && open.field()->objectName() == u"CustomEnvValueField");
        QTest::keyClicks(open.field(), u"x=y"_s);
        open.clickSegment(AdvancedPreferencesViewController::AddSegment);
        QCOMPARE(open.rows(), QStringList({u"A B=x=y"_s, u"="_s}));
        QCOMPARE(settings().dictionary(envVars), Dictionary({{u"A B"_s, u"x=y"_s}}));
    }

    void renamingToAnothersName()
    {
        settings().set(envVars, Dictionary{{u"A"_s, u"1"_s}, {u"B"_s, u"2"_s}});
        {
            const Preferences open(2);
            open.rename(1, 0, u"A"_s);
            QCOMPARE(open.rows(), QStringList({u"A=1"_s, u"A=2"_s}));
        }
        QCOMPARE(settings().dictionary(envVars), Dictionary({{u"A"_s, u"2"_s}}));
        QCOMPARE(Preferences(2).rows(), QStringList({u"A=2"_s}));
    }

    void deleting()
    {
        settings().set(envVars, Dictionary{{u"A"_s, {}}, {u"B"_s, {}}, {u"C"_s, {}}, {u"D"_s, {}}});
        const Preferences open(2);
        for (const int row : {0, 2}) {
            QTest::mouseClick(open.table().viewport(), Qt::LeftButton, Qt::ControlModifier, open.at(row, 0));
        }
        QTest::keyClick(&open.table(), Qt::Key_Delete);
        for (int round = 0; round < 2; ++round) { // once more with nothing selected, which is saved too
            const auto stored = settings().dictionary(envVars);
            QCOMPARE(stored.value_or(Dictionary()).keys(), QStringList({u"B"_s, u"D"_s}));
            QCOMPARE(open.rows().size(), 2);
            open.table().clearSelection();
            settings().remove(envVars);
            open.clickSegment(AdvancedPreferencesViewController::DeleteSegment);
        }
    }

    void editing_data()
    {
        const Table<QString, QString> table;
        table.row("given up", u"escape"_s, u"old"_s);
        table.row("the focus goes elsewhere", u"click"_s, u"xy"_s);
        table.row("the window is closed", u"close"_s, u"xy"_s);
    }

    void editing()
    {
        const auto [end, stored] = Table<QString, QString>::current();
        settings().set(envVars, Dictionary{{u"A"_s, u"old"_s}});
        Preferences open(2);
        open.doubleClick(0, 1);
        QVERIFY(open.field());
        QTest::keyClicks(open.field(), u"xy"_s);
        if (end == u"escape") {
            QTest::keyClick(open.field(), Qt::Key_Escape);
        } else if (end == u"click") {
            open.clickSegment(AdvancedPreferencesViewController::AddSegment);
        } else {
            open.window.close();
        }
        QTRY_COMPARE(settings().dictionary(envVars)->value(u"A"_s), stored);
        QCOMPARE(open.window.isVisible(), end != u"close"); // Escape belongs to the field first
    }

    void everyKeystrokeIsStored_data()
    {
        // path (%1 is a folder), hint
        const Table<QString, QString> table;
        table.row("there", u"%1/kubeconfig"_s, u"opened from now on"_s);
        table.row("missing, with blanks", u" ~/x "_s, u"no such file"_s);
    }

    void everyKeystrokeIsStored()
    {
        auto [path, hint] = Table<QString, QString>::current();
        path = path.replace(u"%1"_s, m_cluster->path(u"."_s));
        const Preferences open(0);
        QLineEdit *field = open.window.generalPane().defaultKubeConfigField();
        const auto explained = [&open](const QString &part) {
            const auto labels = open.window.generalPane().findChildren<QLabel *>();
            return std::any_of(labels.begin(), labels.end(),
                [&part](const QLabel *label) { return label->text().contains(part); });
        };
        QTRY_VERIFY(explained(u"kubectl's own default"_s));
        QVERIFY(field->text().isEmpty() && !settings().string(kubeConfigPath));
        for (qsizetype typed = 1; typed <= path.size(); ++typed) {
            QTest::keyClick(field, path.at(typed - 1).toLatin1());
            QCOMPARE(settings().string(kubeConfigPath), path.left(typed));
        }
        QTRY_VERIFY(explained(hint));
        settings().remove(kubeConfigPath);
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(settings().string(kubeConfigPath), path);
        QVERIFY(!chooser());
        QTest::keySequence(field, QKeySequence::SelectAll);
        QTest::keyClick(field, Qt::Key_Backspace);
        QCOMPARE(settings().string(kubeConfigPath), QString());
        QCOMPARE(MainWindowController::defaultKubeConfigPath(), QString());
    }

    void lists()
    {
        settings().set(u"preferredEditor"_s, u"Gone"_s);
        const Preferences open(0);
        const GeneralPreferencesViewController &pane = open.window.generalPane();
        QCOMPARE(pane.preferredTerminalPopup()->currentText(), u"Terminal");
        QCOMPARE(pane.preferredEditorPopup()->currentText(), u"Gone (not found)");
        open.window.generalPane().setPreferredEditor();
        QCOMPARE(settings().string(u"preferredEditor"_s), u"Gone"_s);
        QVERIFY(!settings().string(u"preferredTerminal"_s)); // showing is not choosing
        for (const auto &[list, key, title] :
            {std::tuple(pane.preferredTerminalPopup(), u"preferredTerminal"_s, u"Terminal"_s),
                std::tuple(pane.preferredEditorPopup(), u"preferredEditor"_s, u"Not Set"_s)}) {
            QTest::mouseClick(list, Qt::LeftButton);
            QTRY_VERIFY(list->view()->isVisible());
            QTest::keyClick(list->view(), Qt::Key_Home);
            QTest::keyClick(list->view(), Qt::Key_Return);
            QTRY_COMPARE(settings().string(key), title);
        }
        pane.preferredEditorPopup()->setCurrentIndex(-1);
        open.window.generalPane().setPreferredEditor();
        QVERIFY(!settings().string(u"preferredEditor"_s));
    }

    /// A file that is not allowed is not shown, and refused when its name is typed.
    void allowedFiles()
    {
        const QStringList allowed{u".kubeconfig"_s, u"A.YAML"_s, u"a.b.yml"_s, u"config"_s};
        const QStringList others{u".notes.yaml.bak"_s, u"notes.txt"_s};
        for (const QString &name : allowed + others) {
            m_cluster->write(u"files/"_s + name, {});
        }
        std::optional<KubeConfigChoice> choice;
        QWidget parent;
        chooseKubeConfig(&parent, true, &parent, [&choice](const auto &chosen) { choice = chosen; });
        QTRY_VERIFY(chooser());
        chooser()->setDirectory(m_cluster->path(u"files"_s));
        const auto shown = [list = chooser()->findChild<QListView *>(u"listView"_s)] {
            QStringList names;
            for (int row = 0; row < list->model()->rowCount(list->rootIndex()); ++row) {
                names.append(list->model()->index(row, 0, list->rootIndex()).data().toString());
            }
            names.sort();
            return names;
        };
        QTRY_COMPARE(shown(), allowed);
        QTest::keyClicks(chooser()->findChild<QLineEdit *>(u"titleField"_s), u"My cluster"_s);
        auto *typed = chooser()->findChild<QLineEdit *>(u"fileNameEdit"_s);
        for (const QString &name : {others.last(), allowed.last()}) {
            QVERIFY(chooser() && !choice);
            typed->setText(m_cluster->path(u"files/"_s + name));
            QTest::keyClick(typed, Qt::Key_Return);
        }
        QTRY_VERIFY(!chooser());
        QCOMPARE(choice.value().path, m_cluster->path(u"files/config"_s));
        QCOMPARE(choice.value().title, u"My cluster");
    }

    void theWindow()
    {
        settings().set(envVars, Dictionary{{u"A"_s, {}}});
        AppDelegate delegate;
        delegate.newDocument();
        QVERIFY(QTest::qWaitForWindowActive(delegate.mainWindow()));
        QVERIFY(!delegate.preferencesController());
        QTest::keyClick(delegate.mainWindow(), Qt::Key_Comma, Qt::ControlModifier);
        PreferencesWindowController *window = delegate.preferencesController();
        QVERIFY(window && QTest::qWaitForWindowActive(window));
        for (const auto &[pane, title] : {std::pair(2, u"Advanced"_s), std::pair(0, u"General"_s)}) {
            QTest::mouseClick(window->tabBar(), Qt::LeftButton, {}, window->tabBar()->tabRect(pane).center());
            QCOMPARE(window->windowTitle(), title);
            const auto *shown = pane == 2 ? static_cast<PreferencesViewController *>(&window->advancedPane())
                                          : &window->generalPane();
            QTRY_COMPARE(shown->size(), shown->preferredContentSize());
        }
        window->tabBar()->setCurrentIndex(2);
        QTableView *table = window->advancedPane().envvarTableView();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
        QVERIFY(table->currentIndex().isValid());
        for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_W}) {
            QTest::keyClick(table, key, key == Qt::Key_W ? Qt::ControlModifier : Qt::NoModifier);
            QVERIFY2(!window->isVisible(), qPrintable(QKeySequence(key).toString()));
            delegate.showPreferences();
            QCOMPARE(delegate.preferencesController(), window);
            QVERIFY(QTest::qWaitForWindowActive(window));
            QCOMPARE(window->windowTitle(), u"Advanced");
        }
        delegate.applicationWillTerminate();
        QVERIFY(!delegate.preferencesController());
    }

private:
    UserDefaults &settings() { return m_cluster->settings; }
    std::unique_ptr<FakeCluster> m_cluster;
};

QTEST_MAIN(TestPreferences)

#include "tst_preferences.moc"

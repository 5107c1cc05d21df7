// SPDX-License-Identifier: GPL-3.0-or-later
#include "App.h"
#include "app/actionmenu/ActionMenu.h"
#include "app/toolbar/ClusterToolBar.h"
#include "app/toolbar/ToolBarDialog.h"
#include "app/toolbar/ToolBarLayout.h"
#include "pods/table/ContainerButton.h"
#include "resources/controllers/ReplicaCell.h"
#include "support/OpenQuestion.h"
#include "support/Table.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QRegularExpression>
#include <QStyledItemDelegate>
#include <QTabBar>

using namespace tidewright;
using tidewright::test::OpenQuestion;
using namespace Qt::StringLiterals;

namespace {

/// A window, and actions that write down what they were told.
struct Actions : App
{
    void add(const QString &folder, const QByteArray &config)
    {
        const QString path = u"data/Tidewright/Actions/"_s + folder;
        cluster.write(path + u"/config.json"_s, config);
        cluster.write(path + u"/main.sh"_s,
            "#!/bin/"
            "sh\nname=$POD$DEPLOYMENT$SERVICE$PERSISTENTVOLUME$CRONJOB$CONFIGMAP$SECRET$EVENT$ENDPOINT\n"
            "name=$name$JOB$SERVICEACCOUNT$CLUSTERROLE$REPLICASET$DAEMONSET\n"
            "cd ${0%%/data/*}; echo \"$KUBECONFIG $CONTEXT $NAMESPACE $name $CONTAINER\" > new; mv new "
            "told\n");
    }
    void open()
    {
        App::open();
        QTRY_VERIFY(entries().contains(u"Actions Loaded"_s));
    }
    void reload()
    {
        const auto before = entries().count(u"Actions Loaded"_s);
        menu().actions().at(2)->trigger();
        QTRY_COMPARE(entries().count(u"Actions Loaded"_s), before + 1);
    }

    ActionMenu &menu() const { return frame->actionMenu(); }
    QStringList entries() const
    {
        QStringList commands;
        for (const ConsoleEntry &entry : page().windowConsoleController().entries()) {
            commands.append(entry.command);
        }
        return commands;
    }

    /// The menu as it opens: titles, groups with a slash behind them, disabled ones in brackets.
    QStringList shown(QMenu &of) const
    {
        if (&of == &menu()) {
            Q_EMIT of.aboutToShow();
        }
        QStringList titles;
        for (const QAction *action : of.actions()) {
            const QString title = action->isSeparator() ? u"-"_s : action->text();
            titles.append(action->isEnabled() ? title : u'[' + title + u']');
            if (action->menu()) {
                titles.last() += u'/' + shown(*action->menu()).join(u',');
            }
        }
        return titles;
    }
    QAction *item(const QString &title) const
    {
        Q_EMIT menu().aboutToShow();
        for (QAction *action : menu().findChildren<QAction *>()) {
            if (action->text() == title) {
                return action;
            }
        }
        return nullptr;
    }
    QAction *button(const QString &name) const
    {
        for (QAction *action : page().toolBar().commands()) {
            if (action->objectName() == name) {
                return action;
            }
        }
        return nullptr;
    }

    /// What the latest action was told, without the kubeconfig and the view in front of it.
    QString told()
    {
        [&] { QTRY_VERIFY(cluster.has(u"told"_s)); }();
        QString text = QString::fromUtf8(cluster.read(u"told"_s));
        cluster.remove(u"told"_s);
        static const QRegularExpression view(u"^/[^ :]*/view-[^ :]+:"_s);
        return text.remove(view).remove(cluster.kubeConfig()).simplified();
    }
};

/// Clicks the button with that text, mnemonics aside.
void clickButton(const QDialog *in, const QString &text)
{
    for (QAbstractButton *button : in->findChildren<QAbstractButton *>()) {
        if (button->text().remove(u'&') == text) {
            button->click();
            return;
        }
    }
    QFAIL(qPrintable(u"there is no button "_s + text));
}

} // namespace

class TestActionMenu : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void menuFollowsTheFolders()
    {
        Actions app;
        app.add(u"zeta"_s, R"({"scope":"namespace"})");
        app.add(u"Group & Co/inner"_s, R"({"scope":"deployment"})");
        app.open();
        const QStringList head{u"[Run Last Action]"_s, u"Show in Finder"_s, u"Reload Actions"_s, u"-"_s};
        QCOMPARE(app.shown(app.menu()), head + QStringList({u"Group && Co/[inner]"_s, u"zeta"_s}));
        QCOMPARE(app.menu().actions().at(0)->shortcut(), QKeySequence(u"Ctrl+'"_s));
        QVERIFY(!app.menu().actions().at(0)->autoRepeat()); // held down, it runs once
        app.add(u"new"_s, R"({"scope":"nonsense"})");
        QVERIFY(QDir(app.cluster.path(u"data/Tidewright/Actions/zeta"_s)).removeRecursively());
        app.reload();
        QCOMPARE(app.shown(app.menu()), head + QStringList({u"Group && Co/[inner]"_s, u"[new]"_s}));
        QVERIFY(app.item(u"new"_s)->toolTip().contains(u"nonsense"_s));
        app.add(u"newer"_s, R"({"scope":"namespace"})");
        app.frame->addTab();
        QTRY_VERIFY(app.item(u"newer"_s));
    }

    void targets_data()
    {
        // config, filter of the scope's table, selected (a row, or a container's button "POD:NAME"),
        // told behind context and namespace (null: disabled)
        const Table<QByteArray, QString, QString, QString> table;
        table.row("pod, none", R"({"scope":"pod"})", "", "", nullptr);
        table.row("pod", R"({"scope":"pod"})", "", "db-1", "db-1");
        table.row(
            "pod by pattern", R"({"scope":"pod","use_name_matching_pattern":"web-*"})", "", "db-1", "web-1");
        table.row("selected pod first", R"({"scope":"pod","use_name_matching_pattern":"web-*"})", "", "web-2",
            "web-2");
        table.row("selected pods as shown", R"({"scope":"pod","use_name_matching_pattern":"web-*"})", "",
            "web-2,web-1", "web-1");
        table.row(
            "pod filtered out", R"({"scope":"pod","use_name_matching_pattern":"web-*"})", "db", "", nullptr);
        table.row("invalid pattern", "{\"scope\":\"pod\",\"use_name_matching_pattern\":\"(\"}", "", "web-2",
            nullptr);
        table.row("container", R"({"scope":"container"})", "", "web-1:side", "web-1 side");
        table.row("first chosen", R"({"scope":"deployment"})", "", "beta,alpha", "beta");
        table.row("shown rows only for the run", R"({"scope":"deployment","use_name_matching_pattern":"*a"})",
            "bet", "", "beta");
        table.row("this context", R"({"scope":"namespace","active_in_contexts":["a","b"]})", "", "", "");
        table.row("another context", R"({"scope":"namespace","active_in_contexts":["a"]})", "", "", nullptr);
        table.row("another kind", R"({"scope":"node"})", "", "", nullptr);
    }
    void targets()
    {
        const auto [config, filter, selected, told] = Table<QByteArray, QString, QString, QString>::current();
        Actions app;
        app.add(u"act"_s, config);
        app.cluster.settings.set(u"toolbarItems"_s, u"act"_s);
        app.open();
        auto *deployments = app.content().tableControllerForScope(u"deployment"_s);
        SharedContentViewController *table = config.contains("deployment") ? deployments : &app.pods();
        table->setFilter(filter);
        for (const QString &name : selected.split(u',')) {
            for (int number = 0; number < table->arrangedObjects().rowCount(); ++number) {
                if (table->arrangedObjects().arrangedRow(number)->name == name) {
                    table->tableView().selectionModel()->select(table->arrangedObjects().index(number, 0),
                        QItemSelectionModel::Select | QItemSelectionModel::Rows);
                }
            }
        }
        if (selected.contains(u':')) {
            QTRY_COMPARE(app.pods().containerButtons().size(), 4U);
            for (ContainerButton *button : app.pods().containerButtons()) {
                if (button->accessibleName() == selected) {
                    QTest::mouseClick(button, Qt::LeftButton);
                }
            }
        }
        const QAction *button = app.menu().toolbarItem(u"act"_s);
        QVERIFY(app.page().toolBar().commands().contains(button));
        QCOMPARE(button->isEnabled(), !told.isNull());
        QCOMPARE(app.item(u"act"_s)->isEnabled(), !told.isNull());
        QCOMPARE(button->toolTip() == u"act"_s, !told.isNull()); // or why not
        app.page().runAction(app.delegate.actions().customToolbarItems().value(u"act"_s));
        if (told.isNull()) { // nothing has run before what is run now
            QTRY_VERIFY(app.console().contains(u"\"act\" was not run: "_s));
            app.add(u"act"_s, R"({"scope":"namespace"})");
            app.reload();
            app.menu().runLastActionMenuItem()->trigger(); // as it is now
            QCOMPARE(app.told(), u"b default"_s);
            QTRY_COMPARE(app.entries().filter(u"env "_s).size(), 1);
        } else {
            QCOMPARE(app.told(), QString(u"b default "_s + told).trimmed());
        }
    }

    /// Where all namespaces are shown, a row's own counts.
    void severalNamespaces()
    {
        Actions app;
        QByteArray pods;
        for (const char *nameSpace : {"shop", "bank"}) {
            for (const char *name : {"web", "db"}) {
                pods += QByteArray(name) + "\ttrue\tRunning\t0\t\tT\tapp\t" + nameSpace + '\n';
            }
        }
        app.add(u"pod"_s, R"({"scope":"pod"})");
        app.add(u"each"_s, R"({"scope":"pod","once_per_namespace":true,"show_warning_text":"Sure?"})");
        app.add(u"container"_s, R"({"scope":"container"})");
        app.open();
        app.cluster.answer(u"get po everywhere"_s, pods);
        app.state().chooseNamespace(allNamespaces);
        QTRY_COMPARE(app.pods().tableItems().size(), 4U);
        app.pods().tableView().selectRow(3);
        app.item(u"pod"_s)->trigger();
        QCOMPARE(app.told(), u"b bank db"_s);
        app.pods().tableView().selectAll();
        app.item(u"pod"_s)->trigger();
        QTRY_VERIFY(app.console().contains(
            u"\"pod\" was not run: what is chosen lies in several namespaces (shop, bank)."_s));
        app.item(u"each"_s)->trigger();
        const QList<OpenQuestion> questions = OpenQuestion::all(*app.delegate.mainWindow());
        QCOMPARE(questions.size(), 1); // for both
        QVERIFY(questions[0].says(
            u"Action: each\nNamespace: shop  ·  Pod: web\nNamespace: bank  ·  Pod: web\nContext: b"_s));
        questions[0].press(u"OK"_s);
        const auto runs
            = [&] { return app.entries().filter(QRegularExpression(u"^env .*NAMESPACE=(shop|bank) "_s)); };
        QTRY_COMPARE(runs().size(), 3);
        QVERIFY(runs().filter(u"POD=web"_s).size() == 2);
        QTRY_COMPARE(app.pods().containerButtons().size(), 4U);
        for (ContainerButton *button : app.pods().containerButtons()) {
            button->setChecked(button->accessibleName() == u"bank/web:app"_s);
        }
        app.told();
        app.item(u"container"_s)->trigger();
        QCOMPARE(app.told(), u"b bank web app"_s);
    }

    void everyScope()
    {
        Actions app;
        const std::tuple<QString, QString, int> kinds[]
            = {{u"service"_s, u"services"_s, 6}, {u"persistentvolume"_s, u"persistentvolumes"_s, 8},
                {u"cronjob"_s, u"cj"_s, 6}, {u"configmap"_s, u"configmaps"_s, 2},
                {u"secret"_s, u"secrets"_s, 4}, {u"event"_s, u"events"_s, 7}, {u"endpoint"_s, u"ep"_s, 5},
                {u"job"_s, u"job"_s, 7}, {u"serviceaccount"_s, u"serviceaccounts"_s, 3},
                {u"clusterrole"_s, u"clusterroles"_s, 3}, {u"replicaset"_s, u"rs"_s, 5},
                {u"daemonset"_s, u"ds"_s, 8}, {u"deployment"_s, u"deploy"_s, 6}, {u"pod"_s, u"po"_s, 7}};
        for (const auto &[scope, listing, fields] : kinds) {
            app.cluster.answer(
                u"get "_s + listing, scope.toUtf8() + "-1" + QByteArray("\t1").repeated(fields - 1) + '\n');
            app.add(scope, R"({"scope":"%1"})"_ba.replace("%1", scope.toUtf8()));
            app.add(scope + u'*',
                R"({"scope":"%1","use_name_matching_pattern":"*-1"})"_ba.replace("%1", scope.toUtf8()));
        }
        app.open();
        for (const auto &kind : kinds) {
            const QString scope = std::get<0>(kind);
            SharedContentViewController *table = app.content().tableControllerForScope(scope);
            QCOMPARE(table->tableItems().size(), 1U);
            QVERIFY(!app.item(scope)->isEnabled() && app.item(scope + u'*')->isEnabled());
            table->tableView().selectRow(0);
            for (const QString &title : {scope, QString(scope + u'*')}) {
                app.item(title)->trigger();
                QCOMPARE(app.told(), u"b default %1-1"_s.arg(scope));
            }
        }
    }

    void namesThatLookLikeOptions()
    {
        Actions app;
        app.cluster.answer(
            u"get po"_s, "--all\ttrue\tRunning\t0\t\tT\tapp\nweb\ttrue\tRunning\t0\t\tT\t--rm\n");
        for (const QString &scope : {u"pod"_s, u"container"_s}) {
            app.add(scope, R"({"scope":"%1"})"_ba.replace("%1", scope.toUtf8()));
        }
        app.open();
        QTRY_COMPARE(app.pods().containerButtons().size(), 2U);
        app.pods().tableView().selectRow(0);
        app.item(u"pod"_s)->trigger();
        QTest::mouseClick(app.pods().containerButtons()[1], Qt::LeftButton);
        app.item(u"container"_s)->trigger();
        for (const QString &refusal :
            {u"\"pod\" was not run: kubectl would take the name \"--all\" for an option."_s,
                u"\"container\" was not run: kubectl would take the name \"--rm\" for an option."_s}) {
            QTRY_VERIFY2(app.console().contains(refusal), qPrintable(refusal));
        }
        QVERIFY(app.entries().filter(u"env "_s).isEmpty());
    }

    /// No mark-up, no mnemonics, and nothing that moves the text around it.
    void namesAreTextAndNothingElse()
    {
        Actions app;
        app.cluster.answer(u"contexts"_s, "<s>\u202eb\n<s>\u202eb\tc\t");
        app.cluster.answer(u"namespaces"_s, "<s>\u202en");
        app.cluster.answer(u"get po"_s, "<s>\u202epod\ttrue\tRunning\t0\t\tT\t<s>&c\u202e\n");
        app.cluster.answer(u"get deploy"_s, "<s>web\t1\t1\t1\t1\tT\n");
        app.add(u"<s>group/<s>act"_s, R"({"scope":"pod","show_warning_text":"<s>"})");
        app.cluster.settings.set(u"toolbarItems"_s, u"<s>act"_s);
        app.open();
        QTRY_COMPARE(app.pods().containerButtons().size(), 1U);
        ContainerButton *container = app.pods().containerButtons().front();
        QVERIFY(container->shortcut().isEmpty());
        container->setChecked(true);
        QCOMPARE(app.pods().selectedContainerPairs().front().container, u"<s>&c\u202e"_s);
        app.page().windowConsoleController().begin(u"<s>"_s);
        app.pods().tableView().selectRow(0);
        app.pods().deleteRows();
        app.item(u"<s>act"_s)->trigger();
        app.content().selectSidebarItem(u"Deployments"_s);
        QTRY_VERIFY(app.question());
        QTRY_VERIFY(app.frame->findChild<ReplicaCell *>());
        int found = 0;
        const auto check = [&found](const QString &tip) {
            QVERIFY2(!tip.contains(u"<s>"_s) && !tip.contains(u'\u202e'), qPrintable(tip));
            found += tip.contains(u"&lt;s>"_s) || tip.contains(u"&lt;s&gt;"_s);
        };
        for (const QWidget *widget : QApplication::allWidgets()) {
            check(widget->toolTip());
            if (const auto *bar = qobject_cast<const QTabBar *>(widget)) {
                for (int tab = 0; tab < bar->count(); ++tab) {
                    check(bar->tabToolTip(tab));
                    QVERIFY(!bar->tabText(tab).contains(u'\u202e'));
                }
            }
        }
        for (const QAction *action : app.frame->findChildren<QAction *>()) {
            check(action->toolTip());
            QVERIFY(!action->text().contains(u'\u202e'));
        }
        QVERIFY2(found > 8, qPrintable(QString::number(found)));
    }

    void questionsSayWhere()
    {
        Actions app;
        app.add(u"act"_s, R"({"scope":"pod","show_warning_text":"Sure?"})");
        app.open();
        app.pods().tableView().selectRow(1);
        app.item(u"act"_s)->trigger();
        QTRY_VERIFY(app.question());
        QVERIFY(app.asks(u"Action: act\nPod: db-1\nContext: b\nNamespace: default\nKubeconfig: "_s
            + app.cluster.kubeConfig()));
        app.state().chooseNamespace(u"shop"_s);
        app.answer(u"OK"_s);
        QTRY_VERIFY(app.console().contains(u"was not run"_s));
        QCOMPARE(app.entries().filter(u"env "_s).size(), 0);
    }

    void lastAction()
    {
        Actions app;
        app.cluster.settings.remove(u"defaultKubeConfigPath"_s);
        app.cluster.write(u"named"_s, app.cluster.kubeConfigBytes());
        const QString named = app.cluster.path(u"named"_s);
        qputenv("KUBECONFIG", QFile::encodeName(named));
        app.add(u"Scale & Up"_s, R"({"scope":"pod"})");
        app.open();
        app.pods().tableView().selectRow(0);
        app.item(u"Scale && Up"_s)->trigger();
        QCOMPARE(app.told(), QString(named + u" b default web-1"_s));
        QCOMPARE(app.menu().runLastActionMenuItem()->text(), u"Run \"Scale && Up\""_s);
        app.pods().tableView().selectRow(1);
        QTest::keyClick(app.frame, Qt::Key_Apostrophe, Qt::ControlModifier);
        QCOMPARE(app.told(), QString(named + u" b default db-1"_s));
        // Its own rules do not count for the repetition, and it survives a reload. A tab has one of its own.
        app.pods().tableView().clearSelection();
        app.reload();
        QVERIFY(app.menu().runLastActionMenuItem()->isEnabled());
        QVERIFY(!app.item(u"Scale && Up"_s)->isEnabled());
        app.frame->addTab();
        QVERIFY(!app.menu().runLastActionMenuItem()->isEnabled());
        QCOMPARE(app.menu().runLastActionMenuItem()->text(), u"Run Last Action"_s);
        qunsetenv("KUBECONFIG");
    }

    void toolbarIsTheUsers()
    {
        Actions app;
        const auto odd = u"a\\n\nact"_s; // names of folders may hold anything
        app.add(odd, R"({"scope":"namespace"})");
        app.open();
        const auto buttons = [&app] {
            QStringList names;
            for (const QAction *action : app.page().toolBar().commands()) {
                names.append(action->objectName());
            }
            names.removeAll(QString());
            return names;
        };
        const QStringList usual{u"reloadToolbarItem"_s, u"viewLogsToolbarItem"_s, u"copyFileToolbarItem"_s,
            u"quickLookToolbarItem"_s, u"deleteToolbarItem"_s};
        QCOMPARE(buttons(), usual);
        app.command(u"Customize Toolbar…"_s).trigger();
        auto *dialog = app.frame->findChild<ToolBarDialog *>();
        QVERIFY(dialog);
        auto *list = dialog->findChild<QListWidget *>();
        QCOMPARE(list->count(), 6);
        list->item(5)->setCheckState(Qt::Checked);
        list->item(4)->setCheckState(Qt::Unchecked);
        QCOMPARE(buttons(), usual.first(4) + QStringList{odd});
        list->setCurrentRow(5);
        clickButton(dialog, u"Move Up"_s);
        clickButton(dialog, u"Move Up"_s);
        const QStringList chosen = usual.first(3) + QStringList{odd, usual.at(3)};
        QCOMPARE(buttons(), chosen);
        QTest::keyClick(app.frame, Qt::Key_T, Qt::ControlModifier); // every tab, and the next start
        QCOMPARE(buttons(), chosen);
        QVERIFY(app.cluster.settings.flush());
        QCOMPARE(UserDefaults(app.cluster.settingsFile()).string(u"toolbarItems"_s),
            chosen.join(u'\n').replace(odd, u"a\\\\n\\nact"_s));
        QVERIFY(list->model()->moveRow({}, 3, {}, 0)); // as dragging a row does
        QCOMPARE(buttons(), QStringList{odd} + chosen.first(3) + chosen.last(1));
        dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::RestoreDefaults)->click();
        QCOMPARE(buttons(), usual);
        QVERIFY(!app.cluster.settings.string(u"toolbarItems"_s));
        QCOMPARE(list->item(4)->checkState(), Qt::Checked);
        QCOMPARE(list->item(5)->text(), odd);
        QCOMPARE(list->item(5)->checkState(), Qt::Unchecked);
        app.cluster.settings.set(u"toolbarItems"_s, u"x\\y\nz\\"_s); // backslashes of before
        QCOMPARE(ToolBarLayout().identifiers(), QStringList({u"x\\y"_s, u"z\\"_s}));
    }

    /// In the order in which they were chosen, by the mouse or by name.
    void copyFiles()
    {
        Actions app;
        app.open();
        QAction *copy = app.button(u"copyFileToolbarItem"_s);
        QTRY_COMPARE(app.pods().containerButtons().size(), 4U);
        const auto choose = [&app](std::size_t button) {
            QTest::mouseClick(app.pods().containerButtons()[button], Qt::LeftButton);
        };
        QVERIFY(copy && !copy->isEnabled());
        choose(1);
        choose(0);
        QVERIFY(!copy->isEnabled());
        choose(0);
        choose(1);
        for (const QString &name : {u"folder/x"_s, u"p"_s, u"a:b"_s}) {
            app.cluster.write(u"files/"_s + name, {});
        }
        const QString there = app.cluster.path(u"files/"_s);
        for (const bool byName : {false, true}) {
            app.cluster.forgetCalls();
            choose(1);
            QVERIFY(copy->isEnabled());
            copy->trigger();
            auto *dialog = app.frame->findChild<QFileDialog *>();
            QVERIFY(dialog && app.pods().selectedContainerPairs().empty());
            dialog->setDirectory(there);
            auto *list = dialog->findChild<QListView *>(u"listView"_s);
            QTRY_COMPARE(list->model()->rowCount(list->rootIndex()), 3);
            for (const QString &name : {u"p"_s, u"folder"_s}) {
                const QModelIndex first = list->model()->index(0, 0, list->rootIndex());
                const QModelIndex found = list->model()->match(first, Qt::DisplayRole, name).value(0);
                QTest::mouseClick(
                    list->viewport(), Qt::LeftButton, Qt::ControlModifier, list->visualRect(found).center());
            }
            if (byName) {
                dialog->findChild<QLineEdit *>(u"destinationField"_s)->setText(u"/opt/"_s);
                dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(u"\"a:b\" \"p\""_s);
            }
            app.cluster.hold(u"cp --context=b"_s);
            clickButton(dialog, u"Copy"_s);
            const auto copies = [&] { return app.cluster.tableReads().filter(u"cp --context"_s); };
            QTRY_COMPARE(copies().size(), 1);
            QCOMPARE(app.pods().isLoading(), !byName); // until the last one has been started
            app.cluster.release(u"cp --context=b"_s);
            const auto run = [&](const QString &file, const QString &place) {
                return u"cp --context=b -ndefault %1 web-1:%2 -c side"_s.arg(there + file, place);
            };
            QTRY_COMPARE(copies(),
                byName ? QStringList{run(u"p"_s, u"/opt/"_s)}
                       : QStringList({run(u"p"_s, u"/tmp/"_s), run(u"folder"_s, u"/tmp/"_s)}));
            QCOMPARE(app.console().contains(u"a:b was not copied: kubectl takes"_s), byName);
            QTRY_VERIFY(app.page().windowConsoleController().scriptsRunning().isEmpty());
            QTRY_VERIFY(!app.frame->findChild<QFileDialog *>() && !app.pods().isLoading());
        }
    }

    void openMenuStaysAsItIs()
    {
        Actions app;
        app.add(u"old"_s, R"({"scope":"namespace"})");
        app.open();
        app.menu().popup(app.frame->pos());
        QTRY_VERIFY(app.menu().isVisible());
        const auto before = app.menu().actions();
        app.add(u"new"_s, R"({"scope":"namespace"})");
        app.delegate.actions().reload();
        QTRY_COMPARE(app.entries().count(u"Actions Loaded"_s), 2);
        QVERIFY(app.menu().actions() == before);
        app.menu().setActiveAction(before.last());
        QTest::keyClick(&app.menu(), Qt::Key_Return); // what the user sees is what runs
        QCOMPARE(app.told(), u"b default"_s);
        QVERIFY(!app.menu().isVisible());
        QTRY_COMPARE(app.shown(app.menu()).mid(4), QStringList({u"new"_s, u"old"_s}));
    }

    /// Live updates load a table when it is shown, and when an action looks for names in it.
    void namesInTablesNotShown()
    {
        Actions actions;
        actions.cluster.settings.set(u"liveUpdates"_s, u"on"_s);
        actions.add(u"By Name"_s, R"({"scope":"deployment","use_name_matching_pattern":"*a"})");
        actions.openWindow();
        QTRY_VERIFY(actions.content().shownTable()->rowsAsOf().isValid());
        QTRY_VERIFY(actions.item(u"By Name"_s));
        QAction *item = actions.item(u"By Name"_s);
        QVERIFY(!item->isEnabled());
        actions.menu().popup({});
        QTRY_VERIFY(item->isEnabled());
        actions.menu().close();
        item->trigger();
        QVERIFY(actions.told().contains(u"alpha"_s));
    }
};

QTEST_MAIN(TestActionMenu)
#include "tst_action_menu.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "App.h"
#include "app/actionmenu/ActionMenu.h"
#include "app/toolbar/ClusterToolBar.h"
#include "app/toolbar/ToolBarDialog.h"
#include "app/toolbar/ToolBarLayout.h"
#include "pods/table/ContainerButton.h"
#include "resources/table/ReplicaCell.h"

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
using namespace Qt::StringLiterals;

namespace {

/// A window, and actions that write down what they were told.
struct Actions : App
{
    void add(const QString &folder, const QByteArray &config)
    {
        for (const auto &[name, bytes] :
            {std::pair(u"/config.json"_s, config),
                {u"/main.sh"_s,
                    "#!/bin/sh\necho \"$KUBECONFIG $CONTEXT $NAMESPACE \"\n"
                    "echo \"$POD$DEPLOYMENT$SERVICE$PERSISTENTVOLUME$CRONJOB$CONFIGMAP$SECRET$EVENT\"\n"
                    "echo \"$ENDPOINT$JOB$SERVICEACCOUNT$CLUSTERROLE$REPLICASET$DAEMONSET $CONTAINER\"\n"}}) {
            QFile file(cluster.path(u"data/Tidewright/Actions/"_s + folder + name));
            QVERIFY(QDir().mkpath(QFileInfo(file).path()));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
            file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
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

    /// What the latest action said it was told, without the kubeconfig and the view in front of it.
    QString told()
    {
        QString response;
        const auto isThere = [&] {
            const auto &all = page().windowConsoleController().entries();
            for (auto entry = all.rbegin(); entry != all.rend(); ++entry) {
                if (entry->command.startsWith(u"env "_s)) {
                    response = entry->response;
                    return static_cast<int>(all.rend() - entry) > m_read;
                }
            }
            return false;
        };
        [&] { QTRY_VERIFY(isThere()); }();
        m_read = static_cast<int>(page().windowConsoleController().entries().size());
        static const QRegularExpression view(u"^/[^ :]*/view-[^ :]+:"_s);
        return response.remove(view).remove(cluster.kubeConfig()).simplified();
    }

private:
    int m_read = 0;
};

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
        QTest::addColumn<QByteArray>("config");
        QTest::addColumn<QString>("filter"); // of the scope's table
        QTest::addColumn<QString>("selected"); // a row of that table, or a container's button "POD:NAME"
        QTest::addColumn<QString>("told"); // null: disabled
        const QByteArray context = "b default ";
        const auto row = [](const char *name, const QByteArray &config, const char *filter,
                             const char *selected, const char *told) {
            QTest::newRow(name) << config << QString::fromLatin1(filter) << QString::fromLatin1(selected)
                                << (told ? QString(u"b default "_s + QString::fromLatin1(told)).trimmed()
                                         : QString());
        };
        row("namespace", R"({"scope":"namespace"})", "", "", "");
        row("pod, none", R"({"scope":"pod"})", "", "", nullptr);
        row("pod", R"({"scope":"pod"})", "", "db-1", "db-1");
        row("pod by pattern", R"({"scope":"pod","use_name_matching_pattern":"web-*"})", "", "db-1", "web-1");
        row("selected pod first", R"({"scope":"pod","use_name_matching_pattern":"web-*"})", "", "web-2",
            "web-2");
        row("selected pods as shown", R"({"scope":"pod","use_name_matching_pattern":"web-*"})", "",
            "web-2,web-1", "web-1");
        row("no pod of that name", R"({"scope":"pod","use_name_matching_pattern":"x*"})", "", "web-2",
            nullptr);
        row("pod filtered out", R"({"scope":"pod","use_name_matching_pattern":"web-*"})", "db", "", nullptr);
        row("invalid pattern", "{\"scope\":\"pod\",\"use_name_matching_pattern\":\"(\"}", "", "web-2",
            nullptr);
        row("container", R"({"scope":"container"})", "", "web-1:side", "web-1 side");
        row("first chosen", R"({"scope":"deployment"})", "", "beta,alpha", "beta");
        row("shown rows only for the run", R"({"scope":"deployment","use_name_matching_pattern":"*a"})",
            "bet", "", "beta");
        row("this context", R"({"scope":"namespace","active_in_contexts":["a","b"]})", "", "", "");
        row("another context", R"({"scope":"namespace","active_in_contexts":["a"]})", "", "", nullptr);
        row("another kind", R"({"scope":"node"})", "", "", nullptr);
    }
    void targets()
    {
        QFETCH(QByteArray, config);
        QFETCH(QString, filter);
        QFETCH(QString, selected);
        QFETCH(QString, told);
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
            app.add(u"act"_s, R"({"scope":"namespace"})");
            app.reload();
            app.item(u"act"_s)->trigger();
            QCOMPARE(app.told(), u"b default"_s);
            QCOMPARE(app.entries().filter(u"env "_s).size(), 1);
        } else {
            QCOMPARE(app.told(), told);
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
        app.add(u"each"_s, R"({"scope":"pod","once_per_namespace":true})");
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
        const ResourceTableView &view = app.pods().tableView();
        const auto *delegate = qobject_cast<const QStyledItemDelegate *>(view.itemDelegate());
        QCOMPARE(delegate->displayText(u"a\u202eb"_s, {}), u"a\ufffdb"_s);
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
            QVERIFY2(!widget->windowTitle().contains(u'\u202e'), widget->metaObject()->className());
            if (const auto *label = qobject_cast<const QLabel *>(widget)) {
                QVERIFY2(!label->text().contains(u'\u202e'), qPrintable(label->text()));
                QVERIFY(label->textFormat() == Qt::PlainText || !label->text().contains(u"<s>"_s));
            }
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
        for (const bool moves : {true, false}) {
            QTRY_COMPARE(app.pods().arrangedObjects().rowCount(), 3);
            app.pods().tableView().selectRow(1);
            app.item(u"act"_s)->trigger();
            QTRY_VERIFY(app.question());
            QVERIFY(app.asks(u"Action: act\nPod: db-1\nContext: b\nNamespace: default\nKubeconfig: "_s
                + app.cluster.kubeConfig()));
            if (moves) {
                app.state().chooseNamespace(u"shop"_s);
            }
            app.answer(u"OK"_s);
            if (moves) {
                QTRY_VERIFY(app.console().contains(u"was not run"_s));
                app.state().chooseNamespace(u"default"_s);
            }
        }
        QCOMPARE(app.told(), u"b default db-1"_s);
        QCOMPARE(app.entries().filter(u"env "_s).size(), 1);
    }

    void withoutAKubeConfigOfItsOwn()
    {
        Actions app;
        app.cluster.settings.remove(u"defaultKubeConfigPath"_s);
        const QString named = app.cluster.path(u"named"_s);
        QVERIFY(QFile::copy(app.cluster.kubeConfig(), named));
        qputenv("KUBECONFIG", QFile::encodeName(named));
        app.add(u"act"_s, R"({"scope":"namespace"})");
        app.open();
        app.item(u"act"_s)->trigger();
        QCOMPARE(app.told(), QString(named + u" b default"_s));
        qunsetenv("KUBECONFIG");
    }

    void lastAction()
    {
        Actions app;
        app.add(u"Scale & Up"_s, R"({"scope":"pod"})");
        app.open();
        app.pods().tableView().selectRow(0);
        app.item(u"Scale && Up"_s)->trigger();
        QCOMPARE(app.told(), u"b default web-1"_s);
        QCOMPARE(app.menu().runLastActionMenuItem()->text(), u"Run \"Scale && Up\""_s);
        app.pods().tableView().selectRow(1);
        QTest::keyClick(app.frame, Qt::Key_Apostrophe, Qt::ControlModifier);
        QCOMPARE(app.told(), u"b default db-1"_s);
        // Its own rules do not count for the repetition, and it survives a reload. A tab has one of its own.
        app.pods().tableView().clearSelection();
        app.reload();
        QVERIFY(app.menu().runLastActionMenuItem()->isEnabled());
        QVERIFY(!app.item(u"Scale && Up"_s)->isEnabled());
        app.frame->addTab();
        QVERIFY(!app.menu().runLastActionMenuItem()->isEnabled());
        QCOMPARE(app.menu().runLastActionMenuItem()->text(), u"Run Last Action"_s);
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
        for (QAbstractButton *button : dialog->findChildren<QAbstractButton *>()) {
            if (button->text().remove(u'&') == u"Move Up"_s) {
                button->click();
                button->click();
            }
        }
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

    void copyFiles_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QStringList>("runs");
        QTest::newRow("in order") << u"/opt/"_s << QStringList{u"y"_s, u"x.txt"_s}
                                  << QStringList{u"y web-1:/opt/"_s, u"x.txt web-1:/opt/"_s};
        QTest::newRow("usual place, colons")
            << QString() << QStringList{u"a:b"_s, u"x.txt"_s} << QStringList{u"x.txt web-1:/tmp/"_s};
    }
    void copyFiles()
    {
        QFETCH(QString, typed);
        QFETCH(QStringList, files);
        QFETCH(QStringList, runs);
        Actions app;
        app.open();
        QAction *copy = app.button(u"copyFileToolbarItem"_s);
        QTRY_COMPARE(app.pods().containerButtons().size(), 4U);
        const auto buttons = app.pods().containerButtons();
        QVERIFY(copy && !copy->isEnabled());
        QTest::mouseClick(buttons[0], Qt::LeftButton);
        QVERIFY(copy->isEnabled());
        QTest::mouseClick(buttons[1], Qt::LeftButton);
        QVERIFY(!copy->isEnabled());
        QTest::mouseClick(buttons[0], Qt::LeftButton);
        copy->trigger();
        auto *dialog = app.frame->findChild<QFileDialog *>();
        QVERIFY(dialog && app.pods().selectedContainerPairs().empty());
        const QString there = QFileInfo(app.cluster.path(u"."_s)).canonicalFilePath() + u'/';
        QStringList names;
        for (const QString &name : files) {
            QVERIFY(QFile(there + name).open(QIODevice::WriteOnly));
            names.append(u'"' + name + u'"');
        }
        const auto copies = [&] { return app.cluster.tableReads().filter(u"cp --context"_s); };
        const QStringList &running = app.page().windowConsoleController().scriptsRunning();
        app.cluster.hold(u"cp --context=b"_s);
        dialog->setDirectory(there);
        dialog->findChild<QLineEdit *>(u"destinationField"_s)->setText(typed);
        dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(names.join(u' '));
        QMetaObject::invokeMethod(dialog, "accept");
        QTRY_COMPARE(copies().size(), 1);
        QCOMPARE(app.pods().isLoading(), runs.size() > 1); // until the last one has been started
        QCOMPARE(running.size(), 1);
        app.cluster.release(u"cp --context=b"_s);
        QTRY_COMPARE(copies().size(), runs.size());
        QCOMPARE(app.console().contains(u"a:b was not copied: kubectl takes"_s), files.contains(u"a:b"_s));
        QCOMPARE(copies().replaceInStrings(there, QString()),
            runs.replaceInStrings(
                QRegularExpression(u"^(.*)$"_s), u"cp --context=b -ndefault \\1 -c side"_s));
        QTRY_VERIFY(running.isEmpty() && !app.pods().isLoading());
    }

    void copyInTheOrderOfChoice()
    {
        Actions app;
        app.open();
        QTRY_COMPARE(app.pods().containerButtons().size(), 4U);
        for (const QStringList &chosen :
            {QStringList{u"q"_s, u"folder"_s, u"p"_s}, QStringList{u"folder"_s}}) {
            QTest::mouseClick(app.pods().containerButtons()[0], Qt::LeftButton);
            app.button(u"copyFileToolbarItem"_s)->trigger();
            auto *dialog = app.frame->findChild<QFileDialog *>();
            QVERIFY(QDir(app.cluster.path(u"files"_s)).mkpath(u"folder"_s));
            for (const QString &name : {u"p"_s, u"q"_s}) {
                QVERIFY(QFile(app.cluster.path(u"files/"_s + name)).open(QIODevice::WriteOnly));
            }
            dialog->setDirectory(app.cluster.path(u"files"_s));
            auto *list = dialog->findChild<QListView *>(u"listView"_s);
            QTRY_COMPARE(list->model()->rowCount(list->rootIndex()), 3);
            for (const QString &name : chosen) {
                for (int row = 0; row < 3; ++row) {
                    const QModelIndex index = list->model()->index(row, 0, list->rootIndex());
                    if (index.data().toString() == name) {
                        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                            list->visualRect(index).center());
                    }
                }
            }
            app.cluster.forgetCalls();
            QAbstractButton *copy = dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Open);
            QVERIFY(copy->isEnabled());
            QCOMPARE(copy->text(), u"Copy"_s);
            copy->click();
            const auto copied = [&app] {
                QStringList names;
                for (const QString &run : app.cluster.tableReads().filter(u"cp --context"_s)) {
                    names.append(run.section(u' ', 3, 3).section(u'/', -1));
                }
                return names;
            };
            QTRY_COMPARE(copied(), chosen);
            QTRY_VERIFY(app.page().windowConsoleController().scriptsRunning().isEmpty());
            QTRY_VERIFY(!app.frame->findChild<QFileDialog *>());
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
        actions.delegate.newDocument();
        actions.frame = actions.delegate.mainWindow();
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

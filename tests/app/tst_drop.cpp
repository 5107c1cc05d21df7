// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeCluster.h"
#include "app/AppDelegate.h"
#include "app/window/ClusterWindowFrame.h"
#include "app/content/DestinationView.h"
#include "app/state/KubeSplitViewController.h"
#include "app/window/MainWindowController.h"
#include "app/content/PrimaryContentController.h"
#include "pods/console/ConsoleTextView.h"
#include "pods/console/ConsoleViewController.h"
#include "support/Patience.h"

#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QWindow>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

/// One window on a fake cluster, and what a file manager does to it.
struct Drop
{
    Drop()
    {
        cluster.settings.set(u"defaultKubeConfigPath"_s, cluster.kubeConfig());
        delegate.newDocument();
        page = delegate.mainWindow()->currentPage();
        view = page->findChild<DestinationView *>();
    }
    ~Drop() { delegate.applicationWillTerminate(); }

    void load()
    {
        QVERIFY(QTest::qWaitForWindowActive(delegate.mainWindow()));
        QTRY_COMPARE(page->state().currentNamespace(), u"default"_s);
    }

    /// As the window system tells it, over the table's beginning: a passing message may cover what is below.
    void drag(const QStringList &urls)
    {
        dragged.setUrls(QUrl::fromStringList(urls));
        QDragEnterEvent enter(place(), Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, {});
        enter.setAccepted(false);
        QCoreApplication::sendEvent(window(), &enter);
        accepted = enter.isAccepted();
        QDragMoveEvent move(place(), Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, {});
        move.setDropAction(Qt::MoveAction);
        QCoreApplication::sendEvent(window(), &move);
        moves = accepted && move.dropAction() != Qt::CopyAction;
    }

    void drop()
    {
        QDropEvent event(place(), Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, {});
        QCoreApplication::sendEvent(window(), &event);
    }

    void leave()
    {
        QDragLeaveEvent event;
        QCoreApplication::sendEvent(window(), &event);
    }

    QWindow *window() const { return delegate.mainWindow()->windowHandle(); }
    QPoint place() const
    {
        return view->mapTo(delegate.mainWindow(), view->rect().topLeft() + QPoint(20, 20));
    }

    QMessageBox *question() const { return delegate.mainWindow()->findChild<QMessageBox *>(); }

    void answer(const QString &title) const
    {
        for (QAbstractButton *button : question()->buttons()) {
            if (button->text() == title) {
                button->click();
            }
        }
        QTRY_VERIFY(!question());
    }

    /// What was created until now.
    QStringList created()
    {
        page->primaryContentController().createFrom({u"/last.yaml"_s}, ChangePlace(page->state()));
        const QString command = u"create --context b -n %1 -R -f "_s.arg(page->state().currentNamespace());
        QStringList runs;
        const auto isThere = [&] {
            runs = cluster.tableReads().filter(u"create "_s).replaceInStrings(command, QString());
            return runs.removeAll(u"/last.yaml"_s) > 0;
        };
        [&] { QTRY_VERIFY(isThere()); }();
        return runs;
    }

    FakeCluster cluster;
    AppDelegate delegate;
    MainWindowController *page = nullptr;
    DestinationView *view = nullptr;
    QMimeData dragged;
    bool accepted = false;
    bool moves = false; ///< the source would remove the files
};

} // namespace

class TestDrop : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void dragAndDrop_data()
    {
        QTest::addColumn<QStringList>("urls");
        QTest::addColumn<QString>("names"); // empty: refused
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("paths");
        const auto file = [](const QString &name) -> QString { return u"file:///d/"_s + name; };
        QTest::newRow("one") << QStringList{file(u"a.yaml"_s)} << u"a.yaml"_s << u"Create"_s
                             << u"/d/a.yaml"_s;
        QTest::newRow("three") << QStringList{file(u"a.yaml"_s), file(u"b%20c.yaml"_s), file(u"x/d.yaml"_s)}
                               << u"a.yaml,\n    b c.yaml,\n    d.yaml"_s << u"Create"_s
                               << u"/d/a.yaml,/d/b c.yaml,/d/x/d.yaml"_s;
        QTest::newRow("cancelled") << QStringList{file(u"a.yaml"_s)} << u"a.yaml"_s << u"Cancel"_s
                                   << QString();
        QTest::newRow("others are left out")
            << QStringList{file(u"a.yaml"_s), file(u"b.txt"_s), file(u"c.yml"_s), file(u"d.YAML"_s),
                   file(u"e.yaml"_s)}
            << u"a.yaml,\n    e.yaml"_s << u"Create"_s << u"/d/a.yaml,/d/e.yaml"_s;
        QTest::newRow("folders too") << QStringList{file(u"a.yaml/"_s), file(u"b.yaml"_s)}
                                     << u"a.yaml,\n    b.yaml"_s << u"Create"_s << u"/d/a.yaml,/d/b.yaml"_s;
        QTest::newRow("the first decides")
            << QStringList{file(u"b.txt"_s), file(u"a.yaml"_s)} << QString() << QString() << QString();
        QTest::newRow("other case") << QStringList{file(u"service.YAML"_s)} << QString() << QString()
                                    << QString();
        QTest::newRow("short extension")
            << QStringList{file(u"service.yml"_s)} << QString() << QString() << QString();
        QTest::newRow("no file") << QStringList{u"https://pages.example/a.yaml"_s} << QString() << QString()
                                 << QString();
        QTest::newRow("nothing") << QStringList() << QString() << QString() << QString();
    }
    void dragAndDrop()
    {
        QFETCH(QStringList, urls);
        QFETCH(QString, names);
        QFETCH(QString, button);
        QFETCH(QString, paths);
        Drop drop;
        drop.load();
        drop.drag(urls);
        QCOMPARE(drop.accepted, !names.isEmpty());
        QVERIFY(!drop.moves);
        QCOMPARE(drop.view->isHighlighed(), !names.isEmpty());
        QCOMPARE(drop.view->findChildren<DropOverlayView *>().size(), names.isEmpty() ? 0 : 1);
        if (names.isEmpty()) {
            return;
        }
        drop.drop();
        QVERIFY(!drop.view->isHighlighed());
        QCOMPARE(drop.question()->text(), u"Confirm Create"_s);
        QCOMPARE(drop.question()->informativeText(),
            QString(u"Are you sure you want to add the following: \n    "_s + names + u"?"_s));
        drop.answer(button);
        QTRY_COMPARE(drop.created(), paths.isEmpty() ? QStringList() : QStringList{paths});
    }

    void leavingTakesTheFrameAway()
    {
        Drop drop;
        drop.load();
        drop.drag({u"file:///a.yaml"_s});
        QVERIFY(drop.view->isHighlighed());
        drop.leave();
        QVERIFY(!drop.view->isHighlighed());
        QVERIFY(!drop.view->findChild<DropOverlayView *>());
    }

    void theAnswerIsForThatContext()
    {
        Drop drop;
        drop.load();
        drop.drag({u"file:///a.yaml"_s});
        drop.drop();
        drop.page->state().chooseNamespace(u"shop"_s);
        drop.answer(u"Create"_s);
        QCOMPARE(drop.created(), QStringList());
        drop.page->state().chooseNamespace(allNamespaces);
        drop.drag({u"file:///a.yaml"_s});
        drop.drop();
        QVERIFY(!drop.question()); // no namespace to create anything in
        drop.page->primaryContentController().createFromFileDialog();
        QVERIFY(!drop.page->findChild<QFileDialog *>());
        drop.page->primaryContentController().createFrom({u"/a.yaml"_s}, ChangePlace(drop.page->state()));
        const auto *console = drop.page->windowConsoleController().consoleTextView();
        QTRY_COMPARE(console->toPlainText().count(u"Nothing was created: choose a namespace first."_s), 3);
    }

    void hundredsOfFiles()
    {
        Drop drop;
        drop.load();
        QStringList urls;
        QStringList names;
        for (int number = 1; number <= 300; ++number) {
            names.append(u"file-%1.yaml"_s.arg(number));
            urls.append(u"file:///d/"_s + names.last());
        }
        drop.drag(urls);
        drop.drop();
        QMessageBox *box = drop.question();
        QVERIFY(QTest::qWaitForWindowExposed(box));
        const QSize room = box->screen()->availableSize();
        QVERIFY(box->height() < room.height() && box->width() < room.width());
        for (const QAbstractButton *button : box->buttons()) {
            QVERIFY(box->rect().contains(QRect(button->mapTo(box, QPoint()), button->size())));
        }
        auto *list = box->findChild<QPlainTextEdit *>();
        QVERIFY(list && list->isVisible() && list->isReadOnly());
        QCOMPARE(list->toPlainText(), box->informativeText());
        QVERIFY(list->toPlainText().endsWith(u"    "_s + names.join(u",\n    "_s) + u'?'));
        QVERIFY(list->verticalScrollBar()->maximum() > 0);
        const auto labels = box->findChildren<QLabel *>();
        QVERIFY(std::any_of(labels.begin(), labels.end(), [](const QLabel *label) {
            return label->isVisible() && label->text().startsWith(u"Files: 300\n"_s);
        }));
        drop.answer(u"Create"_s);
        QCOMPARE(drop.created().value(0).count(u"/d/file-"_s), 300);
    }
};

QTEST_MAIN(TestDrop)
#include "tst_drop.moc"

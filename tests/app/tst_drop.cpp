// SPDX-License-Identifier: GPL-3.0-or-later
#include "App.h"
#include "app/content/DestinationView.h"

#include <QDragEnterEvent>
#include <QFileDialog>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QScreen>
#include <QWindow>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

/// A window, and what a file manager does to it.
struct Drop : App
{
    Drop()
    {
        open();
        view = page().findChild<DestinationView *>();
    }

    /// As the window system tells it, over the table's beginning: a passing message may cover what is below.
    void drag(const QStringList &urls)
    {
        dragged.setUrls(QUrl::fromStringList(urls));
        QDragEnterEvent enter(place(), Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, {});
        enter.setAccepted(false);
        send(enter);
        accepted = enter.isAccepted();
        QDragMoveEvent move(place(), Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, {});
        move.setDropAction(Qt::MoveAction);
        send(move);
        moves = accepted && move.dropAction() != Qt::CopyAction;
    }
    void drop()
    {
        QDropEvent event(place(), Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, {});
        send(event);
    }
    void send(QEvent &event) const { QCoreApplication::sendEvent(frame->windowHandle(), &event); }
    QPoint place() const { return view->mapTo(frame, view->rect().topLeft() + QPoint(20, 20)); }

    /// What was created until now.
    QStringList created()
    {
        content().createFrom({u"/last,one.yaml"_s}, ChangePlace(state()));
        const QString command = u"create --context b -n %1 -R -f "_s.arg(state().currentNamespace());
        QStringList runs;
        const auto isThere = [&] {
            runs = cluster.tableReads().filter(u"create "_s).replaceInStrings(command, QString());
            return runs.removeAll(u"\"/last,one.yaml\""_s) > 0;
        };
        [&] { QTRY_VERIFY(isThere()); }();
        return runs;
    }

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
    void onlyNamesThatEndSoAreTaken()
    {
        Drop drop;
        for (const QStringList &refused : {QStringList{u"https://pages.example/a.yaml"_s},
                 {u"file:///b.txt"_s, u"file:///a.yaml"_s}, {}}) { // the first decides
            drop.drag(refused);
            QVERIFY(!drop.accepted && !drop.view->findChild<DropOverlayView *>());
        }
        const QStringList taken{
            u"file:///d/a.yaml/"_s, u"file:///d/b.txt"_s, u"file:///d/c.yml"_s, u"file:///d/x/e%20f.yaml"_s};
        drop.drag(taken);
        QVERIFY(drop.accepted && !drop.moves && drop.view->findChild<DropOverlayView *>());
        QDragLeaveEvent leave;
        drop.send(leave);
        QVERIFY(!drop.view->isHighlighed() && !drop.view->findChild<DropOverlayView *>());
        drop.drag(taken);
        drop.drop();
        QVERIFY(!drop.view->isHighlighed());
        QCOMPARE(drop.question().title(), u"Confirm Create"_s);
        QCOMPARE(drop.question().message(),
            u"Are you sure you want to add the following: \n    a.yaml,\n    e f.yaml?"_s);
        drop.answer(u"Cancel"_s);
        QCOMPARE(drop.created(), QStringList());
    }

    /// kubectl reads the option as a line of a table: it cannot be told of both line ends together.
    void namesWithLineEnds()
    {
        Drop drop;
        drop.drag({u"file:///d/a%0Ab.yaml"_s, u"file:///d/c%0Dd.yaml"_s});
        drop.drop();
        QVERIFY(drop.question().message().endsWith(u"a\\nb.yaml,\n    c\\rd.yaml?"_s));
        drop.answer(u"Create"_s);
        QTRY_COMPARE(drop.created(), QStringList{u"\"/d/a b.yaml\",\"/d/c\rd.yaml\""_s});
        drop.drag({u"file:///d/a%0D%0Ab.yaml"_s});
        drop.drop();
        drop.answer(u"Create"_s);
        QTRY_VERIFY(drop.console().contains(
            u"Nothing was created: kubectl cannot be told of the file /d/a\\r\\nb"_s));
        QVERIFY(!drop.console().contains(u"a\nb"_s));
    }

    void theQuestionIsForItsNamespace()
    {
        Drop drop;
        drop.drag({u"file:///a.yaml"_s});
        drop.drop();
        drop.answer(u"Apply…"_s);
        QTRY_VERIFY(drop.console().contains(u"Nothing was applied: the cluster has all of it already"_s));
        QVERIFY(drop.cluster.tableReads().filter(u"create "_s).isEmpty());
        drop.drag({u"file:///a.yaml"_s});
        drop.drop();
        drop.state().chooseNamespace(u"shop"_s);
        drop.answer(u"Create"_s);
        QCOMPARE(drop.created(), QStringList());
        drop.state().chooseNamespace(allNamespaces);
        drop.drag({u"file:///a.yaml"_s});
        drop.drop();
        QVERIFY(!drop.question());
        drop.content().createFromFileDialog();
        QVERIFY(!drop.frame->findChild<QFileDialog *>());
        drop.content().createFrom({u"/a.yaml"_s}, ChangePlace(drop.state()));
        QTRY_COMPARE(drop.console().count(u"Nothing was created: choose a namespace first."_s), 3);
    }

    void hundredsOfFiles()
    {
        Drop drop;
        QStringList urls;
        for (int number = 1; number <= 300; ++number) {
            urls.append(u"file:///d/file-%1.yaml"_s.arg(number));
        }
        drop.drag(urls);
        drop.drop();
        const auto box = drop.question();
        QVERIFY(QTest::qWaitForWindowExposed(box));
        const QSize room = box->screen()->availableSize();
        QVERIFY(box->height() < room.height() && box->width() < room.width());
        for (const QAbstractButton *button : box.buttons()) {
            QVERIFY(box->rect().contains(QRect(button->mapTo(box, QPoint()), button->size())));
        }
        QVERIFY(box.message().endsWith(u",\n    file-300.yaml?"_s) && drop.asks(u"Files: 300\n"_s));
        drop.answer(u"Create"_s);
        QCOMPARE(drop.created().value(0), urls.replaceInStrings(u"file://"_s, QString()).join(u','));
    }
};

QTEST_MAIN(TestDrop)
#include "tst_drop.moc"

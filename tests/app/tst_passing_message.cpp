// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PassingMessage.h"
#include "support/Patience.h"

#include <QAccessible>
#include <QEnterEvent>
#include <QLabel>
#include <QPointer>

using namespace tidewright;
using namespace Qt::StringLiterals;

class TestPassingMessage : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void comesAndGoes()
    {
        QWidget window;
        window.resize(800, 600);
        window.show();
        const QPointer first = PassingMessage::show(window, u"Done"_s, u"<b>all</b>"_s);
        const QPointer second = PassingMessage::show(window, QString(), QString(5000, u'x'));
        const QAccessibleInterface *spoken = QAccessible::queryAccessibleInterface(first);
        QCOMPARE(spoken->text(QAccessible::Name), u"Done"_s);
        QCOMPARE(spoken->text(QAccessible::Description), u"<b>all</b>"_s);
        QCOMPARE(first->findChildren<QLabel *>().at(1)->text(), u"<b>all</b>"_s);
        QVERIFY(
            window.rect().contains(first->geometry()) && !first->geometry().intersects(second->geometry()));
        QVERIFY(second->y() < first->y() && second->height() < 600);
        QVERIFY(first->lifetime() >= 5000 && second->lifetime() > first->lifetime());
        window.resize(640, 480);
        QTRY_VERIFY(window.rect().contains(first->geometry()));
        const QPointer third = PassingMessage::show(window, u"Short"_s, {});
        const int before = third->y();
        QTest::mouseClick(second, Qt::LeftButton);
        QTRY_VERIFY(!second);
        QVERIFY(third->y() > before); // takes the free place
        auto *end = first->findChild<QTimer *>();
        QCOMPARE(end->remainingTime() > 0 ? end->interval() : 0, first->lifetime());
        QEnterEvent pointer({}, {}, {});
        QCoreApplication::sendEvent(first, &pointer);
        QVERIFY(!end->isActive()); // while the pointer rests on it
        end->start(0);
        QTRY_VERIFY(!first && third);
    }

    void goesWithItsWindow()
    {
        auto window = std::make_unique<QWidget>();
        const QPointer message = PassingMessage::show(*window, u"Done"_s, {});
        window.reset();
        QVERIFY(!message);
    }
};

QTEST_MAIN(TestPassingMessage)
#include "tst_passing_message.moc"

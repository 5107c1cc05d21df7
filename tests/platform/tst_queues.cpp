// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/threads/MainQueue.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QTest>

#include <algorithm>
#include <set>
#include <thread>

using namespace tidewright;
using namespace tidewright::test;

class TestQueues : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { mainQueue(); }

    void mainTasksKeepTheOrderOfEachPoster()
    {
        constexpr int posters = 4;
        constexpr int tasks = 5000;
        std::vector<std::vector<int>> seen(posters);
        bool onMain = true;
        std::vector<std::thread> threads;
        for (int poster = 0; poster < posters; ++poster) {
            threads.emplace_back([&, poster] {
                for (int i = 0; i < tasks; ++i) {
                    mainQueue().post([&, poster, i] {
                        onMain = onMain && QThread::currentThread() == thread();
                        seen[std::size_t(poster)].push_back(i);
                    });
                }
            });
        }
        for (std::thread &thread : threads) {
            thread.join();
        }
        for (const auto &numbers : seen) {
            QTRY_COMPARE(numbers.size(), std::size_t(tasks));
            QVERIFY(std::is_sorted(numbers.cbegin(), numbers.cend()));
        }
        QVERIFY(onMain);
    }

    void aReceiverThatIsGoneGetsNothing()
    {
        auto receiver = std::make_unique<QObject>();
        QObject other;
        int calls = 0;
        bool done = false;
        postToMain(QPointer(receiver.get()), [&](QObject &) { ++calls; });
        postToMain(QPointer(&other), [&](QObject &) { done = true; });
        receiver.reset();
        QTRY_VERIFY(done);
        QCOMPARE(calls, 0);
    }

    void shortTasksShareThreads()
    {
        DispatchQueue queue("short");
        std::set<std::thread::id> threads;
        for (int i = 0; i < 500; ++i) {
            threads.insert(inBackground([] { return std::this_thread::get_id(); }, queue).get());
        }
        // A thread that has just ended its task may not be idle yet when the next one comes.
        QVERIFY2(threads.size() <= 250, qPrintable(QString::number(threads.size())));
    }
};

QTEST_GUILESS_MAIN(TestQueues)
#include "tst_queues.moc"

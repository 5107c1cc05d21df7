// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/threads/MainQueue.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QTest>
#include <QTimer>

#include <algorithm>
#include <latch>
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

    void aTaskThatPostsAgainLetsTheEventLoopGoOn()
    {
        int rounds = 0;
        bool timerFired = false;
        std::function<void()> again = [&] {
            ++rounds;
            if (!timerFired && rounds < 1'000'000) {
                mainQueue().post(again);
            }
        };
        QTimer::singleShot(0, this, [&] { timerFired = true; });
        mainQueue().post(again);
        QTRY_VERIFY(timerFired);
        QVERIFY(rounds < 1'000'000);
        QCoreApplication::processEvents();
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

    void blockedTasksStarveNobody()
    {
        constexpr int blocked = 200;
        std::latch allRun(blocked);
        std::promise<void> release;
        const auto released = release.get_future().share();
        std::vector<std::future<bool>> ends;
        for (int i = 0; i < blocked; ++i) {
            ends.push_back(inBackground([&allRun, released] {
                allRun.count_down();
                released.wait();
                return true;
            }));
        }
        auto oneMore = inBackground([] { return true; });
        const bool ran = arrives(oneMore);
        const bool together = QTest::qWaitFor([&allRun] { return allRun.try_wait(); }, 20'000);
        release.set_value();
        for (const auto &end : ends) {
            end.wait();
        }
        QVERIFY(ran);
        QVERIFY(together);
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

    void aFinishedTaskIsReleased()
    {
        DispatchQueue queue("release");
        auto held = std::make_shared<int>(1);
        queue.post([held] { Q_UNUSED(held) });
        QTRY_COMPARE(held.use_count(), 1L);
    }
};

QTEST_GUILESS_MAIN(TestQueues)
#include "tst_queues.moc"

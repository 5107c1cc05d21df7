// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/running/ApplicationRecord.h"
#include "platform/threads/MainQueue.h"
#include "resources/forwards/ForwardPort.h"
#include "resources/forwards/PortForwardsWindow.h"
#include "support/Patience.h"
#include "support/StubWindow.h"

#include <QDesktopServices>
#include <QPushButton>
#include <QTest>
#include <QTreeView>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Its n-th port-forward does what the file of that number says to the fake tool, once per start.
constexpr auto script = R"sh(#!/bin/sh
dir=${0%/*}
[ "$1" = config ] && { cat "$dir/config"; exit; }
printf '%s\n' "$*" >> "$dir/calls"
export FAKE_TOOL_SCRIPT="$(cat "$dir/run-$(wc -l < "$dir/calls")")"
exec FAKE_TOOL
)sh";
constexpr auto config
    = R"({"kind": "Config", "contexts": [{"name": "b", "context": {"cluster": "k", "user": "u"}}],
    "clusters": [{"name": "k", "cluster": {"server": "https://one.example"}}]})";
const QByteArray up = "out Forwarding\\x20from\\x20127.0.0.1:41234\\x20->\\x2080\\n ";
const QByteArray lost = "err error:\\x20lost\\x20connection\\x20to\\x20pod\\n exit 1";

} // namespace

/// Forwards of a kubectl that plays a part of its own at each start.
class TestPortForward : public QObject
{
    Q_OBJECT
private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<StubWindow> m_window = std::make_unique<StubWindow>();

    QString path(const QString &name) const { return m_folder->filePath(name); }
    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    QStringList calls() const
    {
        QFile file(path(u"calls"_s));
        return file.open(QIODevice::ReadOnly)
            ? QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)
            : QStringList();
    }
    std::unique_ptr<PortForward> forward(const QByteArrayList &runs, quint16 localPort = 0)
    {
        for (qsizetype i = 0; i < runs.size(); ++i) {
            write(u"run-%1"_s.arg(i + 1), QByteArray(runs[i]).replace(' ', '\n'));
        }
        const auto contents = KubeConfigContents::parse(config);
        return std::make_unique<PortForward>(ForwardRequest{u"service/web"_s, u"b"_s, u"shop"_s, {}, 80,
                                                 localPort, u"b : shop"_s, m_window.get()},
            Shell::create(), contents->destination(u"b"_s), ForwardPatience{1ms, 4ms, 10s, 2});
    }

private Q_SLOTS:
    void init()
    {
        mainQueue();
        m_folder = std::make_unique<QTemporaryDir>();
        write(u"kubectl"_s,
            QByteArray(script).replace("exec FAKE_TOOL", QByteArray("exec " + fakeToolPath().toLocal8Bit())));
        write(u"config"_s, config);
        setKubectlPath(path(u"kubectl"_s));
    }

    void states_data()
    {
        QTest::addColumn<QByteArrayList>("runs");
        QTest::addColumn<QByteArray>("states"); // first letters, X: failed
        QTest::addColumn<QString>("said");
        QTest::addColumn<QStringList>("ports"); // of each start
        const QByteArray error = "err error:\\x20no\\x20pods\\n exit 1";
        QTest::newRow("in pieces, with IPv6 after it")
            << QByteArrayList{"out Forwarding\\x20from\\x20127.0 drained out .0.1:41234\\x20->\\x2080\\n "
                              "out Forwarding\\x20from\\x20[::1]:41234\\x20->\\x2080\\n hang"}
            << QByteArray("SF") << QString() << QStringList{u":80"_s};
        QTest::newRow("a pod is replaced") << QByteArrayList{up + lost, up + "hang"} << QByteArray("SFRF")
                                           << QString() << QStringList{u":80"_s, u"41234:80"_s};
        QTest::newRow("never came up")
            << QByteArrayList{error} << QByteArray("SX") << u"error: no pods"_s << QStringList{u":80"_s};
        QTest::newRow("comes back at the second try")
            << QByteArrayList{up + lost, error, up + "hang"} << QByteArray("SFRF") << QString()
            << QStringList{u":80"_s, u"41234:80"_s, u"41234:80"_s};
        QTest::newRow("two tries in vain")
            << QByteArrayList{up + lost, error, "die 9"} << QByteArray("SFRX")
            << u"The command was ended by signal 9."_s << QStringList{u":80"_s, u"41234:80"_s, u"41234:80"_s};
        QTest::newRow("the context leads elsewhere")
            << QByteArrayList{up + "until FOLDER/go " + lost} << QByteArray("SFRX")
            << u"The context b leads elsewhere by now."_s << QStringList{u":80"_s};
    }
    void states()
    {
        QFETCH(QByteArrayList, runs);
        QFETCH(QByteArray, states);
        QFETCH(QString, said);
        QFETCH(QStringList, ports);
        for (QByteArray &run : runs) {
            run.replace("FOLDER", m_folder->path().toUtf8());
        }
        const auto started = forward(runs);
        QByteArray seen;
        connect(started.get(), &PortForward::changed, this, [&] {
            if (const char state = "SFRX"[int(started->state())]; !seen.endsWith(state)) {
                seen += state;
            }
            if (seen == "SF" && runs.first().contains("until")) {
                write(u"config"_s, QByteArray(config).replace("one", "two"));
                write(u"go"_s, {});
            }
        });
        started->start();
        QTRY_COMPARE(seen, states);
        QCOMPARE(started->said().trimmed(), said);
        QCOMPARE(calls(),
            ports.replaceInStrings(
                QRegularExpression(u"^"_s), u"port-forward --context=b -nshop service/web "_s));
        QCOMPARE(started->address(), states.contains('F') ? QUrl(u"http://localhost:41234"_s) : QUrl());
    }

    void theListLeadsToTheAddressAndStops()
    {
        PortForwards list;
        PortForwardsWindow panel(list);
        list.add(forward({up + "pidfile " + m_folder->path().toUtf8() + " hang"}));
        const auto text
            = [&](PortForwards::Column column) { return list.index(0, column).data().toString(); };
        QTRY_COMPARE(text(PortForwards::State), u"Forwarding"_s);
        QTRY_VERIFY(!pidsIn(m_folder->path()).isEmpty());
        const qint64 pid = pidsIn(m_folder->path()).value(0);
        QVERIFY(isAlive(pid));
        QCOMPARE(text(PortForwards::Window), u"b : shop"_s);
        m_window = std::make_unique<StubWindow>(); // its window is closed
        QCOMPARE(text(PortForwards::Window), u"b : shop (closed)"_s);

        panel.show();
        auto *view = panel.findChild<QTreeView *>();
        QDesktopServices::setUrlHandler(u"http"_s, this, "open");
        const QRect link = view->visualRect(list.index(0, PortForwards::Address));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, link.center());
        QDesktopServices::unsetUrlHandler(u"http"_s);
        QCOMPARE(m_opened, QUrl(u"http://localhost:41234"_s));
        for (QPushButton *button : panel.findChildren<QPushButton *>()) {
            QCOMPARE(button->isEnabled(), button->text() != u"&Try Again"_s);
        }
        panel.stop();
        QCOMPARE(list.rowCount(), 0);
        QTRY_VERIFY(!isAlive(pid));
        QVERIFY(calls().size() == 1);
    }

    void whatIsRead()
    {
        for (const auto &[line, port] : {std::pair("Forwarding from 127.0.0.1:8080 -> 80", 8080),
                 {"Forwarding from [::1]:65535 -> 80\r", 65535}, {"Handling connection for 8080", 0},
                 {"Forwarding from 127.0.0.1:99999 -> 80", 0}, {"Forwarding from 10.0.0.1:80 -> 80", 0}}) {
            QCOMPARE(forwardedFrom(line), port);
        }
        const std::vector<DeclaredPort> ports{{80, u"web"_s}, {9000, {}}};
        QCOMPARE(readPorts("80\tweb\tTCP\n53\tdns\tUDP\n9000\t\t\n80\tweb\tTCP\n\tx\t\n70000\t\t"), ports);
        QCOMPARE(readPorts(""), std::vector<DeclaredPort>());
        std::vector<qint64> pauses;
        for (const int tries : {0, 1, 4, 5, 1000}) {
            pauses.push_back(pauseBefore(tries, {}).count());
        }
        QCOMPARE(pauses, (std::vector<qint64>{1000, 2000, 16'000, 30'000, 30'000}));
    }

public Q_SLOTS:
    void open(const QUrl &address) { m_opened = address; }

private:
    QUrl m_opened;
};

QTEST_MAIN(TestPortForward)
#include "tst_port_forward.moc"

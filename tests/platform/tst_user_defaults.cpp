// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/ProcessSetup.h"
#include "platform/settings/UserDefaults.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <iostream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

constexpr int kills = 200;
constexpr int keysPerWriter = 60;
constexpr auto deadline = std::chrono::seconds(20);
constexpr int deadlineMs = 20000;
const QStringList usualFiles{u"settings.json"_s, u"settings.json.lock"_s};

/// Of another length each time, so that a torn or mixed file cannot look whole.
QString payload(qint64 number)
{
    return u"%1:%2"_s.arg(number).arg(QString(number * 37 % 4000, u'x'));
}

/// The other process: writes PREFIX0, PREFIX1 … once, or for ever changes "count" and says each time when
/// done.
int writeSettings(const QString &path, const QString &prefix)
{
    UserDefaults settings(path);
    if (prefix != u"count") {
        for (int number = 0; number < keysPerWriter; ++number) {
            settings.set(prefix + QString::number(number), payload(number));
            settings.flush(deadline);
        }
        return settings.flush(deadline) ? 0 : 1;
    }
    for (qint64 number = settings.string(prefix).value_or(QString()).section(u':', 0, 0).toLongLong();;) {
        settings.set(prefix, payload(++number));
        settings.flush(deadline);
        std::cout << number << std::endl;
    }
}

void start(QProcess &process, const QString &path, const QString &prefix)
{
    process.start(QCoreApplication::applicationFilePath(), {u"--write"_s, path, prefix});
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

/// Without keys also when the file does not parse.
QJsonObject jsonIn(const QString &path)
{
    return QJsonDocument::fromJson(readFile(path)).object();
}

int modeOf(const QString &path)
{
    struct stat status = {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 ? int(status.st_mode & 07777) : -1;
}

/// Root may do anything; what the disk refuses is only seen by somebody else.
struct AsOrdinaryUser
{
    AsOrdinaryUser() { wasRoot = ::geteuid() == 0 && ::seteuid(65534) == 0; }
    ~AsOrdinaryUser() { wasRoot = wasRoot && ::seteuid(0) != 0; }
    bool wasRoot;
};

void limitFileSize(rlim_t bytes)
{
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min(bytes, limit.rlim_max);
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace

class tst_user_defaults : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir(m_dir->path()).mkdir(u"folder"_s));
        m_path = inFolder(u"settings.json"_s);
        m_told.clear();
        setSettingsProblemHandler([this](const QString &problem) {
            const QMutexLocker lock(&m_mutex);
            m_told.append(problem);
        });
    }

    void cleanup() { setSettingsProblemHandler({}); }

    void whatIsWrittenIsRead()
    {
        const QString text = u"line\nquote\" ünï𝄞"_s + QChar(0);
        const UserDefaults::Dictionary dictionary{{u""_s, u""_s}, {u"A B="_s, text}};
        const QByteArray bytes("\0\xff\n", 3);
        writeFile(m_path, R"({"later": [1, {"a": null}], "text": 5, "gone": "x", "bytes": ["base64", "A*EC"],
            "dictionary": {"B": "2", "A": 1}})");
        QFile::setPermissions(m_path, QFile::Permissions(0x6644));
        QFile::setPermissions(inFolder(u"."_s), QFile::Permissions(0x7755));
        const UserDefaults before(m_path);
        QVERIFY(!before.string(u"text"_s) && !before.dictionary(u"dictionary"_s));
        QVERIFY(!before.data(u"bytes"_s) && !before.data(u"later"_s));
        {
            UserDefaults settings(m_path);
            settings.set(u"text"_s, text);
            settings.set(u"dictionary"_s, dictionary);
            settings.set(u"bytes"_s, bytes);
            settings.remove(u"gone"_s);
        }
        const UserDefaults after(m_path);
        for (const UserDefaults *settings : {&before, &after}) {
            QCOMPARE(settings->string(u"text"_s), text);
            QCOMPARE(settings->dictionary(u"dictionary"_s), dictionary);
            QCOMPARE(settings->data(u"bytes"_s), bytes);
            QVERIFY(!settings->string(u"gone"_s));
        }
        QCOMPARE(jsonIn(m_path).size(), 4); // what a later version wrote is kept
        QCOMPARE(QJsonDocument(jsonIn(m_path)[u"later"].toArray()).toJson(QJsonDocument::Compact),
            R"([1,{"a":null}])");
        QCOMPARE(modeOf(m_path), 0600);
        QCOMPARE(modeOf(inFolder(u"."_s)), 0700);
        QCOMPARE(filesInFolder(), usualFiles);
    }

    void damagedFile_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("cut off") << R"({"a": "b")"_ba;
        QTest::newRow("empty") << ""_ba;
        QTest::newRow("a list") << R"(["a"])"_ba;
        QTest::newRow("no UTF-8") << "{\"a\": \"\xff\xfe\"}"_ba;
        QTest::newRow("10 MB of garbage") << QByteArray(10 << 20, '\x01');
        QTest::newRow("larger than any settings") << "{\"a\": \"" + QByteArray(33 << 20, 'a') + "\"}";
        QTest::newRow("nested without end") << QByteArray(100000, '[');
    }

    void damagedFile()
    {
        QFETCH(QByteArray, bytes);
        for (int round = 1; round <= 2; ++round) {
            writeFile(m_path, bytes);
            UserDefaults settings(m_path);
            QVERIFY(!settings.string(u"a"_s));
            QVERIFY(settings.flush(deadline));
            const QStringList aside = filesInFolder().filter(u"settings.json.broken-2"_s);
            QCOMPARE(aside.size(), round);
            for (const QString &name : aside) {
                QVERIFY(readFile(inFolder(name)) == bytes);
                QVERIFY(told().join(u'\n').contains(name));
            }
            settings.set(u"a"_s, u"1"_s);
            settings.set(u"b"_s, u"2"_s);
            QVERIFY(settings.flush(deadline));
            QCOMPARE(jsonIn(m_path), QJsonObject({{u"a"_s, u"1"_s}, {u"b"_s, u"2"_s}}));
            QCOMPARE(told().size(), round);
        }
    }

    void damagedMeanwhile()
    {
        UserDefaults settings(m_path);
        settings.set(u"a"_s, u"1"_s);
        QVERIFY(settings.flush(deadline));
        writeFile(m_path, R"({"a": "1", )"); // as an editor that saves leaves it for a moment
        QCOMPARE(settings.string(u"a"_s), u"1"_s);
        QCOMPARE(told(), QStringList());
        // What cut it off, a full disk perhaps, may still be there.
        const QByteArray damaged = readFile(m_path);
        limitFileSize(4096);
        settings.set(u"b"_s, QString(100000, u'x'));
        QVERIFY(!settings.flush(deadline));
        limitFileSize(RLIM_INFINITY);
        QCOMPARE(readFile(m_path), damaged);
        QCOMPARE(settings.string(u"a"_s), u"1"_s);
        settings.set(u"b"_s, u"2"_s);
        QVERIFY(settings.flush(deadline));
        QCOMPARE(jsonIn(m_path), QJsonObject({{u"a"_s, u"1"_s}, {u"b"_s, u"2"_s}}));
        QCOMPARE(told().size(), 2);
        QVERIFY(QFile::remove(m_path)); // to start afresh
        QVERIFY(!settings.string(u"a"_s));
    }

    void trouble_data()
    {
        QTest::addColumn<QString>("reason");
        QTest::newRow("file of somebody else") << u"ermission"_s;
        QTest::newRow("read-only folder") << u"ermission"_s;
        QTest::newRow("full disk") << u"too large"_s;
        QTest::newRow("a folder of that name") << u"not an ordinary file"_s;
        QTest::newRow("a pipe") << u"not an ordinary file"_s;
        QTest::newRow("a link to itself") << u"symbolic links"_s;
    }

    /// What cannot be written is not lost while the program runs, is told once, and harms no file.
    void trouble()
    {
        QFETCH(QString, reason);
        const QByteArray what = QTest::currentDataTag();
        m_dir.reset();
        const AsOrdinaryUser user;
        init(); // in a folder of that user
        const QByteArray path = QFile::encodeName(m_path);
        const QByteArray folder = QFile::encodeName(inFolder(u"."_s));
        const bool isFile = !what.startsWith("a "); // sound settings, but out of reach
        if (isFile) {
            writeFile(m_path, R"({"old": "value"})");
            QCOMPARE(::chmod(path.constData(), what.startsWith("file") ? 0 : 0600), 0);
            QCOMPARE(::chmod(folder.constData(), what.startsWith("read-only") ? 0500 : 0700), 0);
        } else {
            QVERIFY(what.contains("folder") ? ::mkdir(path.constData(), 0700) == 0
                    : what.contains("pipe") ? ::mkfifo(path.constData(), 0600) == 0
                                            : QFile::link(m_path, m_path));
        }
        UserDefaults settings(m_path);
        limitFileSize(what == "full disk" ? 4096 : RLIM_INFINITY);
        settings.set(u"a"_s, QString(100000, u'x'));
        settings.set(u"b"_s, u"2"_s);
        QVERIFY(!settings.flush(deadline));
        limitFileSize(RLIM_INFINITY);
        QCOMPARE(settings.string(u"a"_s).value_or(QString()).size(), 100000);
        QCOMPARE(settings.string(u"b"_s), u"2"_s);
        QCOMPARE(told().size(), 1);
        QVERIFY2(told().first().contains(reason), qPrintable(told().first()));
        QVERIFY(!QFile::exists(m_path + u".new"));
        // Once the trouble is over, the next change brings the others along.
        ::chmod(folder.constData(), 0700);
        QCOMPARE(isFile ? ::chmod(path.constData(), 0600) : std::remove(path.constData()), 0);
        QCOMPARE(jsonIn(m_path).contains(u"old"), isFile);
        settings.set(u"c"_s, u"3"_s);
        QVERIFY(settings.flush(deadline));
        QCOMPARE(jsonIn(m_path).size(), isFile ? 4 : 3);
        m_dir.reset();
    }

    /// People keep their settings elsewhere and link to them, by way of another link too.
    void links()
    {
        const QString real = m_dir->filePath(u"real.json"_s);
        QVERIFY(QFile::link(u"../real.json"_s, inFolder(u"second"_s)));
        QVERIFY(QFile::link(u"second"_s, m_path)); // which leads nowhere yet
        for (const QString &key : {u"a"_s, u"b"_s}) {
            UserDefaults settings(m_path);
            settings.set(key, u"1"_s);
            QVERIFY(settings.flush(deadline));
            QVERIFY(QFileInfo(m_path).isSymLink() && !QFileInfo(real).isSymLink());
        }
        QCOMPARE(jsonIn(real).size(), 2);
    }

    /// A process that was stopped, or hangs on its disk, keeps its turn.
    void slowDiskHoldsNobodyUp()
    {
        UserDefaults settings(m_path);
        auto turn = std::make_unique<FileLock>(QFile::encodeName(m_path + u".lock"));
        QCOMPARE(turn->error(), 0);
        for (int number = 0; number < 100; ++number) {
            settings.set(u"key"_s, QString::number(number));
            QCOMPARE(settings.string(u"key"_s), QString::number(number));
        }
        QVERIFY(!settings.flush(std::chrono::milliseconds(1)));
        QVERIFY(!QFile::exists(m_path));
        turn.reset();
        QVERIFY(settings.flush(deadline));
        QCOMPARE(jsonIn(m_path)[u"key"], u"99"_s);
    }

    void readersOnAnyThread()
    {
        UserDefaults settings(m_path);
        settings.set(u"key"_s, UserDefaults::Dictionary{{u"0"_s, payload(0)}});
        std::atomic<bool> done = false;
        std::atomic<int> wrong = 0;
        std::vector<std::jthread> readers;
        for (int count = 0; count < 3; ++count) {
            readers.emplace_back([&settings, &done, &wrong] {
                while (!done) {
                    const auto value = settings.dictionary(u"key"_s);
                    wrong += !value || value->size() != 1
                        || value->first() != payload(value->firstKey().toInt());
                }
            });
        }
        for (int number = 1; number <= 50; ++number) {
            settings.set(u"key"_s, UserDefaults::Dictionary{{QString::number(number), payload(number)}});
        }
        done = true;
        readers.clear();
        QCOMPARE(wrong, 0);
    }

    void killedWhileWriting()
    {
        qint64 last = 0;
        for (int kill = 0; kill < kills; ++kill) {
            QProcess writer;
            start(writer, m_path, u"count"_s);
            qint64 said = last;
            for (int lines = QRandomGenerator::global()->bounded(1, 6); lines > 0; --lines) {
                QVERIFY(writer.canReadLine() || writer.waitForReadyRead(deadlineMs));
                said = std::max(said, writer.readLine().trimmed().toLongLong());
            }
            const QDeadlineTimer moment(
                std::chrono::microseconds(QRandomGenerator::global()->bounded(20000)));
            while (!moment.hasExpired()) { }
            writer.kill();
            QVERIFY(writer.waitForFinished(deadlineMs));
            const QString value = jsonIn(m_path)[u"count"].toString();
            last = value.section(u':', 0, 0).toLongLong();
            QVERIFY2(last >= said, "a change that was in the file is lost");
            QVERIFY(value == payload(last));
            QCOMPARE(modeOf(m_path), 0600);
        }
        UserDefaults(m_path).set(u"count"_s, u"end"_s);
        QCOMPARE(filesInFolder(), usualFiles);
    }

    void twoProcesses()
    {
        UserDefaults settings(m_path);
        std::array<QProcess, 2> writers;
        start(writers[0], m_path, u"a"_s);
        start(writers[1], m_path, u"b"_s);
        for (int number = 0; number < keysPerWriter; ++number) {
            settings.set(u"own%1"_s.arg(number), payload(number));
            QVERIFY(settings.flush(deadline));
        }
        for (QProcess &writer : writers) {
            QVERIFY(writer.state() == QProcess::NotRunning || writer.waitForFinished(deadlineMs));
            QVERIFY(writer.exitStatus() == QProcess::NormalExit && writer.exitCode() == 0);
        }
        QCOMPARE(jsonIn(m_path).size(), 3 * keysPerWriter);
        for (int number = 0; number < keysPerWriter; ++number) {
            for (const QString &prefix : {u"a"_s, u"b"_s, u"own"_s}) {
                QCOMPARE(settings.string(prefix + QString::number(number)), payload(number));
            }
        }
    }

private:
    QStringList filesInFolder() const { return QDir(inFolder({})).entryList(QDir::Files); }
    QStringList told()
    {
        const QMutexLocker lock(&m_mutex);
        return m_told;
    }

    QString inFolder(const QString &name) const { return m_dir->filePath(u"folder/"_s + name); }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_path;
    QMutex m_mutex;
    QStringList m_told;
};

int main(int argc, char **argv)
{
    settleSignals();
    QCoreApplication application(argc, argv);
    if (argc == 4 && qstrcmp(argv[1], "--write") == 0) {
        return writeSettings(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));
    }
    tst_user_defaults test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_user_defaults.moc"

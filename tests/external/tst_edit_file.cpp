// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ApplicationRecord.h"
#include "external/EditFile.h"
#include "platform/desktop/Bundle.h"
#include "platform/threads/MainQueue.h"
#include "platform/settings/UserDefaults.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QTemporaryDir>
#include <QTest>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

const QStringList edit{u"kubectl"_s, u"edit"_s, u"-n"_s, u"two words"_s, u"deploy"_s, u"a b"_s};
const auto command = u"kubectl edit -n two words deploy a b"_s;
const auto preferredEditor = u"preferredEditor"_s;

} // namespace

class TestEditFile : public QObject
{
    Q_OBJECT
private:
    QTemporaryDir m_folder;
    UserDefaults m_settings{m_folder.filePath(u"settings.json"_s)};
    RecordingConsole m_console;

    /// The outcome of an edit with the fake tool as kubectl, as "output|error", and the console's entries.
    QStringList outcome(const std::shared_ptr<EditFile> &file)
    {
        m_console.entries.clear();
        auto done = std::make_shared<std::promise<ShellResult>>();
        auto result = done->get_future();
        file->runAsync(edit, true, nullptr, [done](const ShellResult &r) { done->set_value(r); });
        if (!arrives(result)) {
            return {u"(still running)"_s};
        }
        QCoreApplication::processEvents();
        const ShellResult got = result.get();
        return QStringList(QString::fromUtf8(got.output) + u'|' + got.error.value_or(u"-"_s))
            + m_console.entries;
    }

private Q_SLOTS:
    void initTestCase()
    {
        mainQueue();
        setMainConsoleLookup([this] { return &m_console; });
        setUserDefaultsForTesting(&m_settings);
    }
    void cleanupTestCase()
    {
        setMainConsoleLookup({});
        setUserDefaultsForTesting(nullptr);
    }
    void init()
    {
        setKubectlPath(fakeToolPath());
        m_settings.set(preferredEditor, u"Kate"_s);
    }

    void onlyKnownEditorsAreRun()
    {
        for (const auto &title : {u"Not Set"_s, u"visual studio code"_s, u"BBEdit"_s, u""_s}) {
            m_settings.set(preferredEditor, title);
            QCOMPARE(EditFile::editorCommand(), std::nullopt);
        }
        m_settings.remove(preferredEditor);
        QCOMPARE(outcome(std::make_shared<EditFile>()), QStringList(u"|No process defined"_s));
    }

    void outcomes_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("result");
        QTest::addColumn<QString>("entry");
        const auto row = [](const QByteArray &script, const QString &result, const QString &entry) {
            QTest::newRow(script.constData()) << script << result << entry;
        };
        row("out \\nedited\\n\\n", u"edited|-"_s, u"|Configuration saved.|"_s);
        row("out edited err warned\\n", u"edited|warned\n"_s, u"|Configuration saved.|warned\n"_s);
        row("err cancelled exit 1", u"|cancelled"_s, u"||cancelled"_s);
        row("exit 0", u"|-"_s, u"||"_s);
        row("out \\xff err \\xff", u"|-"_s, u"||"_s);
        row("die 9", u"|kubectl was ended by signal 9."_s, u"||kubectl was ended by signal 9."_s);
        row("environment EDITOR environment KUBE_EDITOR environment KUBECONFIG",
            bundle::auxiliaryExecutable(u"quiet-editor"_s) + u" kate -b -n(unset)/some/config|-"_s,
            u"|Configuration saved.|"_s);
    }
    void outcomes()
    {
        QFETCH(QByteArray, script);
        const QString record = m_folder.filePath(u"record"_s);
        QFile::remove(record);
        qputenv("KUBE_EDITOR", "vi");
        const auto file = std::make_shared<EditFile>(nullptr, u"/some/config"_s);
        file->environment.insert("FAKE_TOOL_SCRIPT", script.replace(' ', '\n'));
        file->environment.insert("FAKE_TOOL_RECORD", record.toUtf8());
        const QStringList got = outcome(file);
        QFETCH(QString, result);
        QFETCH(QString, entry);
        QCOMPARE(got, QStringList({result, command + u"||"_s, u"Returning: "_s + command + entry}));
        QFile calls(record);
        QVERIFY(calls.open(QIODevice::ReadOnly));
        QVERIFY(
            calls.readAll().startsWith("\"edit\"\n\"-n\"\n\"two words\"\n\"deploy\"\n\"a b\"\nKUBECONFIG="));
    }

    void withoutKubectl()
    {
        setKubectlPath(u"/nowhere/kubectl"_s);
        QVERIFY(outcome(std::make_shared<EditFile>()).value(0).contains(u"/nowhere/kubectl"_s));
        setKubectlPath(QString(200'000, u'x'));
        QCOMPARE(outcome(std::make_shared<EditFile>()),
            QStringList({u"|Unexpected error: Argument list too long."_s, command + u"||"_s}));
        QCOMPARE(EditFile().environment.value("PATH"), "/bin:/usr/bin/:/usr/local/bin");
    }

    void severalAtOnceAndCancelled()
    {
        std::vector<std::shared_ptr<EditFile>> files;
        std::vector<std::future<ShellResult>> results;
        for (int number = 0; number < 5; ++number) {
            files.push_back(std::make_shared<EditFile>(nullptr, QString()));
            files.back()->environment.insert(
                "FAKE_TOOL_SCRIPT", "pidfile\n" + m_folder.path().toUtf8() + "/pids\nhang");
            QVERIFY(QDir(m_folder.path()).mkpath(u"pids"_s));
            results.push_back(
                inBackground([file = files.back()] { return file->run(edit, nullptr); }, editFileQueue()));
        }
        QTRY_COMPARE(pidsIn(m_folder.filePath(u"pids"_s)).size(), 5);
        for (std::size_t number = 0; number < 5; ++number) {
            files[number]->cancel();
            files[number]->cancel();
            QVERIFY(arrives(results[number]));
            QCOMPARE(results[number].get().error, u"The edit was ended together with its window."_s);
        }
        const auto late = std::make_shared<EditFile>(nullptr, QString());
        late->cancel();
        QCOMPARE(outcome(late).first(), u"|Unexpected error: the window was closed."_s);
    }
};

QTEST_MAIN(TestEditFile)
#include "tst_edit_file.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "ActionBench.h"
#include "actions/BashScript.h"
#include "actions/PythonScript.h"
#include "support/Patience.h"
#include "support/Table.h"

#include <QBuffer>

#include <ctime>
#include <sys/stat.h>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

/// "Group(Action,Action(python)),Action"
QString drawn(const std::vector<ActionNode> &nodes)
{
    QStringList texts;
    for (const ActionNode &node : nodes) {
        const bool isPython = node.item && dynamic_cast<PythonScript *>(&node.item->script());
        texts.append(node.title + (node.item ? QString() : u'(' + drawn(node.children) + u')')
            + (isPython ? u"*"_s : QString()));
    }
    return texts.join(u',');
}

QByteArray png(int side, const char *format = "PNG")
{
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, format);
    return bytes;
}

} // namespace

class TestActionFolders : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void configuration_data()
    {
        // json, how the error begins, fields
        const Table<QByteArray, QString, QString> table;
        table.row("scope alone leaves the rest absent", R"({"scope":"pod"})", "", "pod - - - - - -");
        table.row("all keys", R"({"scope":"pod","open_in_terminal":true,"use_name_matching_pattern":"w*",
            "environment_variables":["A","B"],"show_warning_text":"","active_in_contexts":["c"],
            "is_smart_action":false})",
            "", "pod 1 w* A;B  c 0");
        table.row("unknown keys", R"({"scope":"x","more":[1,{}]})", "", "x - - - - - -");
        table.row("null is absent", R"({"scope":"x","show_warning_text":null})", "", "x - - - - - -");
        table.row("no scope", R"({"is_smart_action":true})", "the required \"scope\" is missing", "");
        table.row("boolean as text", R"({"scope":"x","open_in_terminal":"true"})",
            "\"open_in_terminal\" is not true or false", "");
        table.row("array of numbers", R"({"scope":"x","environment_variables":["A",1]})",
            "\"environment_variables\" is not an array of texts", "");
        table.row(
            "deeply nested", R"({"scope":"x","y":)" + QByteArray(500'000, '['), "too deeply nested", "");
        table.row(
            "10 MB", R"({"scope":")" + QByteArray(10 << 20, 'x') + R"("})", "it is larger than 1 MiB", "");
    }
    void configuration()
    {
        const auto [json, error, fields] = Table<QByteArray, QString, QString>::current();
        const ActionBench bench;
        QString printed;
        const auto item = [&] {
            const CapturedOutput output;
            auto made = bench.action(u"act"_s, json, "main.sh", "");
            printed = output.text();
            return made;
        }();
        const QString file = bench.path(u"act/config.json"_s);
        if (error.isEmpty()) {
            const CustomActionConfig &config = item->config();
            const auto flag = [](auto value) { return value ? QString::number(*value) : u"-"_s; };
            const auto list = [](auto value) { return value ? value->join(u';') : u"-"_s; };
            QCOMPARE(
                QStringList({config.scope, flag(config.open_in_terminal),
                                config.use_name_matching_pattern.value_or(u"-"_s),
                                list(config.environment_variables), config.show_warning_text.value_or(u"-"_s),
                                list(config.active_in_contexts), flag(config.is_smart_action)})
                    .join(u' '),
                fields);
            QVERIFY(printed.isEmpty());
            QCOMPARE(item->configProblem().contains(u"nothing: more "_s), json.contains("more"));
        } else {
            QVERIFY(item->config() == CustomActionConfig());
            QVERIFY2(printed.startsWith(u"Error "_s + file + u": "_s + error), qPrintable(printed));
            QVERIFY(item->configProblem().contains(error));
        }
    }

    void walk_data()
    {
        // files ("a -> b" is a link with the text b), tree
        const Table<QStringList, QString> table;
        table.row("upper case before lower",
            QStringList{u"b/main.sh"_s, u"a/main.sh"_s, u"Z/main.sh"_s, u"é x/main.sh"_s}, "Z,a,b,é x");
        table.row("no script, no action",
            QStringList{u"a/config.json"_s, u"a/main.sh~"_s, u"a/main.sh.orig"_s, u"b/Main.sh"_s, u"c/main"_s,
                u"d/main.sh"_s},
            "d");
        table.row("a folder in it makes a group",
            QStringList{u"g/main.sh"_s, u"g/x/main.sh"_s, u"g/empty/note"_s}, "g(x)");
        table.row("underscores count below the top",
            QStringList{u"__top/main.sh"_s, u"g/__pycache__/x"_s, u"g/main.py"_s, u"h/__no/main.sh"_s,
                u"h/_yes/main.sh"_s, u"i/.git/main.sh"_s, u"i/main.sh"_s, u".idea/main.sh"_s},
            "__top,g,h(_yes),i");
        table.row("the same name twice", QStringList{u"a/x/main.sh"_s, u"b/x/main.sh"_s}, "a(x),b(x)");
        table.row(
            "links are followed", QStringList{u"a/main.sh"_s, u"g/x -> ../a"_s, u"l -> g"_s}, "a,g(x),l(x)");
        table.row("loops are not",
            QStringList{u"g/x/main.sh"_s, u"g/self -> ."_s, u"g/x/up -> ../.."_s, u"g/up -> .."_s,
                u"a -> ."_s, u"dangling -> nowhere"_s, u"file"_s},
            "g(x)");
        table.row("python only when asked, and only .py",
            QStringList{u"p/main.py"_s, u"p/smart"_s, u"P/main.PY"_s, u"P/smart"_s, u"q/main.py"_s,
                u"s/main.sh"_s, u"s/smart"_s},
            "P,p*,q,s");
    }
    void walk()
    {
        const auto [files, tree] = Table<QStringList, QString>::current();
        const ActionBench bench;
        for (const QString &file : std::as_const(files)) {
            const QStringList link = file.split(u" -> "_s);
            const QString target = bench.path(u"Tidewright/Actions/"_s + link.first());
            QDir().mkpath(QFileInfo(target).path());
            if (link.size() > 1) {
                QVERIFY(QFile::link(link.last(), target));
            } else if (file.endsWith(u"/smart")) {
                bench.write(u"Tidewright/Actions/"_s + file.chopped(5) + u"config.json"_s,
                    R"({"scope":"pod","is_smart_action":true})");
            } else {
                bench.write(u"Tidewright/Actions/"_s + file, "");
            }
        }
        SharedActionTree loaded;
        QObject receiver;
        loadActionsInBackground(&receiver, [&loaded](const auto &result) { loaded = result; });
        QTRY_VERIFY(loaded);
        QCOMPARE(drawn(loaded->nodes), tree);
        QVERIFY2(loaded->problems.isEmpty(), qPrintable(loaded->problems.join(u'\n')));
    }

    void wholeDiskBehindALink()
    {
        const ActionBench bench;
        bench.write(u"a/main.sh"_s, "");
        for (int i = 0; i < 13; ++i) { // each level leads twice to the next: 2^13 folders
            for (const char *side : {"l", "r"}) {
                const QString level = bench.path(u"levels/%1"_s.arg(i));
                QDir().mkpath(level);
                QVERIFY(QFile::link(u"../%1"_s.arg(i + 1), level + u'/' + QLatin1String(side)));
            }
        }
        QDir().mkpath(bench.path(u"levels/13"_s));
        const ActionTree tree = loadActionFolders({bench.path(u"a"_s), bench.path(u"levels/0"_s)});
        QCOMPARE(tree.nodes.back().title, u"a"_s);
        QCOMPARE(tree.problems.size(), 1);
        QVERIFY(tree.problems.first().contains(u"too many action folders"_s));
    }

    void images_data()
    {
        // file, side (0: the standard image)
        const Table<QByteArray, int> table;
        table.row("an image", png(64), 64);
        table.row("large", png(512), 512);
        table.row("none", QByteArray(), 0);
        table.row("cut off", png(64).left(40), 0);
        table.row("huge", png(3000), 0);
        table.row("another format", png(64, "BMP"), 0);
    }
    void images()
    {
        const auto [file, side] = Table<QByteArray, int>::current();
        const ActionBench bench;
        if (!file.isEmpty()) {
            bench.write(u"act/icon.png"_s, file);
            bench.write(u"act/menu.png"_s, file);
        }
        const auto item = bench.action(u"act"_s, "", "main.sh", "");
        const QColor corner = item->icon().pixmap(64).toImage().pixelColor(1, 1);
        QCOMPARE(corner == QColor(Qt::red), side != 0);
        QCOMPARE(item->menuIcon().pixmap(16).toImage().pixelColor(8, 1) == QColor(Qt::red), side != 0);
        const auto kept = [](const QIcon &icon) { return icon.availableSizes().value(0); }; // in pixels
        QCOMPARE(kept(item->menuIcon()), side != 0 ? QSize(32, 32) : QSize());
        const int pixels = std::min(side, 32); // sharp at 200 %, and no more than that is kept
        QCOMPARE(kept(item->icon()), side != 0 ? QSize(pixels, pixels) : QSize());
        QVERIFY(!item->icon().pixmap(32).isNull());
    }

    void firstUse()
    {
        const ActionBench bench;
        QStringList told;
        const auto folder = actionsFolderURL([&told](const QString &made) { told.append(made); });
        QCOMPARE(folder, std::optional(bench.path(u"Tidewright/Actions"_s)));
        QCOMPARE(told, QStringList{*folder});
        actionsFolderURL([&told](const QString &made) { told.append(made); });
        QCOMPARE(told.size(), 1);
        installStarterKit(*folder);
        struct stat script = {};
        const QString path = *folder + u"/Starter Kit/Pods/Describe Pod/main.sh"_s;
        QCOMPARE(::stat(QFile::encodeName(path).constData(), &script), 0);
        QCOMPARE(script.st_mode & 0700, 0700U);
        QString printed;
        {
            const CapturedOutput output;
            installStarterKit(bench.path(u"nowhere/at/all"_s));
            printed = output.text();
        }
        QVERIFY2(printed.startsWith(u"Error creating starter kit"_s), qPrintable(printed));
    }

    void noFolderToBeHad()
    {
        const ActionBench bench;
        bench.write(u"Tidewright"_s, "a file where the folder should be");
        bool called = false;
        QVERIFY(!actionsFolderURL([&called](const QString &) { called = true; }));
        QVERIFY(!called);
        bool loaded = false;
        QObject receiver;
        loadActionsInBackground(&receiver, [&loaded](const auto &tree) { loaded = !tree; });
        QTRY_VERIFY(loaded);
    }

    void foldersAreReadBesideTheMainThread()
    {
        const ActionBench bench;
        const QByteArray image = png(64);
        for (int i = 0; i < 300; ++i) {
            bench.write(u"Tidewright/Actions/%1/main.sh"_s.arg(i), "");
            bench.write(u"Tidewright/Actions/%1/icon.png"_s.arg(i), image);
        }
        const double before = threadTime();
        const std::clock_t all = std::clock();
        SharedActionTree loaded;
        QObject receiver;
        loadActionsInBackground(&receiver, [&loaded](const auto &tree) { loaded = tree; });
        QTRY_VERIFY(loaded);
        QCOMPARE(loaded->nodes.size(), 300U);
        const double spent = double(std::clock() - all) * 1e3 / CLOCKS_PER_SEC;
        QVERIFY2(threadTime() - before < spent / 2, qPrintable(QString::number(spent)));
    }

    void readAgainOnlyWhenChanged()
    {
        const ActionBench bench;
        const QString folder = u"Tidewright/Actions/g/a/"_s;
        SharedActionTree known;
        QObject receiver;
        const auto isSame = [&] {
            SharedActionTree loaded;
            loadActionsInBackground(
                &receiver, [&](const auto &tree) { loaded = tree; }, known);
            [&] { QTRY_VERIFY(loaded); }();
            return std::exchange(known, loaded) == loaded;
        };
        bench.write(folder + u"main.sh"_s, "");
        QVERIFY(!isSame());
        QVERIFY(isSame());
        for (const char *file : {"config.json", "config.json", "icon.png", "menu.png"}) {
            bench.write(folder + QLatin1String(file), bench.read(folder + QLatin1String(file)) + ' ');
            QVERIFY(!isSame());
            QVERIFY(isSame());
        }
        bench.write(u"Tidewright/Actions/g/b/main.sh"_s, "");
        QVERIFY(!isSame());
        QVERIFY(bench.remove(folder + u"main.sh"_s));
        QVERIFY(!isSame());
        QCOMPARE(drawn(known->nodes), u"g(b)"_s);
    }
};

QTEST_MAIN(TestActionFolders)
#include "tst_action_folders.moc"

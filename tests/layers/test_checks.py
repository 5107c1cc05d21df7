# SPDX-License-Identifier: GPL-3.0-or-later
"""test_checks.py CHECKS-FOLDER QT-INCLUDE-FOLDER: plants faults and looks whether the checks find them."""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECKS, QT_FOLDER = sys.argv[1:3]
SOUND_LAYERS = {
    "platform/Low.h": "#include <QString>\n#include <QtDBus/QDBusConnection>\n#include <unistd.h>\n",
    "core/Middle.h": '#include "platform/Low.h"\n#include <QDBusMessage>\n',
    "pods/Table.h": '#include "core/Middle.h"\n#include <QWidget>\n',
    "external/Editor.h": '#include "core/Middle.h"\n',
    "resources/kinds/Row.h": "#include <QColor>\n",
    "resources/table/View.h": '#include "resources/kinds/Row.h"\n#include <QTableView>\n',
    "app/Window.cpp": '#include "pods/Table.h"\n#include "external/Editor.h"\n#include "Window.moc"\n',
}
# What is planted where, and how the fault is reported.
LAYER_FAULTS = [
    ("platform/Low.h", '#include "core/Middle.h"', "platform/Low.h:1: platform may not include core"),
    ("core/Middle.h", '#include "pods/Table.h"', "core/Middle.h:1: core may not include pods"),
    ("pods/Table.h", '#include "external/Editor.h"', "pods/Table.h:1: pods may not include external"),
    ("pods/Table.h", '#  include "app/Window.h"', 'pods/Table.h:1: "app/Window.h" is not of the form "layer/File.h"'),
    ("core/Middle.h", "#include <QWidget>", "core/Middle.h:1: core may not include <QWidget> of QtWidgets"),
    ("core/Middle.h", "#include <QIcon>", "core/Middle.h:1: core may not include <QIcon> of QtGui"),
    ("platform/Low.h", "#include <qicon.h>", "platform/Low.h:1: platform may not include <qicon.h> of QtGui"),
    ("platform/Low.h", "#include <QtGui/QColor>", "platform/Low.h:1: platform may not include <QtGui/QColor> of QtGui"),
    ("platform/Low.h", "#include <QtWidgets>", "platform/Low.h:1: platform may not include <QtWidgets> of QtWidgets"),
    ("platform/Low.h", "#include <QTcpSocket>", "platform/Low.h:1: platform may not include <QTcpSocket> of QtNetwork"),
    ("core/Middle.h", "#include <platform/Low.h>", "core/Middle.h:1: <platform/Low.h> belongs in quotes"),
    ("app/Window.cpp", '#include "Table.h"', 'app/Window.cpp:1: "Table.h" is not of the form "layer/File.h"'),
    ("app/Window.cpp", '#include "../pods/Table.h"', 'app/Window.cpp:1: "../pods/Table.h" is not of the form'),
    ("core/Middle.h", '#include "core/Middle.h"', "include cycle: core/Middle.h > core/Middle.h"),
    ("platform/Low.h", '#include "platform/Loop.h"', "include cycle: platform/Low.h > platform/Loop.h > platform/Low.h"),
    ("resources/kinds/Row.h", '#include "resources/table/Other.h"',
     "cycle of rooms: resources/kinds > resources/table > resources/kinds"),
    ("resources/kinds/Row.h", "#include <QLabel>", "resources/kinds/Row.h:1: resources/kinds may not include <QLabel>"),
    ("util/Stray.h", "", "util/Stray.h:1: util is no layer"),
]
SOUND_TIPS = """
button->setToolTip(tr("Stop (Esc), \\"now\\""));
button->setToolTip(QStringLiteral("Two "
                                  "pieces"));
button->setToolTip({});
bar->setTabToolTip(f(1, 2), display_text::toolTip(a.isEmpty() ? b : c(d))); // setToolTip(name)
QToolTip::showText(event->globalPos(), display_text::toolTip(name), view);
menu->setToolTipsVisible(true);
setWindowTitle(display_text::name(tr("%1 of %2").arg(key, secret)));
auto *label = new QLabel(name);
label->setTextFormat(Qt::PlainText);
layout->addWidget(new QLabel(tr("No text")));
"""
TIP_FAULTS = ["button->setToolTip(name);", 'button->setToolTip(tr("Scale %1").arg(name));', "setToolTip(a ? b : {});",
          "bar->setTabToolTip(1, name);", "QToolTip::showText(\nposition, text, view);", "case Qt::ToolTipRole:",
          'setToolTip("a" + name);', 'setToolTip(display_text::toolTip(a) + tr("b"));',
          "setToolTip(display_text::toolTip(a) + name + f(b));", "setWindowTitle(name);",
          "setWindowTitle(display_text::name(a) + b);", "layout->addWidget(new QLabel(name));",
          "auto *other = new QLabel(tr(\"%1\").arg(name));"]


def check(script, files, *folders):
    with tempfile.TemporaryDirectory() as root:
        for name, text in files.items():
            path = Path(root, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        run = subprocess.run([sys.executable, Path(CHECKS, script), root, *folders], capture_output=True, text=True)
        return run.returncode, run.stdout.splitlines()


def check_layers(files, qt_folder=QT_FOLDER):
    return check("check-layers.py", files, qt_folder)


def check_tool_tips(text):
    return check("check-tool-tips.py", {"File.cpp": text} if text else {})


class Checks(unittest.TestCase):
    def test_sound_sources_pass(self):
        self.assertEqual(check_layers(SOUND_LAYERS), (0, [f"{len(SOUND_LAYERS)} files, no fault"]))
        self.assertEqual(check_tool_tips(SOUND_TIPS), (0, ["1 files, no fault"]))

    def test_layer_faults_are_found(self):
        for file, line, fault in LAYER_FAULTS:
            with self.subTest(fault):
                files = SOUND_LAYERS | {"platform/Loop.h": '#include "platform/Low.h"\n', "resources/table/Other.h": ""}
                files[file] = line + "\n" + files.get(file, "")
                code, faults = check_layers(files)
                self.assertEqual(code, 1)
                self.assertTrue(any(found.startswith(fault) for found in faults), faults)

    def test_tool_tip_faults_are_found(self):
        for fault in TIP_FAULTS:
            with self.subTest(fault):
                code, found = check_tool_tips(SOUND_TIPS + fault)
                self.assertEqual((code, len(found)), (1, 1))
                self.assertTrue(found[0].startswith(f"File.cpp:{SOUND_TIPS.count(chr(10)) + 1}: "), found)

    def test_looking_at_nothing_is_no_success(self):
        self.assertEqual(check_layers({})[0], 2)
        self.assertEqual(check_layers(SOUND_LAYERS, "/nowhere")[0], 2)
        self.assertEqual(check_tool_tips("")[0], 2)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])

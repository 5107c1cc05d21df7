# SPDX-License-Identifier: GPL-3.0-or-later
"""test_check_tool_tips.py CHECK-TOOL-TIPS: plants faults and looks whether the check finds them."""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECK = sys.argv[1]
SOUND = """
button->setToolTip(tr("Stop (Esc), \\"now\\""));
button->setToolTip(QStringLiteral("Two "
                                  "pieces"));
button->setToolTip({});
bar->setTabToolTip(f(1, 2), display_text::toolTip(a.isEmpty() ? b : c(d))); // setToolTip(name)
QToolTip::showText(event->globalPos(), display_text::toolTip(name), view);
menu->setToolTipsVisible(true);
"""
FAULTS = ["button->setToolTip(name);", 'button->setToolTip(tr("Scale %1").arg(name));', "setToolTip(a ? b : {});",
          "bar->setTabToolTip(1, name);", "QToolTip::showText(\nposition, text, view);", "case Qt::ToolTipRole:",
          'setToolTip("a" + name);', 'setToolTip(display_text::toolTip(a) + tr("b"));',
          "setToolTip(display_text::toolTip(a) + name + f(b));"]


def check(text):
    with tempfile.TemporaryDirectory() as root:
        if text:
            Path(root, "File.cpp").write_text(text)
        run = subprocess.run([sys.executable, CHECK, root], capture_output=True, text=True)
        return run.returncode, run.stdout.splitlines()


class CheckToolTips(unittest.TestCase):
    def test_sound_sources_pass(self):
        self.assertEqual(check(SOUND), (0, ["1 files, no fault"]))

    def test_planted_faults_are_found(self):
        for fault in FAULTS:
            with self.subTest(fault):
                code, found = check(SOUND + fault)
                self.assertEqual((code, len(found)), (1, 1))
                self.assertTrue(found[0].startswith(f"File.cpp:{SOUND.count(chr(10)) + 1}: "), found)

    def test_looking_at_nothing_is_no_success(self):
        self.assertEqual(check("")[0], 2)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])

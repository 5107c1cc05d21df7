#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""check-tool-tips.py SOURCE-FOLDER

A tool tip takes a text for mark-up when it looks like some, and many texts hold names from a cluster. So what every
.h and .cpp file below SOURCE-FOLDER gives to setToolTip, setTabToolTip or QToolTip::showText must be a literal, tr()
of a literal, or display_text::toolTip(...); a model has no tool tips. What setWindowTitle gets is one of these or
display_text::name(...) or clean(...). A label, which guesses too, is made with a literal or is told in the same file that
its text is plain. Prints one line per fault.

Ends with 0 when there is no fault, 1 when there are some, 2 when there was nothing to look at.
"""
import re
import sys
from pathlib import Path

TOKEN = re.compile(r'"(?:[^"\\\n]|\\.)*"|\'(?:[^\'\\\n]|\\.)+\'|//[^\n]*|/\*.*?\*/|.', re.S)
CALL = re.compile(r"\b(?:set(?:Tab)?ToolTip|QToolTip::showText|setWindowTitle)\s*\(|\bToolTipRole\b")
LABEL = re.compile(r"(?:(?P<variable>\w+)\s*(?:=\s*|\())?\bnew QLabel\s*\(")
# Which of a call's arguments is the text.
PLACE = {"setToolTip": 0, "setTabToolTip": 1, "QToolTip::showText": 1, "setWindowTitle": 0}
TITLE = re.compile(r"display_text::(?:name|clean)\((?P<inner>.*)\)", re.S)
LITERAL = r'(?:"S"\s*)+'
SAFE = re.compile(
    rf"(?:{LITERAL}|(?:\w+::)?tr\(\s*{LITERAL}\)|QStringLiteral\(\s*{LITERAL}\)|QString\(\)|\{{\}}"
    r"|display_text::toolTip\((?P<inner>.*)\))", re.S)


def bare(text):
    """The text without comments and with every literal as long as before, but empty of meaning."""
    def emptied(match):
        token = match[0]
        if token[:2] in ("//", "/*"):
            return re.sub(r"[^\n]", " ", token)
        return token[0] + "_" * (len(token) - 2) + token[0] if token[0] in "\"'" and len(token) > 1 else token

    return TOKEN.sub(emptied, text)


def arguments(text, start):
    """The arguments of a call whose opening bracket stands before `start`."""
    depth, begin, found = 0, start, []
    for at in range(start, len(text)):
        if text[at] in "([{":
            depth += 1
        elif depth == 0 and text[at] in "),":
            found.append(text[begin:at].strip())
            begin = at + 1
            if text[at] == ")":
                break
        elif text[at] in ")]}":
            depth -= 1
    return found


def closes_at_its_end(inner):
    depth = 0
    for character in inner:
        depth += {"(": 1, ")": -1}.get(character, 0)
        if depth < 0:
            return False
    return True


def is_safe(argument, other_door=None):
    argument = re.sub(r'"_*"', '"S"', argument)
    match = SAFE.fullmatch(argument) or (other_door and other_door.fullmatch(argument))
    return bool(match) and closes_at_its_end(match["inner"] or "")


def label_faults(text):
    for match in LABEL.finditer(text):
        given = arguments(text, match.end())
        plain = match["variable"] and re.search(
            rf"\b{match['variable']}->setTextFormat\(Qt::PlainText\)", text)
        if given and given[0] and not is_safe(given[0]) and not plain:
            yield text.count("\n", 0, match.start()) + 1, "a label with a text from elsewhere is told that it is plain"


def faults(path):
    text = bare(path.read_text(encoding="utf-8"))
    for match in CALL.finditer(text):
        line = text.count("\n", 0, match.start()) + 1
        name = match[0].rstrip("( \n")
        given = arguments(text, match.end()) if name in PLACE else []
        if name not in PLACE:
            yield line, "a model gives texts, their views the tool tips"
        elif len(given) <= PLACE[name] or not is_safe(given[PLACE[name]], TITLE if name == "setWindowTitle" else None):
            yield line, f"the text of {name} goes through display_text"
    yield from label_faults(text)


def main(root):
    files = sorted(p for p in root.rglob("*") if p.suffix in (".h", ".cpp"))
    if not files:
        print(f"no sources in {root}", file=sys.stderr)
        return 2
    found = [f"{path.relative_to(root)}:{line}: {fault}" for path in files for line, fault in faults(path)]
    print("\n".join(found) or f"{len(files)} files, no fault")
    return 1 if found else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(Path(sys.argv[1])))

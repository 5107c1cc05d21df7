#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""check-layers.py SOURCE-FOLDER QT-INCLUDE-FOLDER

Checks the includes of every .h and .cpp file below SOURCE-FOLDER and prints one line per fault:

- a folder includes only itself and the folders below it;
- inside a layer, no chain of includes leads out of a room (a sub-folder; the files beside the sub-folders are one
  too) and back into it;
- an include in quotes is of the form "layer/File.h" or "layer/room/File.h" and names a file that is there; a layer's
  header is never included with angle brackets;
- platform, core and the demo cluster include no header of a Qt module other than QtCore and QtDBus, by whatever spelling; the rooms
  that draw nothing include none of QtWidgets;
- no chain of includes comes back to the file where it began.

Ends with 0 when there is no fault, 1 when there are some, 2 when it could not look.
"""
import re
import sys
from pathlib import Path

# A layer may include the layers of a smaller rank. Two of the same rank do not know each other.
RANKS = {"platform": 0, "core": 1, "resources": 2, "external": 3, "pods": 3, "actions": 4, "app": 5}
# Those of the demo cluster.
DEMO_RANKS = {"base": 0, "store": 1, "schema": 2, "objects": 2, "movement": 3, "logs": 3, "api": 4, "changes": 5,
    "server": 6}
WINDOWLESS = {"platform", "core"}
WINDOWLESS_MODULES = {"QtCore", "QtDBus"}
NO_WIDGETS = {
    "resources/kinds", "resources/listing", "resources/decoding", "resources/live", "resources/loading",
    "resources/printing", "resources/story", "resources/usage", "pods/logs/store", "pods/logs/streams", "pods/logs/text"}
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')
GENERATED = re.compile(r"^(moc_\w+\.cpp|\w+\.moc)$")


def includes(path):
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if match := INCLUDE.match(line):
            yield number, match[1] == '"', match[2]


def other_modules_headers(qt_folder):
    """Header name, with and without its module, to module: those that a layer without windows may not include."""
    headers = {"by module": {}, "allowed": set()}
    for module in sorted(p for p in qt_folder.iterdir() if p.is_dir()):
        for header in module.iterdir():
            if module.name in WINDOWLESS_MODULES:
                headers["allowed"].add(header.name)
            else:
                headers["by module"].setdefault(header.name, module.name)
    return {name: module for name, module in headers["by module"].items() if name not in headers["allowed"]}


def include_faults(root, path, qt_headers):
    layer = path.relative_to(root).parts[0]
    ranks = DEMO_RANKS if root.name == "demo" else RANKS
    if layer not in ranks:
        yield 1, f"{layer} is no layer"
        return
    for number, quoted, name in includes(path):
        first = name.split("/")[0]
        if quoted and GENERATED.match(name):
            continue
        if first in ranks and not quoted:
            yield number, f"<{name}> belongs in quotes"
        elif quoted and (first not in ranks or not (root / name).is_file()):
            yield number, f'"{name}" is not of the form "layer/File.h"'
        elif quoted and first != layer and ranks[first] >= ranks[layer]:
            yield number, f"{layer} may not include {first}"
        elif not quoted and (layer in WINDOWLESS or ranks is DEMO_RANKS):
            module = first if first.startswith("Qt") and "/" in name else qt_headers.get(name)
            if module and module not in WINDOWLESS_MODULES:
                yield number, f"{layer} may not include <{name}> of {module}"
        elif not quoted and room_of(str(path.relative_to(root))) in NO_WIDGETS:
            if name.startswith("QtWidgets") or qt_headers.get(name) == "QtWidgets":
                yield number, f"{path.relative_to(root).parent} may not include <{name}> of QtWidgets"


def room_of(file):
    return str(Path(file).parent)


def room_graph(graph):
    """Which room includes which other room of its layer."""
    rooms = {}
    for file, targets in graph.items():
        room = room_of(file)
        rooms.setdefault(room, set()).update(
            room_of(target) for target in targets if target.split("/")[0] == file.split("/")[0])
    return {room: sorted(targets - {room}) for room, targets in rooms.items()}


def cycles(graph):
    """Each file or room that lies on a chain which comes back to it, reported once per chain."""
    done, on_path = set(), []

    def visit(file):
        if file in on_path:
            yield on_path[on_path.index(file):] + [file]
        elif file not in done:
            on_path.append(file)
            for target in graph.get(file, ()):
                yield from visit(target)
            on_path.pop()
            done.add(file)

    for file in graph:
        yield from visit(file)


def main(root, qt_folder):
    files = sorted(p for p in root.rglob("*") if p.suffix in (".h", ".cpp"))
    qt_headers = other_modules_headers(qt_folder) if qt_folder.is_dir() else {}
    if not files or "QWidget" not in qt_headers:
        print(f"no sources in {root}, or no Qt headers in {qt_folder}", file=sys.stderr)
        return 2
    faults = [
        f"{path.relative_to(root)}:{number}: {fault}"
        for path in files
        for number, fault in include_faults(root, path, qt_headers)
    ]
    graph = {
        str(path.relative_to(root)): [name for _, quoted, name in includes(path) if quoted] for path in files
    }
    faults += ["include cycle: " + " > ".join(cycle) for cycle in cycles(graph)]
    faults += ["cycle of rooms: " + " > ".join(cycle) for cycle in cycles(room_graph(graph))]
    print("\n".join(faults) or f"{len(files)} files, no fault")
    return 1 if faults else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(Path(sys.argv[1]), Path(sys.argv[2])))

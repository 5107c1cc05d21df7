#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""wait-for-rows.py TABLE SECONDS: waits until Tidewright shows rows in the table of that accessible name."""
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402


def find(node, name, depth=0):
    if node is None or depth > 25:
        return None
    if node.get_name() == name and node.get_role() in (Atspi.Role.TABLE, Atspi.Role.TREE_TABLE):
        return node
    for i in range(min(node.get_child_count(), 60)):
        found = find(node.get_child_at_index(i), name, depth + 1)
        if found:
            return found
    return None


def rows(name):
    desktop = Atspi.get_desktop(0)
    for i in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(i)
        try:
            if application and "tidewright" in (application.get_name() or "").lower():
                table = find(application, name)
                if table:
                    return table.get_table_iface().get_n_rows()
        except GLib.Error:
            pass  # the window is still being built
    return 0


def main():
    name, limit = sys.argv[1], float(sys.argv[2])
    deadline = time.monotonic() + limit
    while time.monotonic() < deadline:
        if rows(name) > 0:
            return 0
        time.sleep(0.2)
    print(f"no rows in table {name} within {limit:.0f} s", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""check-hardening.py PROGRAM...

Asks readelf whether the programs were built as they should be, and names what is missing. Of a program that calls
nothing that FORTIFY always checks, the rest is asked for.
"""
import re
import subprocess
import sys

FORTIFIABLE = re.compile(r"\bv?[fs]?n?printf@")


def missing(program):
    def tell(option):
        return subprocess.run(["readelf", "--wide", option, program], check=True, capture_output=True, text=True).stdout

    header, segments, dynamic, symbols = (tell(option) for option in
                                          ("--file-header", "--segments", "--dynamic", "--dyn-syms"))
    if not re.search(r"Type:\s+DYN", header) or not re.search(r"FLAGS_1.*\bPIE\b", dynamic):
        yield "position independence"
    if "GNU_RELRO" not in segments:
        yield "RELRO"
    if not re.search(r"\(FLAGS(_1)?\).*\b(BIND_)?NOW\b", dynamic):
        yield "BIND_NOW"
    if re.search(r"GNU_STACK.*RWE", segments):
        yield "a stack that is not executable"
    if "__stack_chk_fail" not in symbols:
        yield "the stack protector"
    if FORTIFIABLE.search(symbols) and not re.search(r"_chk@", symbols.replace("__stack_chk_fail", "")):
        yield "FORTIFY_SOURCE"
    if re.search(r"\((RPATH|RUNPATH)\)", dynamic):
        yield "freedom from search paths (RPATH)"


def main():
    faults = [f"{program}: {what} is missing" for program in sys.argv[1:] for what in missing(program)]
    print("\n".join(faults) or f"{len(sys.argv) - 1} programs are hardened")
    return 1 if faults or len(sys.argv) < 2 else 0


if __name__ == "__main__":
    sys.exit(main())

#!/bin/sh
# Runs the user's editor for `kubectl edit`: quiet-editor PROGRAM [ARGUMENT...]
# What the editor prints would count as kubectl's word on the edit, for both have the same output. Of an editor that
# failed the beginning of its complaints is passed on.
if ! command -v "$1" >/dev/null 2>&1; then
    echo "The editor $1 is not installed." >&2
    exit 127
fi
complaints=$(mktemp) || exec "$@" >/dev/null 2>&1
exec 3>"$complaints" 4<"$complaints"
rm -f "$complaints"
"$@" >/dev/null 2>&3 3>&- 4<&-
status=$?
[ "$status" -eq 0 ] || head -c 4096 <&4 >&2
exit "$status"

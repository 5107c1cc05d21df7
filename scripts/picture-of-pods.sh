#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# The part of screenshot.sh that needs the session bus: PROGRAM IMAGE.png
set -euo pipefail
if [[ ${PALETTE:-light} == dark ]]; then
    # The palette of a desktop with a dark colour scheme, the way Qt reads it there.
    export XDG_CURRENT_DESKTOP=KDE KDE_FULL_SESSION=true KDE_SESSION_VERSION=5
    mkdir -p "$XDG_CONFIG_HOME"
    cp "$(dirname "$0")/dark.colors" "$XDG_CONFIG_HOME/kdeglobals"
fi
"$1" &
program=$!
trap 'kill $program 2>/dev/null || true; wait 2>/dev/null || true' EXIT
/usr/bin/python3 "$(dirname "$0")/wait-for-rows.py" Pods 60
sleep 1 # the last rows and buttons are painted
window=$(xdotool search --onlyvisible --pid "$program" | tail -n 1)
import -window "$window" "$2"

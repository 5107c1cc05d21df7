#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# The part of screenshot.sh that needs the session bus: PROGRAM IMAGE.png
set -euo pipefail
arguments=()
if [[ ${PALETTE:-light} == dark ]]; then
    export QT_QPA_PLATFORMTHEME=gtk3 GTK_THEME=Adwaita:dark
fi
"$1" "${arguments[@]}" &
program=$!
trap 'kill $program 2>/dev/null || true; wait 2>/dev/null || true' EXIT
/usr/bin/python3 "$(dirname "$0")/wait-for-rows.py" Pods 60
sleep 1 # the last rows and buttons are painted
window=$(xdotool search --onlyvisible --pid "$program" | tail -n 1)
import -window "$window" "$2"

#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# screenshot.sh PROGRAM IMAGE.png
# Runs PROGRAM on a virtual display, waits until it lists pods, writes a picture of its window, and ends it.
# PALETTE=dark shows the dark palette, SCALE=2 doubles the size of everything.
set -euo pipefail
cd "$(dirname "$0")/.."

program=$1
image=$2
work=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; wait 2>/dev/null || true; rm -rf "$work"' EXIT

scale=${SCALE:-1}
Xvfb -displayfd 3 -screen 0 "$((1360 * scale))x$((860 * scale))x24" -nolisten tcp 3>"$work/display" 2>"$work/xvfb.log" &
for _ in $(seq 100); do
    [[ -s $work/display ]] && break
    sleep 0.1
done
[[ -s $work/display ]] || { cat "$work/xvfb.log" >&2; exit 1; }
DISPLAY=:$(cat "$work/display")
export DISPLAY
unset WAYLAND_DISPLAY
export QT_QPA_PLATFORM=xcb QT_SCALE_FACTOR=$scale QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
openbox >/dev/null 2>&1 &

export XDG_CONFIG_HOME=${XDG_CONFIG_HOME:-$work/config} XDG_RUNTIME_DIR=$work
chmod 700 "$work"
mkdir -p "$(dirname "$image")"
# A session bus of its own: the screen is read the way a screen reader reads it.
dbus-run-session -- scripts/picture-of-pods.sh "$program" "$image"
echo "$(realpath "$image")"

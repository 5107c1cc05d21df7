#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Draws the icons of the starter kit's actions: icon.png (64x64) on a coloured tile, menu.png (32x32) without one.
set -euo pipefail
cd "$(dirname "$0")/../packaging/share/Starter Kit"

# draw ACTION COLOUR MVG-COMMANDS, on a field of 64 by 64
draw() {
    local line="fill none stroke-width 4 stroke-linecap round stroke-linejoin round"
    convert -size 64x64 xc:none -fill "$2" -draw 'roundrectangle 3,3 60,60 12,12' \
        -draw "stroke white $line $3" -strip "PNG32:$1/icon.png"
    convert -size 64x64 xc:none -draw "stroke $2 $line $3" -resize 32x32 -strip "PNG32:$1/menu.png"
}

draw "Pods/Describe Pod" '#2874a6' "path 'M16,18 L48,18 M16,28 L48,28 M16,38 L40,38 M16,48 L32,48'"
draw "Pods/Previous Logs" '#7a6a5d' "path 'M20,16 L12,24 L20,32 M12,24 L40,24 A12,12 0 0,1 40,48 L20,48'"
draw "Pods/Shell in Container" '#3d6b8f' "path 'M16,20 L28,32 L16,44 M34,46 L48,46'"
draw "Services/Forward Port" '#117a65' "path 'M12,32 L46,32 M36,22 L46,32 L36,42 M52,16 L52,48'"
draw "Deployments/Restart Deployment" '#b9770e' "path 'M48,32 A16,16 0 1,1 42,20 M44,10 L44,21 L33,21'"
draw "Deployments/Roll Back Deployment" '#a04000' "path 'M16,32 A16,16 0 1,0 22,20 M20,10 L20,21 L31,21'"
draw "Secrets/Decode Secret" '#6c3483' "circle 24,38 24,28 path 'M31,31 L48,14 M42,20 L49,27'"
draw "Namespace/Summarise Events" '#2e7d4f' "path 'M14,48 L14,34 M26,48 L26,20 M38,48 L38,28 M50,48 L50,14'"
draw "Python/Scale by Pattern" '#1f618d' "path 'M14,50 L14,40 L24,40 L24,50 Z M30,50 L30,28 L50,28 L50,50 Z M38,20 L46,12 M39,12 L46,12 L46,19'"
draw "Python/Restart and Watch" '#7d6608' "path 'M10,32 Q32,10 54,32 Q32,54 10,32 Z' circle 32,32 32,25"
draw "Python/Notify When Rolled Out" '#943126' "path 'M16,44 L48,44 L44,38 L44,28 A12,12 0 0,0 20,28 L20,38 Z M28,51 L36,51'"

#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the Debian packages that building, running and testing need and that are not there yet.
set -euo pipefail

packages=(
    g++ cmake ninja-build pkg-config
    qt6-base-dev qt6-base-dev-tools qt6-svg-dev libqt6svg6 libgl-dev
    libicu-dev
    libxcb1-dev                                                 # which desktop a window is on
    libsimdjson-dev                                             # objects as the API server sends them
    libyaml-cpp-dev                                             # objects as kubectl prints them for a preview
    libglib2.0-dev                                              # desktop entries, handlers of URL schemes
    pybind11-dev libpython3-dev                                 # Python actions
    libcpp-httplib-dev nlohmann-json3-dev libssl-dev zlib1g-dev # the demo cluster
    libbenchmark-dev mawk                                       # benchmarks
    fonts-dejavu-core fonts-powerline                           # text and console glyphs
    xvfb xauth x11-utils xdotool imagemagick openbox            # a display where there is none, and its pictures
    dbus dbus-x11 at-spi2-core python3-pyatspi gir1.2-atspi-2.0 # tests that read the screen as a screen reader does
    python3
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$package")
    fi
done
# Any kubectl will do; Debian's is installed where there is none. (It cannot stand beside some vendors' packages.)
if ! command -v kubectl >/dev/null 2>&1; then
    missing+=(kubernetes-client)
fi

if ((${#missing[@]} == 0)); then
    exit 0
fi
echo "Installing: ${missing[*]}"
as_root=()
if (($(id -u) != 0)); then
    as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null

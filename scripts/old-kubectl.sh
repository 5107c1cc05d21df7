#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Prints the path of Debian's kubectl, for the tests that run an old client beside the packaged one. Its package cannot be
# installed beside other packages of kubectl, so it is unpacked into build/.
set -euo pipefail
cd "$(dirname "$0")/.."

folder=build/kubectl-debian
client=$PWD/$folder/usr/bin/kubectl
if [[ ! -x $client ]]; then
    mkdir -p "$folder"
    if ! (cd "$folder" && apt-get download -qq kubernetes-client) >&2; then
        as_root=()
        if (($(id -u) != 0)); then
            as_root=(sudo)
        fi
        "${as_root[@]}" apt-get update -qq >&2
        (cd "$folder" && apt-get download -qq kubernetes-client) >&2
    fi
    dpkg -x "$folder"/kubernetes-client_*.deb "$folder" >&2
fi
echo "$client"

#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Opens the built program on the user's kubeconfig, or on the demo cluster when there is none or with --demo. Further
# arguments go to the demo cluster (such as --pods 30000). Without a display, opens it on a virtual one, waits until pods
# are listed, writes a screenshot, prints its path and ends.
set -euo pipefail
cd "$(dirname "$0")/.."

program=build/package/bin/tidewright
demo_cluster=build/release/bin/tidewright-demo-cluster
work=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null; wait 2>/dev/null; rm -rf "$work"' EXIT

has_kubeconfig() {
    local path
    IFS=: read -ra paths <<<"${KUBECONFIG:-$HOME/.kube/config}"
    for path in "${paths[@]}"; do
        [[ -s $path ]] && return 0
    done
    return 1
}

start_demo_cluster() {
    mkfifo "$work/ready"
    "$demo_cluster" --kubeconfig "$work/kubeconfig" "$@" >"$work/ready" &
    local line
    read -r line <"$work/ready"
    [[ $line == ready* ]] || { echo "The demo cluster did not start: $line" >&2; exit 1; }
    export KUBECONFIG=$work/kubeconfig
}

use_demo=false
if [[ ${1:-} == --demo ]]; then
    use_demo=true
    shift
fi
headless=false
if [[ -z ${DISPLAY:-}${WAYLAND_DISPLAY:-} ]]; then
    headless=true
    use_demo=true # nobody is there to look at a cluster of one's own
fi
if $use_demo || ! has_kubeconfig; then
    echo "Opening the demo cluster."
    # The demo's settings and caches stay apart from the user's own. That also makes it a program of its own beside one
    # that runs already, whose windows would outlive the demo cluster: this script ends both together.
    export XDG_CONFIG_HOME=$work/config XDG_CACHE_HOME=$work/cache XDG_DATA_HOME=$work/data
    start_demo_cluster "$@"
fi
if $headless; then
    scripts/screenshot.sh "$program" build/tidewright.png
else
    "$program"
fi

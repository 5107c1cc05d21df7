#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# measure-budgets.sh BUILD-FOLDER
# QUIET_SECONDS: how long a window that nothing happens to is watched; two minutes.
set -euo pipefail
cd "$(dirname "$0")/.."

build=$1
quiet_seconds=${QUIET_SECONDS:-120}
kubectl=$build/libexec/tidewright/kubectl
work=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; wait 2>/dev/null || true; rm -rf "$work"' EXIT
export QT_QPA_PLATFORM=offscreen XDG_CONFIG_HOME=$work/config XDG_CACHE_HOME=$work/cache XDG_DATA_HOME=$work/data XDG_RUNTIME_DIR=$work
status=0

start_demo_cluster() {
    rm -f "$work/ready"
    mkfifo "$work/ready"
    "$build/bin/tidewright-demo-cluster" --still --kubeconfig "$work/kubeconfig" "$@" >"$work/ready" &
    read -r _ <"$work/ready"
    export KUBECONFIG=$work/kubeconfig
}

milliseconds() { echo $(($(date +%s%N) / 1000000)); }

# Median of seven numbers that a command prints.
median_of() {
    for _ in 1 2 3 4 5 6 7; do
        "$@"
    done | sort -n | sed -n 4p
}

# Wall time, in milliseconds, of a command.
time_of() {
    local start
    start=$(milliseconds)
    "$@" >/dev/null
    echo $(($(milliseconds) - start))
}

time_to_rows() {
    LAUNCHED_AT=$(date +%s%N) "$build/bin/bench-launch" | sed -n 's/^first pod rows after \([0-9]*\) ms$/\1/p' | head -n 1
}

# Resident memory, in kilobytes, of a program in its window once it has come to rest.
memory_of() {
    local resident process
    "$@" >/dev/null 2>&1 &
    process=$!
    sleep 10
    resident=$(awk '/^Rss:/ {print $2}' "/proc/$process/smaps_rollup")
    kill "$process"
    wait "$process" 2>/dev/null || true
    echo "$resident"
}

# ratio NAME VALUE UNIT OF LIMIT
ratio() {
    awk -v n="$1" -v v="$2" -v u="$3" -v o="$4" -v l="$5" 'BEGIN {
        printf "%-58s %8.2f %s / %8.2f %s = %6.2f  (at most %5.2f) %s\n", n, v, u, o, u, v / o, l,
            v / o <= l ? "kept" : "MISSED"
        exit v / o > l
    }' || status=1
}

listing_template='-o=jsonpath={range .items[*]}{.metadata.name}	{.status.containerStatuses[*].ready}	{.status.phase}	{.status.containerStatuses[*].restartCount}	{.status.containerStatuses[*].state.*.reason}	{.status.startTime}	{.spec.containers[*].name}
{end}'

three_bare_runs() {
    local context
    context=$("$kubectl" config view '-ojsonpath={.current-context}')
    "$kubectl" get ns '-o=jsonpath={.items[*].metadata.name}'
    "$kubectl" get po "--context=$context" -ndefault "$listing_template"
}

mkdir -p "$XDG_CONFIG_HOME/com.brindle.Tidewright"
echo '{"lastNamespaces": {"demo-harbor": "default"}}' >"$XDG_CONFIG_HOME/com.brindle.Tidewright/settings.json"
start_demo_cluster
bare=$(median_of time_of three_bare_runs)
launch=$(median_of time_to_rows)
ratio "launch to first pod rows / three bare kubectl runs" "$launch" ms "$bare" 1.0
bare_one=$(memory_of "$build/bin/bare-window" 1)
bare_five=$(memory_of "$build/bin/bare-window" 5)
cluster_one=$(memory_of "$build/bin/cluster-windows" 1)
cluster_five=$(memory_of "$build/bin/cluster-windows" 5)
ratio "memory of the program with a window / a bare one" "$cluster_one" kB "$bare_one" 2.0
ratio "memory of a further window / a bare one" \
    $(((cluster_five - cluster_one) / 4)) kB $(((bare_five - bare_one) / 4)) 1.8
kill %1
wait %1 2>/dev/null || true

start_demo_cluster --pods 30000
"$kubectl" get po --all-namespaces "$listing_template" >"$work/listing"
"$build/bin/bench-table" "$work/listing" || status=1
server=$("$kubectl" config view --minify '-ojsonpath={.clusters[0].cluster.server}')
"$kubectl" get --raw "/${server#*://*/}/api/v1/namespaces/fleet/pods" >"$work/state"
"$build/bin/bench-live" "$work/state" || status=1
echo '{"lastNamespaces": {"demo-harbor": "fleet"}}' >"$XDG_CONFIG_HOME/com.brindle.Tidewright/settings.json"
"$build/bin/bench-live-window" "$server" fleet "$quiet_seconds" || status=1
"$build/bin/bench-logs" || status=1
exit $status

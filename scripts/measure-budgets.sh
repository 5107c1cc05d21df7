#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# measure-budgets.sh BUILD-FOLDER
set -euo pipefail
cd "$(dirname "$0")/.."

build=$1
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

# Median of seven wall times, in milliseconds, of a command.
median_of() {
    local times=()
    for _ in 1 2 3 4 5 6 7; do
        local start
        start=$(milliseconds)
        "$@" >/dev/null
        times+=($(($(milliseconds) - start)))
    done
    printf '%s\n' "${times[@]}" | sort -n | sed -n 4p
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
bare=$(median_of three_bare_runs)
launch=$(median_of "$build/bin/bench-launch")
awk -v l="$launch" -v b="$bare" 'BEGIN {
    r = l / b
    printf "%-58s %8.2f ms / %8.2f ms = %6.2f  (at most %5.2f) %s\n",
        "launch to first pod rows / three bare kubectl runs", l, b, r, 1.5, r <= 1.5 ? "kept" : "MISSED"
    exit r > 1.5
}' || status=1
kill %1
wait %1 2>/dev/null || true

start_demo_cluster --pods 30000
"$kubectl" get po --all-namespaces "$listing_template" >"$work/listing"
"$build/bin/bench-table" "$work/listing" || status=1
"$build/bin/bench-logs" || status=1
exit $status

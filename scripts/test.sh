#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds and runs all tests: a plain build with the benchmarks (not run), AddressSanitizer with
# UndefinedBehaviorSanitizer over all tests, and ThreadSanitizer over the threaded ones. Ends with one line that counts them.
set -uo pipefail
cd "$(dirname "$0")/.."

passed=0
failed=0

# Adds up what ctest says at its end; a preset that does not build counts as one failure.
run_preset() {
    local preset=$1 log
    shift
    log=build/test-$preset.log
    mkdir -p build
    echo "== $preset"
    if ! cmake --preset "$preset" -DTIDEWRIGHT_TEST_KUBECTL_OLD="$old_kubectl" "$@" >"$log" 2>&1 ||
        ! cmake --build --preset "$preset" -j "$(nproc)" >>"$log" 2>&1; then
        tail -n 40 "$log"
        echo "$preset does not build"
        failed=$((failed + 1))
        return
    fi
    ctest --preset "$preset" 2>&1 | tee "$log"
    local summary total bad
    summary=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests failed out of [0-9]+' "$log" | tail -n 1)
    if [[ -z $summary ]]; then
        echo "$preset ran no tests"
        failed=$((failed + 1))
        return
    fi
    bad=$(sed -E 's/.*, ([0-9]+) tests failed.*/\1/' <<<"$summary")
    total=$(sed -E 's/.*out of ([0-9]+).*/\1/' <<<"$summary")
    passed=$((passed + total - bad))
    failed=$((failed + bad))
}

if ! old_kubectl=$(scripts/old-kubectl.sh); then
    echo "Debian's kubectl could not be unpacked"
    old_kubectl=
    failed=$((failed + 1))
fi
compiler_cache=()
if command -v ccache >/dev/null 2>&1; then
    compiler_cache=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
for preset in ci asan tsan; do
    run_preset "$preset" "${compiler_cache[@]}"
done

echo "$passed passed, $failed failed"
((failed == 0 && passed > 0))

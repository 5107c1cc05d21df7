#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Measures the performance budgets on the demo cluster and prints each as a ratio within this run.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset bench >/dev/null
cmake --build --preset bench -j "$(nproc)" >/dev/null
exec scripts/measure-budgets.sh build/bench

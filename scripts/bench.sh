#!/usr/bin/env bash
# Measures a release build: every kind of load, open, save, append and painting with its time, MB/s, floor and bound on
# the screen, and as JSON in build-release/bench.json. A bound that is missed is named, and the status is 1 then.
# scripts/performance_table.py makes docs/performance.md of the JSON.
# Further arguments go to the benchmark program, such as --benchmark_filter='copy|load'.
set -euo pipefail
"$(dirname "$0")/bootstrap.sh"
. "$(dirname "$0")/common.sh"
configure_and_build release tavi_bench

# Saved files in memory, and ahead of other work, where that is allowed: disks and neighbours have no part in the figures.
free_kib=$(df -k --output=avail /dev/shm 2>/dev/null | tail -1 || true)
if [ -w /dev/shm ] && [ "${free_kib:-0}" -gt 500000 ]; then export TAVI_BENCH_OUTPUTS=/dev/shm; fi
ahead=()
if chrt -f 1 true 2>/dev/null; then ahead=(chrt -f 1); fi
"${ahead[@]}" build-release/bin/tavi_bench --results=build-release/bench.json "$@"

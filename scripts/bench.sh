#!/usr/bin/env bash
# Measures a release build: results as JSON in build-release/bench.json, ratios with their bounds on the screen.
# scripts/performance_table.py makes docs/performance.md of them.
# Further arguments go to the benchmark program, such as --benchmark_filter='copy|load'.
set -euo pipefail
"$(dirname "$0")/bootstrap.sh"
. "$(dirname "$0")/common.sh"
configure_and_build release tavi_bench
build-release/bin/tavi_bench --benchmark_out=build-release/bench.json --benchmark_out_format=json "$@"

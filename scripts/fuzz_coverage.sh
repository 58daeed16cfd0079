#!/usr/bin/env bash
# Which lines of Common/ and Host/TaviFile/ the fuzzers' inputs reach: scripts/fuzz_coverage.sh [TARGET...] replays the
# seeds, what was found and the corpora of scripts/fuzz.sh in a build with line coverage.
set -euo pipefail
"$(dirname "$0")/bootstrap.sh"
. "$(dirname "$0")/common.sh"
targets=("$@")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(sed -n 's/^tavi_fuzz_target(\([a-z_]*\) .*/\1/p' fuzz/CMakeLists.txt)

configure_and_build coverage make_seeds "${targets[@]/#/fuzz_}" >/dev/null
find build-coverage -name '*.gcda' -delete
build-coverage/bin/make_seeds build-coverage/fuzz/seeds
for target in "${targets[@]}"; do
  kind=$(sed -n "s/^tavi_fuzz_target($target [A-Za-z]*\.cpp \([a-z]*\).*/\1/p" fuzz/CMakeLists.txt)
  build-coverage/bin/fuzz_"$target" build-coverage/fuzz/seeds/"$kind" fuzz/found/"$target" build-fuzz/corpus/"$target"
done
for folder in Common Host/TaviFile; do
  gcovr -r . --filter "$folder/" --object-directory build-coverage --exclude-throw-branches -j "$jobs" \
    --txt "build-coverage/fuzz-$(basename "$folder").txt" build-coverage
  echo "$folder: $(tail -3 "build-coverage/fuzz-$(basename "$folder").txt" | grep TOTAL)"
done

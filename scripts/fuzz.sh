#!/usr/bin/env bash
# Fuzzes: scripts/fuzz.sh [-m MINUTES] [TARGET...]. Targets are fuzz/*Target.cpp, all of them by default, one after
# another, a minute each. Builds with Clang in build-fuzz; corpora grow in build-fuzz/corpus and what is found stands
# in build-fuzz/found. Prints runs, runs a second and coverage for each.
set -euo pipefail
"$(dirname "$0")/bootstrap.sh"
. "$(dirname "$0")/common.sh"
minutes=1
while getopts m: option; do
  case "$option" in
    m) minutes=$OPTARG ;;
    *) echo "usage: scripts/fuzz.sh [-m MINUTES] [TARGET...]" >&2; exit 2 ;;
  esac
done
shift $((OPTIND - 1))
targets=("$@")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(sed -n 's/^tavi_fuzz_target(\([a-z_]*\) .*/\1/p' fuzz/CMakeLists.txt)

configure_and_build fuzz make_seeds "${targets[@]/#/fuzz_}" >/dev/null
build-fuzz/bin/make_seeds build-fuzz/fuzz/seeds
samples=${TAVI_SAMPLES:-../shared/data}
failed=0
for target in "${targets[@]}"; do
  kind=$(sed -n "s/^tavi_fuzz_target($target [A-Za-z]*\.cpp \([a-z]*\).*/\1/p" fuzz/CMakeLists.txt)
  corpus=build-fuzz/corpus/$target
  found=build-fuzz/found/$target
  mkdir -p "$corpus" "$found"
  # Small real files are good seeds; large ones make every run slow.
  case "$kind" in
    files) find "$samples/nitf" -type f -size -12k ! -name '*.png' ! -name '*.json' -exec cp -n {} "$corpus" \; 2>/dev/null || true ;;
    metafiles) find "$samples/cgm" -name '*.cgm' -size -24k -exec cp -n {} "$corpus" \; 2>/dev/null || true ;;
  esac
  dictionary=()
  [ "$kind" = files ] || [ "$kind" = streams ] || [ "$kind" = coded ] && dictionary=(-dict=fuzz/nitf.dict)
  echo "== $target: $minutes minutes"
  known=()
  [ -d "fuzz/found/$target" ] && known=("fuzz/found/$target")
  if ! LSAN_OPTIONS="suppressions=$PWD/tests/support/leaks.supp:print_suppressions=0" ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1 "build-fuzz/bin/fuzz_$target" \
      -max_total_time=$((minutes * 60)) -max_len=65536 -timeout=20 -rss_limit_mb=2048 -malloc_limit_mb=4000 -report_slow_units=5 \
      -print_final_stats=1 -verbosity=1 -artifact_prefix="$found/" "${dictionary[@]}" \
      "$corpus" "build-fuzz/fuzz/seeds/$kind" "${known[@]}" >"build-fuzz/$target.log" 2>&1; then
    failed=1
    grep -E 'ERROR|SUMMARY|Test unit written' "build-fuzz/$target.log" | head -5
  fi
  grep -E '^stat::(number_of_executed_units|average_exec_per_sec|slowest_unit|peak_rss)|cov: [0-9]+ ft:.* DONE' \
    "build-fuzz/$target.log" | tail -5
done
exit $failed

#!/usr/bin/env bash
# Checks everything: formatting, build, static analysis, the whole suite, and the suite under AddressSanitizer and
# UndefinedBehaviorSanitizer. With --quick only the build and the plain suite.
set -euo pipefail
quick=false
case "${1:-}" in
  --quick) quick=true ;;
  "") ;;
  *) echo "usage: scripts/test.sh [--quick]" >&2; exit 2 ;;
esac
"$(dirname "$0")/bootstrap.sh"
. "$(dirname "$0")/common.sh"

step() { printf '\n== %s\n' "$*"; }

run_suite() {
  ctest --test-dir "$1" -j "$jobs" --output-on-failure --no-tests=error
}

# Everything that the suite's result hangs on: the tree, the compiler, the sample files.
fingerprint() {
  {
    git ls-files --cached --others --exclude-standard -z | xargs -0 sha256sum 2>/dev/null || true
    c++ --version
    ls -lR --time-style=full-iso "${TAVI_SAMPLES:-../shared/data}" 2>/dev/null || true
  } | sha256sum
}

# The slow half is left out when it passed on exactly this tree before, and the line saying so comes first, so that
# ctest has the last word.
sanitized=build-sanitize/suite-passed
if $quick; then
  with_sanitizers=false
elif [ "$(cat "$sanitized" 2>/dev/null)" = "$(fingerprint)" ]; then
  with_sanitizers=false
  echo "The suite with sanitizers passed on exactly this tree; remove $sanitized to run it again."
else
  with_sanitizers=true
  rm -f "$sanitized"
fi

if ! $quick; then
  step "format"
  scripts/format.sh --check
fi
step "build"
configure_and_build dev
if ! $quick; then
  step "clang-tidy"
  scripts/tidy.py build
fi
step "tests"
run_suite build
if $with_sanitizers; then
  step "build with sanitizers"
  configure_and_build sanitize
  step "tests with sanitizers"
  export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:strict_string_checks=1:check_initialization_order=1}
  export LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$PWD/tests/support/leaks.supp:print_suppressions=0}
  export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
  before=$(fingerprint)
  run_suite build-sanitize
  echo "$before" >"$sanitized"
fi

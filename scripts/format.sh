#!/usr/bin/env bash
# Formats every C and C++ file; with --check only names those that are not formatted.
set -euo pipefail
. "$(dirname "$0")/common.sh"

check_one() {
  clang-format --dry-run -Werror "$1" 2>/dev/null && return 0
  echo "$1 is not formatted: run scripts/format.sh"
  return 1
}
export -f check_one

if [ "${1:-}" = --check ]; then
  source_files | tr '\n' '\0' | xargs -0 -n 1 -P "$jobs" bash -c 'check_one "$1"' check
else
  source_files | tr '\n' '\0' | xargs -0 -n 8 -P "$jobs" clang-format -i
fi

#!/usr/bin/env bash
# Formats every C and C++ file; with --check only says which are not formatted.
set -euo pipefail
. "$(dirname "$0")/common.sh"
mapfile -t files < <(source_files)
if [ "${1:-}" = --check ]; then
  printf '%s\0' "${files[@]}" | xargs -0 -n 8 -P "$jobs" clang-format --dry-run -Werror
else
  printf '%s\0' "${files[@]}" | xargs -0 -n 8 -P "$jobs" clang-format -i
fi

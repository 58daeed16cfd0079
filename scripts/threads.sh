#!/usr/bin/env bash
# Runs the tests of different documents on different threads under ThreadSanitizer, in build-threads.
set -euo pipefail
"$(dirname "$0")/bootstrap.sh"
. "$(dirname "$0")/common.sh"
configure_and_build threads threads_tests
TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1:suppressions=$PWD/tests/threads/suppressions.txt" \
  build-threads/bin/threads_tests

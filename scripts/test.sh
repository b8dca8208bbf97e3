#!/usr/bin/env bash
# Sets up, builds and runs every test: once plain, once under AddressSanitizer + UBSan.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
jobs=$(nproc)

"$here/scripts/setup.sh" "$here/build"
# Every source as the repository's .clang-format writes it (setup has installed clang-format).
find "$here" \( -path "$here/build*" -o -path "$here/.*" \) -prune -o \( -name '*.cpp' -o -name '*.h' \) -print0 |
  xargs -0 clang-format --dry-run --Werror
# The size of the tests against the code, printed with every run (the rule is in the README).
"$here/scripts/test-ratio.sh"
(cd "$here/build" && ctest --output-on-failure --parallel "$jobs" --timeout 300)

ZENDREL_BUILD_TYPE=Debug "$here/scripts/setup.sh" "$here/build-asan" -DZENDREL_SANITIZE=ON
export ASAN_OPTIONS=detect_leaks=0:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
(cd "$here/build-asan" && ctest --output-on-failure --parallel "$jobs" --timeout 600)

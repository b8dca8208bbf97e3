#!/bin/sh
# Lines of tests against lines of code (C++ sources and headers). The rule: tests/ stays at or below
# 0.40 of the code, new work adds tests of a quarter to a third of what it adds.
cd "$(dirname "$0")/.." || exit 1
count() { find "$@" \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 cat | wc -l; }
tests=$(count tests)
code=$(count app project timeline playback recording render cleaning dsp ui foundation)
echo "tests $tests"
echo "code  $code"
awk -v t="$tests" -v c="$code" 'BEGIN { printf "ratio %.2f\n", t / c }'

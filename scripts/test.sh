#!/usr/bin/env bash
# Sets up the machine, builds everything with AddressSanitizer and
# UndefinedBehaviorSanitizer and runs every test.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
build="$root/build/sanitize"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DHALVANE_SANITIZE=address,undefined -DHALVANE_BUILD_TESTS=ON -DHALVANE_BUILD_EXAMPLES=ON
cmake --build "$build"
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir "$build" --output-on-failure -j "$(nproc)"

# Second pass: the same tests under valgrind, without sanitizers.
if [[ "${HALVANE_SKIP_VALGRIND:-0}" != "1" ]]; then
    "$root/scripts/valgrind.sh"
fi

# Third pass: every fuzz target for 30 seconds.
if [[ "${HALVANE_SKIP_FUZZ:-0}" != "1" ]]; then
    "$root/scripts/fuzz.sh"
fi

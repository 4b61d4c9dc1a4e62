#!/usr/bin/env bash
# Builds the tests without sanitizers and runs every test executable under
# valgrind's memcheck: any invalid access or definitely/indirectly lost block
# fails the run. Complements the sanitizer build of scripts/test.sh.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
build="$root/build/valgrind"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DHALVANE_BUILD_TESTS=ON \
    -DHALVANE_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build"
# One test executable under memcheck; prints its verdict, and the end of its
# log when it fails.
check() {
    local executable=$1 log
    log="$build/$(basename "$executable").valgrind.log"
    if valgrind --quiet --leak-check=full --show-leak-kinds=definite,indirect \
        --errors-for-leak-kinds=definite,indirect --error-exitcode=99 \
        "$executable" --gtest_brief=1 >"$log" 2>&1; then
        echo "valgrind: $(basename "$executable") clean"
    else
        echo "valgrind: $(basename "$executable") FAILED (see $log)"
        tail -n 40 "$log"
        return 1
    fi
}
export -f check
export build

# The executables run side by side, one per processor: memcheck runs a
# program on one thread, so this is what keeps CI within its time.
find "$build/tests" -maxdepth 2 -type f -name '*_tests' -perm -u+x | sort |
    xargs -P "$(nproc)" -I{} bash -c 'check "$1"' _ {}

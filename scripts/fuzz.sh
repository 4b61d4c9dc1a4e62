#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each one for a while
# (HALVANE_FUZZ_SECONDS, 30 by default) on a scratch copy of its seed
# corpus. Any crash, leak or undefined behaviour fails the run.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
seconds="${HALVANE_FUZZ_SECONDS:-30}"
build="$root/build/fuzz"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DHALVANE_FUZZ=ON -DHALVANE_BUILD_TESTS=OFF -DHALVANE_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
status=0
for target in "$build"/tests/fuzz/fuzz_*; do
    [[ -x "$target" ]] || continue
    name=$(basename "$target")
    mkdir -p "$scratch/$name"
    if [[ -d "$root/tests/fuzz/corpus/$name" ]]; then cp -r "$root/tests/fuzz/corpus/$name/." "$scratch/$name/"; fi
    if "$target" "$scratch/$name" -max_total_time="$seconds" -print_final_stats=1 \
        -artifact_prefix="$scratch/$name-" >"$scratch/$name.log" 2>&1; then
        echo "fuzz: $name clean ($(grep -m1 'stat::number_of_executed_units' "$scratch/$name.log" | awk '{print $2}') runs)"
    else
        echo "fuzz: $name FAILED"
        tail -n 60 "$scratch/$name.log"
        status=1
    fi
done
exit $status

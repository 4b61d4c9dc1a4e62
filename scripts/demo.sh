#!/usr/bin/env bash
# Sets up the machine, builds the library and runs the demonstration program.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
build="$root/build/release"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DHALVANE_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" --target halvane-demo
"$build/examples/halvane-demo"

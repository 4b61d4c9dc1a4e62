#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the benchmarks need.
# Idempotent and quiet when everything is already there.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config clang libclang-rt-14-dev
    libicu-dev libssl-dev libjsoncpp-dev libexpat1-dev libcurl4-openssl-dev
    libsqlite3-dev uuid-dev libgtest-dev libgmock-dev libbenchmark-dev locales valgrind
)
# Peer libraries for the comparison benchmarks only.
if [[ "${HALVANE_WITH_PEERS:-0}" == "1" ]]; then
    packages+=(qtbase5-dev libplist-dev)
fi

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done
# The tests check that number formatting ignores a decimal-comma locale.
need_locale=0
locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$' || need_locale=1
[[ ${#missing[@]} -eq 0 && $need_locale -eq 0 ]] && exit 0

if [[ $(id -u) -eq 0 ]]; then
    sudo=()
elif command -v sudo >/dev/null; then
    sudo=(sudo)
else
    echo "setup: missing packages (${missing[*]}) or locale, and no way to become root" >&2
    exit 1
fi
export DEBIAN_FRONTEND=noninteractive
if [[ ${#missing[@]} -gt 0 ]]; then
    echo "setup: installing ${missing[*]}"
    "${sudo[@]}" apt-get update -qq
    "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
if [[ $need_locale -eq 1 ]]; then
    echo "setup: generating the de_DE.UTF-8 locale"
    "${sudo[@]}" localedef -i de_DE -f UTF-8 de_DE.UTF-8
fi

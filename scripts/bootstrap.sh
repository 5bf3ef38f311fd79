#!/usr/bin/env bash
# Installs every Debian package the project builds, tests and runs with. Idempotent and
# quiet when everything is already there.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config ccache clang clang-format libclang-rt-14-dev
    qtbase5-dev libcurl4-openssl-dev libcpp-httplib-dev libasio-dev libssl-dev
    googletest libgtest-dev libgmock-dev libbenchmark-dev tinyproxy openssl
    libqrencode-dev zbar-tools
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "bootstrap: installing ${missing[*]}"
sudo_cmd=()
[ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null

#!/usr/bin/env bash
# Installs every Debian package the project builds, tests and runs with. Idempotent: a second
# run only checks and says so.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config ccache clang clang-format libclang-rt-14-dev
    qtbase5-dev libcurl4-openssl-dev libcpp-httplib-dev libasio-dev libssl-dev
    googletest libgtest-dev libgmock-dev libbenchmark-dev openssl
    g++-mingw-w64-x86-64-posix
    libqrencode-dev zbar-tools fonts-wqy-microhei
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done
if [ ${#missing[@]} -eq 0 ]; then
    echo "bootstrap: all ${#packages[@]} packages present"
    exit 0
fi

echo "bootstrap: installing ${#missing[@]} of ${#packages[@]} packages: ${missing[*]}"
sudo_cmd=()
[ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
echo "bootstrap: apt-get update"
"${sudo_cmd[@]}" apt-get update -qq
# apt prints a line as it fetches, unpacks and sets up each package (with dependencies).
"${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}" |
    { grep --line-buffered -E '^(Get:|Unpacking|Setting up|Need to get|[0-9]+ upgraded)' || true; }
echo "bootstrap: done"

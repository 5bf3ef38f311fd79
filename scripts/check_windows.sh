#!/usr/bin/env bash
# Compiles the module's own sources for Windows with MinGW-w64, syntax only, against Debian's
# Qt and curl headers, so that the _WIN32 branches and the export macro at least compile.
# It does not link: a Windows build needs Windows builds of Qt and curl (docs/building.md).
set -euo pipefail
cd "$(dirname "$0")/.."
compiler=x86_64-w64-mingw32-g++-posix
command -v "$compiler" >/dev/null || { echo "windows: $compiler missing (scripts/bootstrap.sh)"; exit 1; }

# Debian's Qt and curl headers live under the multiarch folder; /usr/include itself must stay
# out of the search path, because its C library headers are Linux's. Asio is header-only and
# gets a folder of its own.
qt=/usr/include/x86_64-linux-gnu/qt5
shim=$(mktemp -d)
trap 'rm -rf "$shim"' EXIT
ln -s /usr/include/asio /usr/include/asio.hpp "$shim/"
ln -s /usr/include/x86_64-linux-gnu/curl "$shim/curl"

flags=(-std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Werror -Wno-unused-parameter
    -DQT_CORE_LIB -DQT_NETWORK_LIB -DASIO_STANDALONE -DASIO_NO_DEPRECATED
    -DCURL_STATICLIB -D_WIN32_WINNT=0x0A00
    -Iinclude -Isrc -Iconfig/include -isystem "$qt" -isystem "$qt/QtCore"
    -isystem "$qt/QtNetwork" -isystem "$shim")
for library in platform/*/; do
    flags+=(-I"${library}include" -I"${library}src")
done

mapfile -t files < <(find src config platform -name '*.cpp' | sort)
jobs=$(nproc)
echo "windows: $compiler -fsyntax-only over ${#files[@]} files of src/, config/, platform/"

check() {
    local extra=()
    # The shared library's own entry point, compiled as CMake's DEFINE_SYMBOL compiles it.
    [ "$1" = src/service/create_net_service.cpp ] && extra=(-DTOLVANE_BUILDING_LIBRARY)
    "$compiler" "${flags[@]}" "${extra[@]}" "$1" || echo "$1" >>"$shim/failed"
}

# Parallel jobs record their failures in a file, which outlives the job's exit status.
for file in "${files[@]}"; do
    check "$file" &
    while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do
        wait -n || true
    done
done
wait
if [ -s "$shim/failed" ]; then
    echo "windows: $(wc -l <"$shim/failed") of ${#files[@]} files fail:"
    sort "$shim/failed"
    exit 1
fi
echo "windows: ok"

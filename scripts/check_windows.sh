#!/usr/bin/env bash
# Compiles the module's own sources for Windows with MinGW-w64, syntax only, against Debian's
# Qt and curl headers, so that the _WIN32 branches and the export macro at least compile; the
# minimal host is compiled too, as a Windows host sees the public headers. It does not link: a
# Windows build needs Windows builds of Qt and curl (docs/building.md).
# The files are checked by a generated Ninja build, so a second run only re-checks files whose
# sources or headers changed.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
compiler=x86_64-w64-mingw32-g++-posix
command -v "$compiler" >/dev/null || { echo "windows: $compiler missing (scripts/bootstrap.sh)"; exit 1; }

out=build/windows-check
mkdir -p "$out/shim"
# Debian's Qt and curl headers live under the multiarch folder; /usr/include itself must stay
# out of the search path, because its C library headers are Linux's. Asio is header-only and
# gets a folder of its own.
qt=/usr/include/x86_64-linux-gnu/qt5
ln -sfn /usr/include/asio "$out/shim/asio"
ln -sfn /usr/include/asio.hpp "$out/shim/asio.hpp"
ln -sfn /usr/include/x86_64-linux-gnu/curl "$out/shim/curl"

flags="-std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Werror -Wno-unused-parameter"
flags+=" -DQT_CORE_LIB -DQT_NETWORK_LIB -DASIO_STANDALONE -DASIO_NO_DEPRECATED"
flags+=" -DCURL_STATICLIB -D_WIN32_WINNT=0x0A00"
flags+=" -I$root/include -I$root/src -I$root/config/include"
for library in platform/*/; do
    flags+=" -I$root/${library}include -I$root/${library}src"
done
flags+=" -isystem $qt -isystem $qt/QtCore -isystem $qt/QtNetwork -isystem $root/$out/shim"

mapfile -t files < <(find src config platform -name '*.cpp' | sort)
files+=(examples/minimal-host/main.cpp)

{
    echo "rule check"
    echo "  command = $compiler $flags \$defines -MD -MF \$out.d -MT \$out \$in && touch \$out"
    echo "  depfile = \$out.d"
    echo "  deps = gcc"
    echo "  description = windows $compiler -fsyntax-only \$in"
    for file in "${files[@]}"; do
        echo "build ${file//\//_}.ok: check $root/$file"
        # The module's own entry point compiles as CMake's DEFINE_SYMBOL compiles it.
        if [ "$file" = src/service/create_net_service.cpp ]; then
            echo "  defines = -DTOLVANE_BUILDING_LIBRARY"
        fi
    done
} >"$out/build.ninja.new"
# Rewritten only when it changed, so that Ninja keeps what it already checked.
if cmp -s "$out/build.ninja.new" "$out/build.ninja"; then
    rm "$out/build.ninja.new"
else
    mv "$out/build.ninja.new" "$out/build.ninja"
fi

echo "windows: ${#files[@]} files of src/, config/, platform/ and examples/minimal-host"
ninja -C "$out" -k 0
echo "windows: ok"

#!/usr/bin/env bash
# Installs a build into a fresh folder, moves it, and builds and runs an application outside the tree each way:
# find_package, pkg-config, add_subdirectory.
#   installed.sh BUILD_FOLDER
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$*" >&2; exit 1; }
quietly() { "$@" >"$work/log" 2>&1 || { tail -n 40 "$work/log" >&2; exit 1; }; }
export CXXFLAGS="-Wall -Wextra -Wpedantic -Werror"

network=$root/examples/strang_borre_distances_free.inp
runs() { # HOW FOLDER
    "$2/application" "$network" >"$work/out" 2>"$work/err" || fail "$1: the application fails"
    diff "$here/application/expected.txt" "$work/out" || fail "$1: the application prints something else"
    "$2/rooms" "$network" | grep -qx "vorn [0-9.]*: 6 distances, 4 points" || fail "$1: the rooms read something else"
    echo "$1: built and run"
}

# The example of the documentation is the one that is built here.
for example in adjust parallel; do
    awk -v first="// $(sed -n '1s/^\/\/ //p' "$root/examples/host/$example.cpp")" \
        '$0 == first { inside = 1 } /^```/ { inside = 0 } inside' "$root/docs/library.md" |
        diff - "$root/examples/host/$example.cpp" || fail "docs/library.md has another $example.cpp"
done

quietly cmake --install "$build" --prefix "$work/first"
mv "$work/first" "$work/prefix"

# What an installed page links to is installed too.
(cd "$work/prefix/share/doc/vorn" && grep -oH '](\(pictures/\)*[a-z_-]*\.\(md\|png\)' ./*.md | sort -u | while IFS= read -r link; do
    [ -e "${link##*\](}" ] || fail "${link%%:*} links to ${link##*\](}, which is not installed"
done)

# Nothing but what include/ names can be seen in the shared library.
lib=$(dirname "$(find "$work/prefix" -name libvorn.so)")
nm -DC --defined-only "$lib/libvorn.so" | grep -vE ' (A VORN_0|T (vorn|project|vornapi)::.*|[VW] (typeinfo|typeinfo name|vtable) for .*)(@@VORN_0)?$' |
    grep -v ' W vornapi::' && fail "the shared library shows more than its headers"
[ "$(objdump -p "$lib/libvorn.so" | awk '/SONAME/ { print $2 }')" = libvorn.so.0 ] || fail "another soname"

quietly cmake -S "$here/application" -B "$work/found" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix"
quietly cmake --build "$work/found"
runs find_package "$work/found"
sed 's/vorn 0.1/vorn 0.2/' "$here/application/CMakeLists.txt" >"$work/CMakeLists.txt"
cp "$here"/application/*.cpp "$work"
if cmake -S "$work" -B "$work/newer" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" >"$work/log" 2>&1; then
    fail "find_package takes a version that is not there"
fi

export PKG_CONFIG_PATH=$lib/pkgconfig
mkdir "$work/configured"
compile() { g++ -std=c++17 $CXXFLAGS "$1" -o "$work/configured/$2" $(pkg-config --cflags --libs "$3"); }
compile "$root/examples/host/adjust.cpp" application vorn
compile "$here/application/rooms.cpp" rooms vorn-rooms
LD_LIBRARY_PATH=$lib runs pkg-config "$work/configured"

quietly env CXXFLAGS="-Wall -Wextra -Werror" cmake -S "$here/application" -B "$work/inside" -G Ninja \
    -DVORN_SOURCE="$root" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE=-O2
quietly cmake --build "$work/inside"
made=$(find "$work/inside" -type f -perm -100 ! -path '*/CMakeFiles/*' -printf '%f\n' | sort | tr '\n' ' ')
[ "$made" = "application rooms " ] || fail "add_subdirectory builds more than libraries: $made"
runs add_subdirectory "$work/inside"

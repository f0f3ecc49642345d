#!/usr/bin/env bash
# A second build of the program, from a copy of the sources in another folder, is the same to the byte.
#
#   tests/scripts/ReproducibleTest.sh FIRST.EXE
#
# Nothing of the first build is used: no compiler cache, no object.
set -euo pipefail
project=$(cd "$(dirname "$0")/../.." && pwd)
first=$(readlink -f "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sources=$work/some-other-folder
mkdir "$sources"
cp -r "$project"/{CMakeLists.txt,CMakePresets.json,LICENSE,cmake,res,scripts,src} "$sources"
export CCACHE_DISABLE=1
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER
build=$work/build
# The maker's addresses are those of the first build.
settings=()
while IFS= read -r line; do settings+=("-D$line"); done < <(grep '^KESTRELGUARD_[A-Z_]*:STRING=' "$(dirname "$first")/CMakeCache.txt")
cmake -S "$sources" --preset windows -B "$build" -DKESTRELGUARD_TESTS=OFF "${settings[@]}" >"$work/log" 2>&1 &&
    cmake --build "$build" --target kestrelguard >>"$work/log" 2>&1 || {
    tail -n 30 "$work/log"
    exit 1
}
if ! cmp "$first" "$build/kestrelguard.exe"; then
    echo "the second build is not the same as the first"
    exit 1
fi
# The comparison would see one letter: the second build is made from the copy.
sed -i 's/Kestrelguard\.SingleInstance/Kestrelguard.SingleInstancf/' "$sources/src/app/win32/SingleInstance.cpp"
cmake --build "$build" --target kestrelguard >"$work/log" 2>&1 || {
    tail -n 30 "$work/log"
    exit 1
}
if cmp -s "$first" "$build/kestrelguard.exe"; then
    echo "a changed source made no difference: the second build is none"
    exit 1
fi
sha256sum <"$first"

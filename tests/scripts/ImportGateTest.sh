#!/usr/bin/env bash
# The import gate passes what loads on old systems and stops everything else.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
gate=$here/../../scripts/import-gate
cross=$("$here/../../scripts/cross-compiler")/i686-w64-mingw32
project=$(cd "$here/../.." && pwd)
. "$project/tests/support/Checks.sh"

# passes FILE; fails FILE TEXT: the gate stops it and says TEXT
passes() {
    "$gate" "$1" || wrong "stopped, but should pass: $1"
}
fails() {
    if "$gate" "$1" >"$work/said" 2>&1; then
        wrong "passed, but should be stopped: $2"
    elif ! grep -qF -- "$2" "$work/said"; then
        echo "did not say '$2' but:" && cat "$work/said" && failures=1
    fi
}
# The good table with one change, as the file NAME.txt.
changed() { sed "$2" "$here/fixtures/old-system.txt" >"$work/$1.txt"; }

passes "$here/fixtures/old-system.txt"

changed newer 's/CloseHandle/GetTickCount64/'
fails "$work/newer.txt" 'imports GetTickCount64 of kernel32.dll'
changed last 's/MessageBoxA/SetProcessDPIAware/'
fails "$work/last.txt" 'imports SetProcessDPIAware of user32.dll'
changed elsewhere 's/MessageBoxA/CloseHandle/'
fails "$work/elsewhere.txt" 'imports CloseHandle of user32.dll'
changed library 's/USER32.dll/libgcc_s_dw2-1.dll/'
fails "$work/library.txt" 'imports the library libgcc_s_dw2-1.dll'
changed ordinal 's/  MessageBoxA/  <none>/'
fails "$work/ordinal.txt" 'imports number 56 of user32.dll by ordinal'
changed subsystem 's/MajorSubsystemVersion.*/MajorSubsystemVersion\t6/'
fails "$work/subsystem.txt" 'asks for system version 6'
: >"$work/empty.txt"
fails "$work/empty.txt" 'has no import table that could be read'
fails "$here/ImportGateTest.sh" 'file format not recognized'

# A real program, by the product's own compiler.
cat >"$work/newer.c" <<'CODE'
#define _WIN32_WINNT 0x0600
#include <windows.h>
int main(void) { return (int)GetTickCount64(); }
CODE
"$cross-gcc-win32" -o "$work/newer.exe" "$work/newer.c"
fails "$work/newer.exe" 'imports GetTickCount64 of kernel32.dll'
sed -i 's/GetTickCount64/GetTickCount/' "$work/newer.c"
"$cross-gcc-win32" -o "$work/newer.exe" "$work/newer.c"
passes "$work/newer.exe"

# The thread model of the compiler is guarded where the program is compiled.
if "$cross-g++-win32" -D_GLIBCXX_HAS_GTHREADS=1 -std=c++20 -fsyntax-only \
    "$here/../../src/runtime/win32/Toolchain.cpp" 2>"$work/said"; then
    wrong "a compiler with the posix thread model is not refused"
fi
grep -q 'win32 thread model' "$work/said" || wrong "the refusal gives no reason"
"$cross-g++-win32" -std=c++20 -fsyntax-only "$here/../../src/runtime/win32/Toolchain.cpp" || failures=1

exit "$failures"

#!/usr/bin/env bash
# The program file asks for what newer systems offer and old ones pass over: no code in data, and a place of its own at
# every start, for which it carries the table of what to move.
#
#   tests/scripts/ProgramFlagsTest.sh KESTRELGUARD.EXE

set -euo pipefail

root=$(cd "$(dirname "$0")/../.." && pwd)
header=$("$("$root/scripts/cross-compiler")/i686-w64-mingw32-objdump" -p "$1")
failed=0
for part in NX_COMPAT DYNAMIC_BASE 'MajorSubsystemVersion[[:space:]]*4$' 'Subsystem[[:space:]]*00000002' \
    'Entry 5 0*[1-9a-f][0-9a-f]* 0*[1-9a-f][0-9a-f]* Base Relocation Directory'; do
    grep -qE "$part" <<<"$header" || {
        echo "missing: $part"
        failed=1
    }
done
exit "$failed"

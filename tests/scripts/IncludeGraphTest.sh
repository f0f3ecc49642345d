#!/usr/bin/env bash
# All includes of the project run downwards, and the script that says so sees each way in which they could not.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
graph=$here/../../scripts/include-graph
project=$(cd "$here/../.." && pwd)
. "$project/tests/support/Checks.sh"

"$graph" >/dev/null || failures=1

# A small house in which everything is right.
house() {
    rm -rf "$work/house"
    mkdir -p "$work/house"/{src/{app/win32,popup/win32,blocking,controls,runtime},desktop,tests/popup,fuzz}
    cd "$work/house"
    echo '#include "app/win32/Form.h"' >src/main.cpp
    echo '#include "popup/Policy.h"' >src/app/win32/Form.h
    echo '#include "controls/Controls.h"' >src/popup/Policy.h
    echo '#include "popup/Policy.h"' >src/popup/win32/Keyboard.h
    echo '#include "blocking/Sites.h"' >src/blocking/Sites.cpp
    : >src/blocking/Sites.h
    echo '#include "runtime/Text.h"' >src/controls/Controls.h
    : >src/runtime/Text.h
    echo '#include "runtime/Text.h"' >desktop/Desktop.h
    printf '#include <string>\n#include "World.h"\n#include "desktop/Desktop.h"\n' >tests/popup/PolicyTest.cpp
    : >tests/popup/World.h
    echo '#include "tests/popup/World.h"' >fuzz/PolicyFuzz.cpp
}
# adds FILE LINE: the house with one more include in FILE; must be refused with the text $3.
refuses() {
    house
    echo "$2" >>"$1"
    if "$graph" "$work/house" >"$work/said" 2>&1; then
        wrong "accepted: $1 with $2"
    elif ! grep -qF -- "$3" "$work/said"; then
        echo "did not say '$3' of $1 with $2 but:" && cat "$work/said" && failures=1
    fi
}

house
"$graph" "$work/house" >"$work/said" || failures=1
grep -qx 'app -> popup 1' "$work/said" || { echo "app -> popup is missing:" && cat "$work/said" && failures=1; }

refuses src/runtime/Text.h '#include "controls/Controls.h"' 'the arrow runs upwards'
refuses src/popup/Policy.h '#include "blocking/Sites.h"' 'src/popup/Policy.h includes src/blocking/Sites.h: the arrow runs upwards'
refuses src/popup/Policy.h '#include "app/win32/Form.h"' 'the arrow runs upwards'
refuses src/popup/Policy.h '#include "desktop/Desktop.h"' 'the arrow runs upwards'
refuses desktop/Desktop.h '#include "tests/popup/World.h"' 'the arrow runs upwards'
refuses tests/popup/World.h '#include "fuzz/PolicyFuzz.cpp"' 'the arrow runs upwards'
refuses src/popup/Policy.h '#include "popup/win32/Keyboard.h"' 'a portable file needs Windows'
refuses src/blocking/Sites.h '#include "blocking/Sites.cpp"' 'in a circle: '
refuses src/blocking/Sites.h '#include "blocking/Gone.h"' 'src/blocking/Sites.h includes blocking/Gone.h, which is not there'

exit "$failures"

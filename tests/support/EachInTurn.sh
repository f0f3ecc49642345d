#!/usr/bin/env bash
# Runs test programs one after the other in the Wine session that it stands in; fails when one of them does.
#
#   scripts/wine-session --outside -- tests/support/EachInTurn.sh PROGRAM.EXE...

set -u

failed=()
for program in "$@"; do
    printf '%s\n' "${program##*/}"
    "$KESTRELGUARD_SESSION/wine" "$program" --gtest_brief=1 || failed+=("${program##*/}")
done
[ ${#failed[@]} = 0 ] || printf 'failed: %s\n' "${failed[*]}"
[ ${#failed[@]} = 0 ]

#!/usr/bin/env bash
# The table at the end of ./bench says by its exit code whether a goal is missed, and runs are laid side by side.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
folder=$here/../../benchmarks
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# report FILE RATIO GOAL: one row with a goal, one without, one point of a plot.
report() {
    {
        printf 'machine\tsome machine\nload\tat the start\t0.1\nload\tat the end\t0.9\n'
        printf 'row\tworking\t%s\tms\tresting\t10\t%s\t%s\t%s\t%s\n' "$2" "$2" "$2" "$2" "$3"
        printf 'row\tlooking\t99\tms\tresting\t10\t9\t9.9\t11\t\n'
        printf 'point\tgrowth\tworking\t1000\t%s\n' "$2"
    } >"$work/$1"
}
# expect STATUS TEXT COMMAND...: how it ends, and a line that it prints.
expect() {
    local status=0
    "${@:3}" >"$work/said" 2>&1 || status=$?
    if [ "$status" != "$1" ] || ! grep -qF -- "$2" "$work/said"; then
        echo "${*:3}: exit code $status instead of $1, or no '$2' in:" && cat "$work/said" && failures=1
    fi
}

report met.tsv 1.10 1.15
report missed.tsv 1.20 1.15
report near.tsv 1.14 1.15
report ten.tsv 9.5 10
: >"$work/empty.tsv"
expect 0 '1 of 1 goals are met' "$folder/table" "$work/met.tsv"
expect 1 'MISSED' "$folder/table" "$work/missed.tsv"
expect 1 '0 of 1 goals are met' "$folder/table" "$work/missed.tsv"
# Compared as numbers, not as texts.
expect 0 'met' "$folder/table" "$work/ten.tsv"
expect 2 'no rows' "$folder/table" "$work/empty.tsv"
expect 0 '| working | 1.10 ms | resting | 10 ms | 1.10 |' "$folder/table" --markdown "$work/met.tsv"

# The middle one of three runs counts, and the table says how far they lie apart.
"$folder/merge" "$work/missed.tsv" "$work/met.tsv" "$work/near.tsv" >"$work/merged.tsv"
expect 0 'met (2 of 3 runs meet it)' "$folder/table" "$work/merged.tsv"
expect 0 '1.14 ms' "$folder/table" "$work/merged.tsv"
expect 0 '1.10 to 1.20' "$folder/table" "$work/merged.tsv"
expect 0 "$(printf 'point\tgrowth\tworking\t1000\t1.14')" cat "$work/merged.tsv"
"$folder/merge" "$work/missed.tsv" "$work/met.tsv" "$work/missed.tsv" >"$work/merged.tsv"
expect 1 'MISSED (1 of 3 runs meet it)' "$folder/table" "$work/merged.tsv"
expect 2 'no rows' "$folder/merge" "$work/empty.tsv"
sed -i s/some/another/ "$work/near.tsv"
expect 2 'different machines' "$folder/merge" "$work/met.tsv" "$work/near.tsv"

exit "$failures"

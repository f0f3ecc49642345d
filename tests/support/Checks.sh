# shellcheck shell=bash
# What a test script begins with, sourced: a folder that goes with it, and a word for what is wrong. It ends with
# exit "$failures".
# shellcheck disable=SC2034  # whoever sources this uses them
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
wrong() {
    echo "$*"
    failures=1
}

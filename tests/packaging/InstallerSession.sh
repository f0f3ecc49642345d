#!/usr/bin/env bash
# Runs the installer's tests on a desktop of their own, with two installers: that of this version, and one of an
# earlier version whose manual had a page more.
#
#   InstallerSession.sh KESTRELGUARD.EXE TESTS.EXE [ARGUMENTS...]
set -euo pipefail
project=$(cd "$(dirname "$0")/../.." && pwd)
exe=$(readlink -f "$1")
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$project/scripts/package" "$exe" "$work/new"
mkdir "$work/tree"
cp -r "$project"/{CMakeLists.txt,LICENSE,cmake,docs,packaging,res,scripts} "$work/tree"
printf '# A page of old\n\nGone.\n' >"$work/tree/docs/manual/old-page.md"
"$work/tree/scripts/package" "$exe" "$work/old" 1.9.7

KESTRELGUARD_SETUP=$(echo "$work"/new/*-setup.exe)
KESTRELGUARD_OLD_SETUP=$(echo "$work"/old/*-setup.exe)
export KESTRELGUARD_SETUP KESTRELGUARD_OLD_SETUP
# Wine would write menu entries for the desktop of the machine.
export WINEDLLOVERRIDES='winemenubuilder.exe=d'
"$project/scripts/wine-session" --time 1200 --visible "$work" -- "$@"

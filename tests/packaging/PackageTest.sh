#!/usr/bin/env bash
# Two runs give the same packages, whatever the machine's clock, zone, language and permissions; the zip holds what it
# should; the checksums are right.
#
#   PackageTest.sh KESTRELGUARD.EXE
set -euo pipefail
project=$(cd "$(dirname "$0")/../.." && pwd)
exe=$(readlink -f "$1")
. "$project/tests/support/Checks.sh"

version=$(sed -n 's/^project(kestrelguard VERSION \([0-9.]*\).*/\1/p' "$project/CMakeLists.txt")
"$project/scripts/package" "$exe" "$work/first"
cp "$exe" "$work/kestrelguard.exe"
touch --date='1999-12-31 23:59:58' "$work/kestrelguard.exe"
(umask 077 && cd / && TZ=Asia/Tokyo LC_ALL=C.UTF-8 TMPDIR=$work "$project/scripts/package" "$work/kestrelguard.exe" "$work/second")
for file in "kestrelguard-$version.zip" "kestrelguard-$version-setup.exe" SHA256SUMS; do
    cmp "$work/first/$file" "$work/second/$file" || wrong "$file differs between two runs"
done
[ "$(find "$work/first" -type f | wc -l)" = 3 ] || wrong "there are other files than the three"
# They would differ if anything in them did.
SOURCE_DATE_EPOCH=1000000000 "$project/scripts/package" "$exe" "$work/third"
for file in "kestrelguard-$version.zip" "kestrelguard-$version-setup.exe"; do
    ! cmp -s "$work/first/$file" "$work/third/$file" || wrong "$file does not carry the time it was told"
done

[ "$(stat -c %s "$exe")" -le 524288 ] || wrong "the program is larger than 512 KB; docs/architecture.md says what keeps it small"

(cd "$work/first" && cp "$exe" kestrelguard.exe && sha256sum --quiet -c SHA256SUMS) || wrong "the checksums are not right"

mkdir "$work/zip"
python3 -m zipfile -e "$work/first/kestrelguard-$version.zip" "$work/zip"
cd "$work/zip/kestrelguard-$version" || exit 1
cmp kestrelguard.exe "$exe" || wrong "the program in the zip is another one"
tr -d '\r' <LICENSE.txt | cmp - "$project/LICENSE" || wrong "the licence in the zip is another one"
tr -d '\r' <SHA256SUMS.txt | sha256sum --quiet -c || wrong "the checksums in the zip are not right"
pages=$(cd "$project/docs/manual" && echo *.md)
for page in $pages; do
    [ -s "manual/${page%.md}.html" ] || wrong "the manual's page ${page%.md} is not in the zip"
done
others=$(find . -type f ! -path './manual/*.html' ! -path './manual/pictures/*.png' | sort | tr '\n' ' ')
[ "$others" = './LICENSE.txt ./SHA256SUMS.txt ./kestrelguard.exe ' ] || wrong "the zip holds: $others"

exit "$failures"

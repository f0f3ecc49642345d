#!/usr/bin/env bash
# The manual as HTML has sound markup and links, and the check that says so finds what is not.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
scripts=$here/../../scripts
project=$(cd "$here/../.." && pwd)
. "$project/tests/support/Checks.sh"

"$scripts/manual-html" "$work/manual"
"$scripts/check-html" "$work/manual" || failures=1

# finds TEXT PAGE COMMAND: with the page changed by the sed command the check says TEXT.
finds() {
    rm -rf "$work/changed"
    cp -r "$work/manual" "$work/changed"
    sed -i "$3" "$work/changed/$2"
    if cmp -s "$work/manual/$2" "$work/changed/$2"; then
        wrong "changes nothing: $3"
    elif "$scripts/check-html" "$work/changed" >"$work/said" 2>&1; then
        wrong "passed, but should be found: $1"
    elif ! grep -qF -- "$1" "$work/said"; then
        echo "did not say '$1' but:" && cat "$work/said" && failures=1
    fi
}

finds '</p> where <b> is open' cache-window.html '0,/<\/b>/s/<\/b>//'
finds '<blink> does not belong into <p>' popups.html '0,/<p>/s/<p>/<p><blink><\/blink>/'
finds '<p> does not belong into <p>' popups.html '0,/<p>/s/<p>/<p><p><\/p>/'
finds '<h2> may not have class here' popups.html '0,/<h2 /s/<h2 /<h2 class="big" /'
finds "the anchor 'the-box' is no name, or is there already" popups.html 's/id="the-counters"/id="the-box"/'
finds '<img> has no alt' popups.html 's/ alt="The prompt"//'
finds 'a special character stands in the text' popups.html '0,/<p>/s/<p>/<p>this \& that /'
finds "there is no character '&nonsense;'" popups.html '0,/<p>/s/<p>/<p>\&nonsense; /'
finds 'text straight in <ul>' index.html 's/<ul>/<ul>loose/'
finds 'leads to gone.html, which is not there' index.html 's/href="popups.html"/href="gone.html"/'
finds 'popups.html: no link leads here' index.html '/popups.html/s/<a href="popups[^>]*>//g'
finds 'leads to the anchor files.html#gone' files.html 's/<h1 /<p><a href="files.html#gone">x<\/a><\/p><h1 /'
finds 'which is no picture' popups.html 's/pictures\/prompt.png/pictures\/gone.png/'
finds 'but it is' popups.html 's/width="[0-9]*"/width="9"/'
finds 'has 0 <title>, not one' popups.html 's/<title>.*<\/title>//'
finds 'does not begin as HTML 4.01' popups.html '1d'
finds 'is not plain ASCII' popups.html 's/<\/html>/\xe9/'

exit "$failures"

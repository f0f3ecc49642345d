# shellcheck shell=bash disable=SC2034
# What the scripts share. Sourced, never run: `. "$(dirname "$0")/common.sh"`.
#
#   root            the folder of the project
#   cache           the user's cache folder of the project
#   say TEXT...     one line on what is being done (standard error)
#   die TEXT...     one line on what is wrong, then the end
#   quietly LOG CMD runs CMD with its output in LOG, shows that it is alive every 15 seconds, and the log's end
#                   when it fails
#   as_root CMD     runs CMD as root, through sudo where needed
#   locked FILE CMD runs CMD while nobody else holds FILE
#   unfinished TO   a new empty folder beside TO, to be renamed to TO when it is whole
#   build PRESET    configures and builds the CMake preset

set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
cache=${XDG_CACHE_HOME:-${HOME:-/root}/.cache}/kestrelguard

say() { printf '%s: %s\n' "${0##*/}" "$*" >&2; }

die() {
    printf '%s: error: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

quietly() {
    local log=$1 pid start=$SECONDS status=0
    shift
    mkdir -p "$(dirname "$log")"
    "$@" >"$log" 2>&1 </dev/null &
    pid=$!
    while kill -0 "$pid" 2>/dev/null; do
        sleep 0.2
        if [ $((SECONDS - start)) -ge 15 ]; then
            start=$SECONDS
            say "still at it: $(tail -n 1 "$log" 2>/dev/null | tr -dc '[:print:]' | cut -c1-100)"
        fi
    done
    wait "$pid" || status=$?
    [ "$status" = 0 ] || tail -n 30 "$log" >&2
    return "$status"
}

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "needs root or sudo to run: $*"
    fi
}

locked() {
    local file=$1
    shift
    mkdir -p "$(dirname "$file")"
    if ! command -v flock >/dev/null; then
        "$@"
        return
    fi
    (
        if ! flock -n 9; then
            say "waiting for another run to finish (${file##*/})"
            flock 9
        fi
        "$@" 9>&-
    ) 9>"$file"
}

unfinished() {
    # What a run that was killed has left. Its helpers may write on for a while, so nobody uses it again.
    find "$(dirname "$1")" -maxdepth 1 -name "$(basename "$1").part.*" -mmin +60 -exec rm -rf {} +
    local part
    part=$(mktemp -d "$1.part.XXXXXX")
    chmod 755 "$part"
    echo "$part"
}

build() {
    local preset=$1 targets=()
    shift
    [ $# = 0 ] || targets=(--target "$@")
    say "building $preset"
    quietly "$root/build/$preset.configure.log" cmake --preset "$preset" || die "could not configure $preset"
    quietly "$root/build/$preset.build.log" cmake --build --preset "$preset" "${targets[@]}" || die "could not build $preset"
}

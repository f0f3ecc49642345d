#!/usr/bin/env bash
# A Wine session passes exit codes through, serves programs from outside, and leaves nothing behind.
set -euo pipefail
project=$(cd "$(dirname "$0")/../.." && pwd)
run=$project/scripts/wine-session
. "$project/tests/support/Checks.sh"

status=0
"$run" cmd /c exit 42 || status=$?
[ "$status" = 42 ] || wrong "exit code 42 came through as $status"

# From any folder.
for folder in / /tmp /usr/share "$work"; do
    status=0
    (cd "$folder" && "$run" cmd /c exit 42) || status=$?
    [ "$status" = 42 ] || wrong "started in $folder, exit code 42 came through as $status"
done
(cd "$work" && "$run" cmd /c 'echo seen>seen.txt') && grep -q seen "$work/seen.txt" ||
    wrong "a program cannot write in the folder it was started from"

# From outside: two programs one after the other see the same files, a variable of the caller reaches them, the
# desktop has its size, and the command's own exit code is the session's.
cat >"$work/outside" <<'SCRIPT'
set -eu
wine=$KESTRELGUARD_SESSION/wine
SEEN=kestrel "$wine" cmd /c 'echo %SEEN%>c:\seen.txt'
"$wine" cmd /c 'type c:\seen.txt' | grep -q kestrel
xwininfo -root -tree | grep -qi 'Wine desktop".*800x600+0+0'
"$wine" reg query 'HKCU\Control Panel\Desktop' /v LogPixels | grep -q 0x90
echo "$KESTRELGUARD_SESSION" >"$1"
exit 9
SCRIPT
status=0
"$run" --size 800x600 --dpi 144 --outside bash "$work/outside" "$work/session" || status=$?
[ "$status" = 9 ] || wrong "the outside command's exit code 9 came through as $status"
[ -s "$work/session" ] && [ ! -e "$(cat "$work/session")" ] || wrong "the session's folder was not taken away"

# A network of its own: port 80 is free, nothing outside is there, and the session's names are those given.
echo '127.0.0.1 www.kestrelguard.example' >"$work/hosts"
cat >"$work/network" <<'SCRIPT'
set -eu
[ "$("$KESTRELGUARD_SESSION/inside" sh -c 'tail -n +3 /proc/net/dev | cut -d: -f1 | tr -d " "')" = lo ]
"$KESTRELGUARD_SESSION/wine" cmd /c 'type z:\etc\hosts' | grep -q 'www.kestrelguard.example'
SCRIPT
"$run" --network --etc "hosts=$work/hosts" --outside bash "$work/network" || wrong "the session's own network is not as wanted"

# The time limit ends a program that does not end.
status=0
"$run" --time 2 --outside sleep 60 2>"$work/said" || status=$?
[ "$status" = 124 ] || wrong "the time limit gave exit code $status"
grep -q 'time limit of 2 s' "$work/said" || wrong "the time limit was not mentioned"

# A signal ends everything, the X display included.
# shellcheck disable=SC2016 # expanded in the session
"$run" --outside bash -c 'echo "$DISPLAY $KESTRELGUARD_SESSION" >"$1.part"; mv "$1.part" "$1"; exec sleep 60' \
    bash "$work/signal" &
pid=$!
for _ in $(seq 600); do
    [ ! -f "$work/signal" ] || break
    sleep 0.1
done
read -r display session <"$work/signal"
kill -TERM "$pid"
status=0
wait "$pid" || status=$?
[ "$status" = 143 ] || wrong "a terminated session ended with $status"
[ ! -e "$session" ] || wrong "a terminated session left $session"
if DISPLAY=$display xwininfo -root >/dev/null 2>&1; then wrong "a terminated session left display $display"; fi

status=0
"$run" --nonsense 2>/dev/null || status=$?
[ "$status" = 1 ] || wrong "an unknown option gave exit code $status"

exit "$failures"

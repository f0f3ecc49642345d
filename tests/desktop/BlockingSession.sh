#!/usr/bin/env bash
# Runs the site filter's tests that need a web server: Debian's nginx on a free port of loopback.
#
#   BlockingSession.sh TESTS.EXE [ARGUMENTS...]
#
# The tests find in the environment
#   KESTRELGUARD_SITE      the server's address, without a slash at its end
#   KESTRELGUARD_SITE_LOG  the file of its requests, one a line
set -euo pipefail
project=$(cd "$(dirname "$0")/../.." && pwd)

folder=$(mktemp -d)
server=''
cleanup() {
    [ -z "$server" ] || kill "$server" 2>/dev/null || true
    [ -z "$server" ] || wait "$server" 2>/dev/null || true
    rm -rf "$folder"
}
trap cleanup EXIT

mkdir -p "$folder/web/knitting" "$folder/web/city"
for page in knitting/index.html knitting/1.html knitting/2.html city/Casino.html; do
    echo '<html><head><title>A page</title></head><body>A page</body></html>' >"$folder/web/$page"
done

# Starts the server on a port; fails when another program has it.
serve() {
    cat >"$folder/nginx.conf" <<CONF
daemon off;
worker_processes 1;
pid $folder/nginx.pid;
error_log $folder/error.log;
user root;
events {}
http {
    access_log $folder/access.log;
    client_body_temp_path $folder/body;
    proxy_temp_path $folder/proxy;
    fastcgi_temp_path $folder/fastcgi;
    uwsgi_temp_path $folder/uwsgi;
    scgi_temp_path $folder/scgi;
    types { text/html html; }
    server {
        listen 127.0.0.1:$1;
        root $folder/web;
    }
}
CONF
    rm -f "$folder/nginx.pid"
    PATH=$PATH:/usr/sbin nginx -p "$folder" -c "$folder/nginx.conf" 2>>"$folder/error.log" &
    server=$!
    for _ in $(seq 200); do
        [ ! -s "$folder/nginx.pid" ] || return 0
        kill -0 "$server" 2>/dev/null || return 1
        sleep 0.05
    done
    return 1
}

started=no
for _ in $(seq 20); do
    port=$((20000 + RANDOM % 12000))
    if serve "$port"; then
        started=yes
        break
    fi
done
if [ "$started" = no ]; then
    tail -n 5 "$folder/error.log" >&2
    exit 1
fi

export KESTRELGUARD_SITE=http://127.0.0.1:$port
export KESTRELGUARD_SITE_LOG=Z:$folder/access.log
"$project/scripts/wine-session" --time 300 --visible "$folder" -- "$@"

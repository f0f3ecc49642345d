#!/usr/bin/env bash
# Runs the update check's desktop tests: a session with a network and host names of its own, and a real web server on
# its port 80.
#
#   UpdateSession.sh TESTS.EXE [ARGUMENTS...]
#
# The tests find in $KESTRELGUARD_UPDATE_SESSION
#   hosts         the host names that programs see; may be rewritten in place
#   web/          what the web server on 127.0.0.1 serves
#   access.log    its requests, one a line: status|request|Accept|Host|Referer|User-Agent
# Names that are not in the file are asked of a name server on 127.0.0.9, which is not there unless a test makes it.
set -euo pipefail
project=$(cd "$(dirname "$0")/../.." && pwd)

if [ -z "${KESTRELGUARD_UPDATE_SESSION:-}" ]; then
    KESTRELGUARD_UPDATE_SESSION=$(mktemp -d)
    export KESTRELGUARD_UPDATE_SESSION
    trap 'rm -rf "$KESTRELGUARD_UPDATE_SESSION"' EXIT
    echo '127.0.0.1 localhost' >"$KESTRELGUARD_UPDATE_SESSION/hosts"
    echo 'nameserver 127.0.0.9' >"$KESTRELGUARD_UPDATE_SESSION/resolv.conf"
    "$project/scripts/wine-session" --time 600 --network \
        --etc "hosts=$KESTRELGUARD_UPDATE_SESSION/hosts" --etc "resolv.conf=$KESTRELGUARD_UPDATE_SESSION/resolv.conf" \
        --visible "$KESTRELGUARD_UPDATE_SESSION" --outside bash "$0" "$@"
    exit
fi

# From here on inside the session.
cd "$KESTRELGUARD_UPDATE_SESSION"
mkdir -p web/kg/login
cat >nginx.conf <<CONF
daemon off;
worker_processes 1;
pid $PWD/nginx.pid;
error_log $PWD/error.log;
user root;
events {}
http {
    log_format fields '\$status|\$request|\$http_accept|\$http_host|\$http_referer|\$http_user_agent';
    access_log $PWD/access.log fields;
    client_body_temp_path $PWD/body;
    proxy_temp_path $PWD/proxy;
    fastcgi_temp_path $PWD/fastcgi;
    uwsgi_temp_path $PWD/uwsgi;
    scgi_temp_path $PWD/scgi;
    server {
        listen 127.0.0.1:80;
        root $PWD/web;
    }
}
CONF
PATH=$PATH:/usr/sbin "$KESTRELGUARD_SESSION/inside" nginx -p "$PWD" -c "$PWD/nginx.conf" 2>>error.log &
server=$!
trap 'kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true' EXIT
for _ in $(seq 200); do
    [ ! -s nginx.pid ] || break
    kill -0 "$server" 2>/dev/null || break
    sleep 0.05
done
[ -s nginx.pid ] || {
    cat error.log
    exit 1
}
"$KESTRELGUARD_SESSION/wine" "$@"

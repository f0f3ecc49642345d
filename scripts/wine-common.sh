# shellcheck shell=bash disable=SC2034,SC2154
# How a Windows program is run, shared by scripts/wine-prefix and scripts/wine-session. Sourced after common.sh.
#
#   find_wine            sets wine_kind (host or root) and wine_place (path of the program, folder of the root)
#   box FOLDER...        sets the array `boxed`: what stands in front of a command of the private root; FOLDERs
#                        are visible inside under their own names and can be written; /tmp is empty; /etc/hosts
#                        and /etc/resolv.conf are there to be bound over. With a host Wine the box holds this machine
#   template             the folder of the template prefix for the Wine that find_wine found

find_wine() {
    local line
    line=$("$root/scripts/wine-root") || exit 1
    wine_kind=${line%% *}
    wine_place=${line#* }
}

box() {
    boxed=(bwrap --unshare-pid --die-with-parent)
    # An ordinary user is root inside: otherwise the box is two user name spaces deep and cannot be joined later.
    [ "$(id -u)" = 0 ] || boxed+=(--unshare-user --uid 0 --gid 0)
    if [ "$wine_kind" = host ]; then
        boxed+=(--dev-bind / / --proc /proc)
        return
    fi
    boxed+=(--tmpfs /)
    local entry name
    [ -e "$wine_place/etc/hosts" ] || echo '127.0.0.1 localhost' >"$wine_place/etc/hosts"
    [ -e "$wine_place/etc/resolv.conf" ] || : >"$wine_place/etc/resolv.conf"
    for entry in "$wine_place"/*; do
        name=/${entry##*/}
        if [ -L "$entry" ]; then
            boxed+=(--symlink "$(readlink "$entry")" "$name")
        else
            case $name in
            /bin | /etc | /lib* | /sbin | /usr) boxed+=(--ro-bind "$entry" "$name") ;;
            esac
        fi
    done
    boxed+=(--proc /proc --dev /dev --tmpfs /tmp --tmpfs /run --ro-bind-try /tmp/.X11-unix /tmp/.X11-unix)
    for entry in "$@"; do boxed+=(--bind "$entry" "$entry"); done
}

template() {
    local recipe
    recipe=$({
        echo "$wine_kind $wine_place"
        cat "$root/scripts/wine-prefix" "$root/scripts/wine-prefix.reg"
    } | cksum | tr ' ' '-')
    echo "$cache/wine-prefix-$recipe"
}

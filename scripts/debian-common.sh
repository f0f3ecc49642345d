# shellcheck shell=bash disable=SC2154
# Packages of Debian releases other than this machine's, taken from the mirror that its own package manager uses.
# Sourced after common.sh.
#
#   archives                   the machine's Debian archives as lines "OPTIONS|URI|SUITE", whatever their form; no
#                              security archives, whose index for another architecture may lag behind
#   unpack_packages SUITE FOLDER PACKAGE...
#                              unpacks packages of that release into the new FOLDER, as they are: nothing is installed,
#                              nothing that they depend on comes along, no root is needed

archives() {
    local found
    found=$(all_sources | grep -vE -- '-security|security\.|-updates|-backports|cdrom:' || true)
    [ -n "$found" ] || die "found no Debian archive among this machine's package sources"
    echo "$found"
}

all_sources() {
    cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null | awk '
        $1 == "deb" {
            options = ""
            if (match($0, /\[[^]]*\]/)) {
                inside = substr($0, RSTART + 1, RLENGTH - 2)
                sub(/\[[^]]*\]/, "")
                count = split(inside, part, " ")
                for (i = 1; i <= count; i++) if (part[i] ~ /^(signed-by|trusted)=/) options = options " " part[i]
            }
            print options "|" $2 "|" $3
        }'
    cat_stanzas /etc/apt/sources.list.d/*.sources | awk '
        BEGIN { RS = ""; FS = "\n" }
        {
            types = uris = suites = options = ""; on = 1
            for (i = 1; i <= NF; i++) {
                line = $i
                if (line ~ /^#/) continue
                name = tolower(line); sub(/:.*/, "", name)
                value = line; sub(/^[^:]*:[ \t]*/, "", value)
                if (name == "types") types = " " value " "
                if (name == "uris") uris = value
                if (name == "suites") suites = value
                if (name == "enabled" && tolower(value) == "no") on = 0
                if (name == "signed-by" && value ~ /^\//) options = options " signed-by=" value
                if (name == "trusted" && tolower(value) == "yes") options = options " trusted=yes"
            }
            if (!on || types !~ / deb /) next
            countUris = split(uris, uri, " "); countSuites = split(suites, suite, " ")
            for (u = 1; u <= countUris; u++) for (s = 1; s <= countSuites; s++) print options "|" uri[u] "|" suite[s]
        }'
}

# The given files with an empty line after each, so that stanzas of two files never run together.
cat_stanzas() {
    local file
    for file in "$@"; do
        [ -r "$file" ] || continue
        cat "$file"
        printf '\n\n'
    done
}

unpack_packages() {
    local suite=$1 folder=$2 options uri tried=' ' part log=$cache/${2##*/}.log
    shift 2
    [ ! -d "$folder" ] || return 0
    while IFS='|' read -r options uri _; do
        case $tried in *" $uri "*) continue ;; esac
        tried="$tried$uri "
        part=$(unfinished "$folder")
        if quietly "$log" fetch_and_unpack "$part" "deb [arch=amd64$options] $uri $suite main" "$@"; then
            rm -rf "$part/.apt"
            mv "$part" "$folder"
            return
        fi
        rm -rf "$part"
    done < <(archives)
    die "could not get $* of $suite; $log tells more"
}

# apt with a state of its own in FOLDER/.apt, which knows the one SOURCE: unpacks packages into FOLDER.
fetch_and_unpack() {
    local folder=$1 source=$2 own deb
    shift 2
    own=$folder/.apt
    mkdir -p "$own/state/lists/partial" "$own/cache/archives/partial" "$own/debs"
    echo "$source" >"$own/sources.list"
    : >"$own/state/status"
    local apt=(apt-get -o "Dir::Etc::SourceList=$own/sources.list" -o Dir::Etc::SourceParts=- -o "Dir::State=$own/state"
        -o "Dir::State::status=$own/state/status" -o "Dir::Cache=$own/cache" -o APT::Sandbox::User=root
        -o Acquire::Languages=none -o APT::Architecture=amd64 -o APT::Architectures::=amd64)
    "${apt[@]}" update && (cd "$own/debs" && "${apt[@]}" download "$@") || return
    for deb in "$own"/debs/*.deb; do dpkg-deb --extract "$deb" "$folder" || return; done
}

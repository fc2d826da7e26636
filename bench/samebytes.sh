#!/bin/sh
# Runs two builds of parvigif over copies of a folder and compares every byte they leave behind, backups
# included. For changes that are to make the program faster and nothing else.
#
#   bench/samebytes.sh OLD_PARVIGIF NEW_PARVIGIF FOLDER [OPTION...]
#
# Status 0: all the same.
set -eu
[ $# -ge 3 ] || { sed -n '2,6s/^# \{0,1\}//p' "$0" >&2; exit 2; }
old=$(realpath "$1") new=$(realpath "$2") folder=$(realpath "$3")
shift 3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

run() { # program, name of its side
    program=$1 side=$2
    shift 2
    mkdir "$work/$side"
    cp -R "$folder" "$work/$side/gifs"
    chmod -R u+w "$work/$side/gifs"
    XDG_CONFIG_DIRS="$work/$side" XDG_CONFIG_HOME="$work/$side" XDG_STATE_HOME="$work/$side" \
        "$program" -q "$@" "$work/$side/gifs/" >"$work/$side.out" 2>&1 || true
    sed -i "s|$work/$side/||g" "$work/$side.out"
}
run "$old" old "$@"
run "$new" new "$@"
diff -r "$work/old/gifs" "$work/new/gifs"
diff "$work/old.out" "$work/new.out"
echo "$(find "$work/new/gifs" -type f | wc -l) files are the same, $(cat "$work/new/gifs/"*.gif | wc -c) bytes of GIFs"

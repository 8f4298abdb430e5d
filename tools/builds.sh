# Where builds are made, and how; to be read by a script that has set -eu and these:
#   root   the checkout's folder, with links resolved
#   name   the script's name, for its messages
# shellcheck shell=sh

tell() {
    # shellcheck disable=SC2154 # the reader's
    printf '%s: %s\n' "$name" "$*" >&2
}

# A folder can be built in if all that is in it is the user's to change, or if it can be made.
can_build_in() {
    if [ -e "$1" ]; then
        [ -d "$1" ] && [ -z "$(find "$1" ! -type l ! -writable -print -quit 2>&1)" ]
    else
        [ -w "$(dirname -- "$1")" ]
    fi
}

# Sets MURL_BUILD to the folder that has a folder for each preset, and makes it. In this order: the one that the
# user has set; build in the checkout; where that is somebody else's, one in the user's own cache, by the
# checkout's path.
# shellcheck disable=SC2154 # root is the reader's
find_build_folder() {
    if [ -z "${MURL_BUILD-}" ]; then
        MURL_BUILD=$root/build
        can_build_in "$MURL_BUILD" ||
            MURL_BUILD=${XDG_CACHE_HOME:-${HOME:-}/.cache}/murlconv/$(printf %s "$root" | cksum | cut -d ' ' -f 1)
    fi
    if ! mkdir -p "$MURL_BUILD" 2>/dev/null || ! can_build_in "$MURL_BUILD"; then
        tell "can't build in $MURL_BUILD; set MURL_BUILD to a folder of yours"
        exit 1
    fi
    MURL_BUILD=$(cd -P -- "$MURL_BUILD" && pwd)
    export MURL_BUILD
}

# True if a preset's folder was made at its place for this checkout. CMake refuses one that was moved.
made_here() {
    LC_ALL=C grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$1/CMakeCache.txt" 2>/dev/null &&
        LC_ALL=C grep -qxF "CMAKE_CACHEFILE_DIR:INTERNAL=$(cd -P -- "$1" && pwd)" "$1/CMakeCache.txt"
}

# Builds a preset: all of it, or one target. What is printed meanwhile goes to MURL_BUILD/PRESET.log, and is shown
# only if it fails.
#   build_preset PRESET [TARGET]
build_preset() (
    folder=$MURL_BUILD/$1
    log=$folder.log
    if [ -e "$folder/CMakeCache.txt" ] && ! made_here "$folder"; then
        tell "$folder was made for another place; it is made anew"
        rm -rf "$folder"
    fi
    rm -f "$log"
    cd "$root" || exit
    if ! { cmake --preset "$1" -B "$folder" && cmake --build "$folder" --target "${2:-all}"; } >"$log" 2>&1 </dev/null; then
        cat "$log" >&2
        tell "$1 could not be built"
        exit 1
    fi
)

# True if a preset's program is there, made for this checkout, and newer than all that it is made of.
up_to_date() {
    [ -x "$1/$2" ] && made_here "$1" && [ -z "$(find "$root/src" "$root/CMakeLists.txt" \
        "$root/CMakePresets.json" -newer "$1/$2" -print -quit)" ]
}

# Sets binary to the path of a preset's program, for which the packages of some groups are needed. It is built
# unless it is up to date; the build of another user, or of the folder's owner, will do. Two that come at the same
# time don't build in each other's way.
#   find_program PRESET PROGRAM GROUP...
find_program() {
    preset=$1
    program=$2
    shift 2
    binary=${MURL_BUILD:-$root/build}/$preset/$program
    ! up_to_date "${binary%/*}" "$program" || return 0
    find_build_folder
    binary=$MURL_BUILD/$preset/$program
    (
        flock 9
        ! up_to_date "${binary%/*}" "$program" || exit 0
        "$root/tools/packages.sh" "$@"
        tell "building $program in ${binary%/*}"
        build_preset "$preset" "$program"
        touch "$binary"
    ) 9>"$MURL_BUILD/lock"
}

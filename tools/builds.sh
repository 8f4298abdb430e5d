# Where builds are made, and how; to be sourced after arguments.sh by a script that has set
#   root   the checkout's folder, with links resolved
# shellcheck shell=sh

# Sets MURL_BUILD to the folder that has a folder for each preset, and makes it: the one that the user has set, or
# build in the checkout.
# shellcheck disable=SC2154 # the caller sets root
find_build_folder() {
    MURL_BUILD=${MURL_BUILD:-$root/build}
    if ! mkdir -p -- "$MURL_BUILD" 2>/dev/null || [ ! -w "$MURL_BUILD" ]; then
        tell "can't write to $MURL_BUILD; set MURL_BUILD to a folder of yours"
        exit 1
    fi
    MURL_BUILD=$(cd -P -- "$MURL_BUILD" && pwd)
    export MURL_BUILD
    for path in "$root" "$MURL_BUILD"; do
        case $path in
        *[][#\;\\]*)
            tell "can't build where a path has one of [ ] # ; \\: $path"
            exit 1
            ;;
        esac
    done
}

# True if a preset's folder was made at its path for this checkout. CMake refuses one that was moved.
made_here() {
    LC_ALL=C grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$1/CMakeCache.txt" 2>/dev/null &&
        LC_ALL=C grep -qxF "CMAKE_CACHEFILE_DIR:INTERNAL=$(cd -P -- "$1" && pwd)" "$1/CMakeCache.txt"
}

# Prepares a preset's build. Options for cmake are in configure_options. What is printed meanwhile goes to
# MURL_BUILD/PRESET.log, and is shown only if it fails.
configure() (
    folder=$MURL_BUILD/$1
    if [ -e "$folder/CMakeCache.txt" ] && ! made_here "$folder"; then
        tell "$folder was made for another path; it is made again"
        rm -rf "$folder"
    fi
    cd "$root" || exit
    # shellcheck disable=SC2086 # options without a blank
    cmake --preset "$1" -B "$folder" ${configure_options-} >"$folder.log" 2>&1 </dev/null && exit
    cat "$folder.log" >&2
    tell "$folder could not be prepared"
    exit 1
)

# Builds a preset: all of it, or one target. Says so, as it may take minutes; on a terminal ninja counts its steps.
#   build_preset PRESET [TARGET]
build_preset() (
    folder=$MURL_BUILD/$1
    tell "building ${2:-all} in $folder"
    configure "$1" || exit
    set -- cmake --build "$folder" --target "${2:-all}"
    if [ -t 2 ]; then
        "$@" >&2 </dev/null && exit
    else
        "$@" >>"$folder.log" 2>&1 </dev/null && exit
        cat "$folder.log" >&2
    fi
    tell "$folder could not be built"
    exit 1
)

# True if a preset's program exists, was made for this checkout, and is newer than all that it is made of.
up_to_date() {
    [ -x "$1/$2" ] && made_here "$1" && [ -z "$(find "$root/src" "$root/docs" "$root/CMakeLists.txt" \
        "$root/CMakePresets.json" -newer "$1/$2" -print -quit)" ]
}

# Sets binary to the path of a preset's program, for which the packages of some groups are needed. It is built
# unless it is up to date. Two that come at the same time don't build in each other's way.
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
        if ! flock -n 9; then
            tell "waiting for another build in $MURL_BUILD"
            flock 9
        fi
        ! up_to_date "${binary%/*}" "$program" || exit 0
        "$root/tools/packages.sh" "$@"
        build_preset "$preset" "$program"
        touch "$binary"
    ) 9>"$MURL_BUILD/lock"
}

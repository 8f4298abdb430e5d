# What the steps of ./check share; to be sourced by a script in tools that runs at the checkout's root with set -eu. It
# sets root and MURL_BUILD, so that a step can also be run alone. The script takes no arguments, or as many as it has
# set in most.
# shellcheck shell=sh

root=$(pwd -P)
script=$root/tools/${0##*/}
. tools/arguments.sh
. tools/builds.sh
arguments "${most:-0}" "$@"
find_build_folder
# A warning is an error in all that a step builds, so that a step that passes here passes everywhere.
configure_options=-DCMAKE_COMPILE_WARNING_AS_ERROR=ON
# The same messages and the same order of names for everybody; and wine encodes file names by it.
export LC_ALL=C.UTF-8

fail() {
    tell "$*"
    exit 1
}

# Installs a group of packages. If that can't be done the rest of the step is skipped.
#   need GROUP CONSEQUENCE
need() {
    tools/packages.sh "$1" && return
    skip "$2: the packages for $1 are not there"
}

# Sets modules to a folder with a package from npm, NAME@VERSION, and what it needs. If it can't be had the rest of the
# step is skipped.
#   need_npm PACKAGE CONSEQUENCE
need_npm() {
    { command -v node && command -v npm; } >/dev/null || need node "$2"
    modules=$MURL_BUILD/npm/$1/node_modules
    [ ! -e "${modules%/*}/complete" ] || return 0
    mkdir -p "${modules%/*}"
    (cd "${modules%/*}" && PLAYWRIGHT_SKIP_BROWSER_DOWNLOAD=1 npm install --no-audit --no-fund --prefix . "$1" \
        && touch complete) >"$MURL_BUILD/npm.log" 2>&1 </dev/null || skip "$2: $1 can not be had from npm"
}

# Gets what drives a page that murlreport's build makes: Chromium, and playwright-core in modules.
#   need_browser CONSEQUENCE
need_browser() {
    need report "$1"
    need chromium "$1"
    need_npm playwright-core@1.58.0 "$1" # later ones want a newer node than Debian's
}

# Ends a step that can't be run to its end. ./check tells the reason in its last line.
skip() {
    tell "skipped: $1"
    printf '%s\n' "$1" >"$MURL_BUILD/skip_reason"
    exit 77
}

# Something that a step hasn't done on purpose. ./check tells it in its last line.
leave_out() {
    printf '%s\n' "$1" >>"$MURL_BUILD/left_out"
}

# A file with its LF as CR LF.
to_crlf() {
    perl -pe 's/\n/\r\n/' "$1"
}

# What the steps of ./check share; to be read by a script that has set -eu and stands at the checkout's root.
# It sets root and MURL_BUILD, so that a step can also be run alone.
# shellcheck shell=sh

name=$(basename -- "$0" .sh)
root=$(pwd -P)
. tools/builds.sh
find_build_folder
# The same messages and the same order of names for everybody; and wine spells file names by it.
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

# Ends a step that can't be run to its end. ./check tells the reason in its last line.
skip() {
    tell "skipped: $1"
    printf '%s\n' "$1" >"$MURL_BUILD/skip_reason"
    exit 77
}

# A file with its LF as CR LF.
to_crlf() {
    perl -pe 's/\n/\r\n/' "$1"
}

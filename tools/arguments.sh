# The command line of a script; to be sourced by one that runs at the checkout's root with set -eu and has set
#   script    its own path, with links resolved; the comment at its head is its usage
#   options   the options that it takes itself, if any
# shellcheck shell=sh

# shellcheck disable=SC2154 # the caller sets script
name=$(basename -- "$script" .sh)
[ "$name" != run ] || name=$(basename -- "${script%/run}")/run

tell() {
    printf '%s: %s\n' "$name" "$*" >&2
}

usage() {
    sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$script"
}

# Ends the script: something on its command line means nothing.
refuse() {
    tell "$1"
    usage >&2
    exit 2
}

# Sets dist to the folder to write to: the one that was named, seen from where the script was started, or else dist in
# the checkout. The script has changed its folder once.
# shellcheck disable=SC2034 # for the script
find_dist() {
    case ${1-} in
    '') dist=dist ;;
    /*) dist=$1 ;;
    *) dist=$OLDPWD/$1 ;;
    esac
}

# Ends the script for --help, for an option that it doesn't take, and for more words than it takes.
#   arguments MOST "$@"
arguments() {
    most_words=$1
    shift
    for word in "$@"; do
        case " ${options-} " in
        *" $word "*) continue ;;
        esac
        case $word in
        --help)
            usage
            exit 0
            ;;
        -*) refuse "there is no option $word" ;;
        esac
    done
    [ $# -le "$most_words" ] || refuse "too many arguments: $*"
}

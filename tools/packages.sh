#!/bin/sh
# The one list of Debian packages. Installs what is missing of the groups that are named:
#   tools/packages.sh build          what ./convert builds with
#   tools/packages.sh build check    and what the tests need, and so on
# Says first how many packages that are and how large. Installs as root or through sudo; without either it prints the
# line to run and fails.
set -eu
script=$(readlink -f -- "$0")
cd "${script%/*}/.."
. tools/arguments.sh
arguments 99 "$@"
[ $# -gt 0 ] || refuse 'no group is named'

group_packages() {
    case $1 in
    build) echo g++ cmake ninja-build ;;
    check) group_packages report && echo git libgtest-dev ;;
    report) echo libcli11-dev libfmt-dev nlohmann-json3-dev ;;
    chromium) echo chromium ;;
    node) echo nodejs npm ;;
    style) echo clang-format clang-tidy cppcheck shellcheck ;;
    mutation) echo python3 ;;
    windows) group_packages report && echo g++-mingw-w64-x86-64-posix ;;
    html) echo cmark-gfm ;;
    web) group_packages report && echo emscripten ;;
    unzip) echo unzip ;;
    wine) echo wine wine64 ;;
    dialog) echo xvfb xdotool ;;
    packages) echo build-essential dpkg-dev debhelper rpm file gzip mandoc lintian bash ;;
    linux) group_packages report && echo g++-aarch64-linux-gnu qemu-user-static ;;
    bench) echo libbenchmark-dev hyperfine time ;;
    hostile) echo python3 time ;;
    fuzz) echo clang libclang-rt-dev ;;
    coverage) echo gcovr ;;
    release) echo git ;;
    *) refuse "no group of packages is called $1" ;;
    esac
}

missing=
for group in "$@"; do
    packages=$(group_packages "$group")
    for package in $packages; do
        status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) || status=none
        case " $missing " in
        *" $package "*) ;;
        *) [ "$status" = installed ] || missing="$missing $package" ;;
        esac
    done
done
[ -n "$missing" ] || exit 0

if [ "$(id -u)" = 0 ]; then
    as_root=
elif command -v sudo >/dev/null 2>&1; then
    as_root=sudo
else
    tell "these packages are needed; please run: apt-get install$missing"
    exit 1
fi
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# What apt takes for an installation of them.
apt_install() {
    # shellcheck disable=SC2086 # several words
    $as_root env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 apt-get install --no-install-recommends "$1" $missing
}

# A source of packages that can't be reached is no reason to give up: another may have them all.
$as_root apt-get update >"$log" 2>&1 </dev/null || true
# It asks, gets no for an answer, and has printed by then how much it would be.
costs=$(apt_install --assume-no 2>/dev/null </dev/null | sed -n '
    s/.* \([0-9]* newly installed\),.*/\1/p
    s/^Need to get \([0-9.,]* [kMG]*B\).*/\1 to fetch/p
    s/^After this operation, \(.*\) of additional disk space.*/\1 on the disk/p' |
    awk '{ printf "%s%s", (NR > 1 ? ", " : ""), $0 }') || true
tell "installing$missing${costs:+ ($costs)}"
if ! apt_install -y >>"$log" 2>&1 </dev/null; then
    cat "$log" >&2
    tell "these packages are needed and could not be installed:$missing"
    exit 1
fi

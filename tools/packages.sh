#!/bin/sh
# The one list of Debian packages. Installs what is missing of the groups that are named:
#   tools/packages.sh build          what ./convert builds with
#   tools/packages.sh build check    and what the tests need, and so on
# Installs as root or through sudo; without either it prints the line to run and fails.
set -eu

group_packages() {
    case $1 in
    build) echo g++ cmake ninja-build ;;
    check) group_packages report && echo git libgtest-dev ;;
    report) echo libcli11-dev libdtl-dev libfmt-dev nlohmann-json3-dev ;;
    chromium) echo chromium ;;
    node) echo nodejs npm ;;
    style) echo clang-format clang-tidy cppcheck shellcheck ;;
    mutation) echo python3 ;;
    windows) group_packages report && echo g++-mingw-w64-x86-64-posix ;;
    wine) echo wine wine64 ;;
    dialog) echo xvfb xdotool ;;
    packages) echo dpkg-dev file gzip groff-base lintian ;;
    bench) echo libbenchmark-dev hyperfine time ;;
    hostile) echo python3 time ;;
    fuzz) echo clang libclang-rt-dev ;;
    coverage) echo gcovr ;;
    release) echo git ;;
    *)
        echo "packages.sh: no group of packages is called $1" >&2
        exit 2
        ;;
    esac
}

missing=
for group in "$@"; do
    for package in $(group_packages "$group"); do
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
    echo "packages.sh: these packages are needed; please run: apt-get install$missing" >&2
    exit 1
fi
echo "packages.sh: installing$missing" >&2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# A source of packages that can't be reached is no reason to give up: another may have them all.
# shellcheck disable=SC2086 # several words
if ! { { $as_root apt-get update || true; } && $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y \
    --no-install-recommends $missing; } >"$log" 2>&1 </dev/null; then
    cat "$log" >&2
    echo "packages.sh: these packages are needed and could not be installed:$missing" >&2
    exit 1
fi

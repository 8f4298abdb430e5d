# What the checks of the Windows side and of the packages share; to be read by a script that has set -eu and
# stands at the repository's root.

fail() {
    echo "$check_name: $*" >&2
    exit 1
}

# Installs a group of packages. If that can't be done the rest of the check is skipped, which is a fault where
# the results count.
need() {
    tools/packages.sh "$1" >build/packages.log 2>&1 && return
    echo "skipped: the packages for $1 can't be installed, so $2" >&2
    [ "${CI:-}" != true ] || exit 1
    exit 0
}

mkdir -p build

# Builds a preset. Standard output is for results only.
build() {
    { cmake --preset "$1" && cmake --build --preset "$1"; } >"build/$1.log" 2>&1 || {
        cat "build/$1.log" >&2
        exit 1
    }
}

# A file with its LF as CR LF.
to_crlf() {
    perl -pe 's/\n/\r\n/' "$1"
}

#!/bin/sh
# Makes the files of a release, from the commit that is checked out:
#   tools/release.sh [FOLDER]     into a folder, dist if none is named
#     the deb, the zip for Windows, the source archive, SHA256SUMS, and winget's three manifests in winget/
# MURL_RELEASE_URL is the address under which the files will be found; the manifests need it. Without it they have
# RELEASE_URL in its place.
#
# Everything is made twice, from two copies in two places, under another time zone, language and umask; if the
# results aren't the same byte for byte, there is no release. There is none either from a tree with changes or files
# that aren't committed, or when CMakeLists.txt and the newest entry of CHANGELOG.md don't have the same version.
set -eu
cd "$(dirname -- "$(readlink -f -- "$0")")/.."
root=$(pwd -P)
name=release
dist=$(readlink -f -- "${1:-dist}")

refuse() {
    echo "$name: $*" >&2
    exit 1
}

# ---- What is to be released ----

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
entry=$(sed -n '/^## /{s/^## //p;q;}' CHANGELOG.md)
day=${entry#*, }
[ "$entry" = "$version, $day" ] ||
    refuse "CMakeLists.txt has version $version, the newest entry of CHANGELOG.md is \"$entry\""
changed=$(git status --porcelain)
[ -z "$changed" ] || refuse "not committed:
$changed"
# The release's day is the time of all files in the packages.
SOURCE_DATE_EPOCH=$(date -u -d "$day" +%s)
export SOURCE_DATE_EPOCH

# ---- Making it, twice ----

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM

# Makes all files in a folder, from a copy that lies in it.
make_files() (
    mkdir -p "$1/files"
    git -c tar.umask=0022 archive --format=tar --prefix="murlconv-$version/" HEAD |
        gzip -9n >"$1/files/murlconv-$version.tar.gz"
    tar -C "$1" -xzf "$1/files/murlconv-$version.tar.gz"
    cd "$1/murlconv-$version"
    MURL_BUILD=$1/build tools/package.sh "$1/files" >/dev/null
)

make_files "$work/first"
(
    umask 027
    TZ=Asia/Tokyo LC_ALL=C make_files "$work/second place"
)
diff -r "$work/first/files" "$work/second place/files" >&2 || refuse 'two builds are not the same'

# ---- What goes with it ----

cd "$work/first/files"
sha256sum -- * >SHA256SUMS
zip=murlconv-$version-windows.zip
mkdir winget
for manifest in "$root"/packaging/winget/*.in; do
    target=${manifest##*/}
    sed -e "s|@VERSION@|$version|g" -e "s|@DATE@|$day|g" -e "s|@URL@|${MURL_RELEASE_URL:-RELEASE_URL}/$zip|" \
        -e "s|@SUM@|$(sha256sum "$zip" | cut -d ' ' -f 1 | tr '[:lower:]' '[:upper:]')|" "$manifest" >"winget/${target%.in}"
done
mkdir -p "$dist"
cp -R . "$dist"
sed "s|  |  $dist/|" SHA256SUMS

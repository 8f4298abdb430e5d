#!/bin/sh
# Makes the files of a release, from the commit that is checked out:
#   tools/release.sh [FOLDER]     into a folder, dist if none is named
#     what tools/package.sh makes, and winget's three manifests in winget/
#
# Everything is made twice, from two copies in two folders, under another time zone, language and umask; if the
# results aren't the same byte for byte, there is no release. There is none either while packaging/home is empty or
# README.md, SECURITY.md and debian/control don't name what is in it, from a tree with changes or files that aren't
# committed, or when CMakeLists.txt, CHANGELOG.md and debian/changelog don't have the same versions.
set -eu
script=$(readlink -f -- "$0")
cd "$(dirname -- "$script")/.."
. tools/arguments.sh
arguments 1 "$@"
root=$(pwd -P)
find_dist "$@"
dist=$(readlink -f -- "$dist")

# Ends without a release.
refuse_release() {
    tell "$*"
    exit 1
}

# ---- What is to be released ----

address=$(sed -n 's/^address=//p' packaging/home)
contact=$(sed -n 's/^contact=//p' packaging/home)
{ [ -n "$address" ] && [ -n "$contact" ]; } || refuse_release 'packaging/home has no address and contact yet'
for document in README.md SECURITY.md; do
    grep -qF "$contact" $document || refuse_release "$document doesn't name the contact $contact"
done
maintainer="the murlconv authors <$contact>"
grep -qxF "Maintainer: $maintainer" debian/control ||
    refuse_release "the maintainer in debian/control isn't $maintainer"
# Another name there would make it somebody else's upload of our package.
[ "$(sed -n '/^ -- /{s/^ -- //;s/  .*//p;q;}' debian/changelog)" = "$maintainer" ] ||
    refuse_release "the newest entry of debian/changelog isn't by $maintainer"
grep -qxF "Homepage: $address" debian/control || refuse_release "the home page in debian/control isn't $address"

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
entry=$(sed -n '/^## /{s/^## //p;q;}' CHANGELOG.md)
day=${entry#*, }
[ "$entry" = "$version, $day" ] ||
    refuse_release "CMakeLists.txt has version $version, the newest entry of CHANGELOG.md is \"$entry\""
# Versions with their days, the newest first. Later packages of a version aren't in CHANGELOG.md.
versions=$(sed -n 's/^## //p' CHANGELOG.md)
packaged=$(awk '/^murlconv / { split($2, part, /[(-]/) }
    /^ -- / && part[3] == "1)" { print part[2]; sub(/.*>  /, ""); print }' debian/changelog |
    while read -r released && read -r when; do echo "$released, $(date -u -d "$when" +%F)"; done)
[ "$versions" = "$packaged" ] || refuse_release "CHANGELOG.md and debian/changelog disagree:
$versions
$packaged"
changed=$(git status --porcelain)
[ -z "$changed" ] || refuse_release "not committed:
$changed"

# ---- Making it, twice ----

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM

# Makes all files in a folder, from a copy in it.
make_files() (
    mkdir -p "$1/murlconv" "$1/files"
    git archive HEAD | tar -C "$1/murlconv" -xf -
    cd "$1/murlconv"
    MURL_BUILD=$1/build tools/package.sh "$1/files" >/dev/null
)

make_files "$work/first"
(
    umask 027
    TZ=Asia/Tokyo LC_ALL=C make_files "$work/second place"
)
diff -r "$work/first/files" "$work/second place/files" >&2 || refuse_release 'two builds are not the same'

# ---- What goes with it ----

cd "$work/first/files"
zip=murlconv-$version-windows.zip
mkdir winget
for manifest in "$root"/packaging/winget/*.in; do
    target=${manifest##*/}
    sed -e "s|@VERSION@|$version|g" -e "s|@DATE@|$day|g" -e "s|@URL@|$address/$zip|" \
        -e "s|@SUM@|$(sha256sum "$zip" | cut -d ' ' -f 1 | tr '[:lower:]' '[:upper:]')|" "$manifest" \
        >"winget/${target%.in}"
done
mkdir -p "$dist"
cp -R . "$dist"
sed "s|  |  $dist/|" SHA256SUMS

#!/bin/sh
# Makes the files of a release once, unpacks them, and converts with what is inside.
set -eu
cd "$(dirname -- "$0")/.."
. tools/checks.sh
work=$MURL_BUILD/packages
wine_home=$MURL_BUILD/packages_wine

# A package must have these files, wanted one per line on standard input, and the samples with their converted forms.
#   expect_files FOLDER FOLDER_OF_EXAMPLES
expect_files() {
    {
        sed '/^$/d'
        for sample in $samples; do
            echo "$2/$sample"
            echo "$2/${sample%.*}_conv.${sample##*.}"
        done
    } | sort >"$work/wanted"
    (cd "$1" && find . -type f | sed 's|^\./||' | sort) >"$work/found"
    diff -u --label wanted --label "in the package" "$work/wanted" "$work/found" || fail "files in $1"
}

# The installed binary, a process for each pair, as a user runs it.
check_pair() {
    folder=$(mktemp -d "$work/pair.XXXXXX")
    cp "$@" "$folder"
    (cd "$folder" && "$work/deb/usr/bin/murlconv" ./*.mrl) >"$work/printed"
    for script in "$@"; do
        stem=$(basename "$script" .mrl)
        diff -u --label "$script" --label converted "$want_folder/$stem.want" "$folder/${stem}_conv.mrl" ||
            fail "$script"
        pairs=$((pairs + 1))
    done
    [ -e "$printed_want" ] || printed_want=/dev/null
    diff -u --label "$printed_want" --label printed "$printed_want" "$work/printed" || fail "$script"
    rm -r "$folder"
}

# The report over the samples: something is left to do in them, and nobody has edited an output.
#   check_report FOLDER COMMAND...
check_report() {
    status=0
    folder_of_samples=$1
    shift
    # On Windows a path that begins with / is an option.
    (cd "$folder_of_samples" && "$@" --quiet --csv - .) >"$work/report.csv" || status=$?
    [ $status = 1 ] || fail "the report's status is $status"
    count=$(echo "$samples" | wc -l)
    [ "$(sed 1d "$work/report.csv" | cut -d , -f 1 | sort -u | wc -l)" = "$count" ] || fail "the report isn't about $count samples"
}

# What any package for Linux installs under its prefix.
installed() {
    for program in murlconv murlreport; do
        printf '%s\n' "bin/$program" "share/man/man1/$program.1$1"
    done
    echo share/bash-completion/completions/murlreport
    for document in commands.md finishing.md mcomp.txt report.schema.json; do
        echo "share/doc/murlconv/$document"
    done
}

# Man pages of this version, without a fault, that name the documents where they are installed.
check_man_pages() { # FOLDER PREFIX
    for program in murlconv murlreport; do
        mandoc -Tlint -Wall "$1/share/man/man1/$program.1"* >"$work/page.log" ||
            fail "man page: $(cat "$work/page.log")"
        gzip -cdf "$1/share/man/man1/$program.1"* >"$work/page"
        grep -qi "^\.TH $program 1 \"$day\" \"murlconv $version\"" "$work/page" || fail "head of $program's man page"
        grep -q "$2/share/doc/murlconv/finishing.md" "$work/page" || fail "documents in $program's man page"
    done
}

# Completion in bash, where = is a word of its own.
check_completion() {
    mkdir "$work/completion"
    touch "$work/completion/a.mrl" "$work/completion/a.csv"
    (
        cd "$work/completion"
        # shellcheck disable=SC2016 # bash's own
        bash -c '. "$0"
            complete_words() { COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); _murlreport; echo "${COMPREPLY[*]}"; }
            complete_words murlreport --convert ""
            complete_words murlreport --csv a
            complete_words murlreport --csv = a
            complete_words murlreport --kind = lost,by
            complete_words murlreport --kin' "$1"
    ) >"$work/completed"
    printf '%s\n' a.mrl a.csv a.csv lost,byhand --kind | diff -u --label wanted --label completed - "$work/completed" ||
        fail 'completion in bash'
}

check_deb() {
    dpkg-deb -x "$deb" "$work/deb"
    [ "$(dpkg-deb -f "$deb" Package)" = murlconv ] || fail 'name of the deb'
    # These are on every Debian, since apt needs them.
    depends=$(dpkg-deb -f "$deb" Depends | tr , '\n' | sed 's/^ *//; s/ .*//' | tr '\n' ' ')
    [ "$depends" = 'libc6 libgcc-s1 libstdc++6 ' ] || fail "the deb depends on $depends"
    doc=usr/share/doc/murlconv
    { installed .gz | sed 's|^|usr/|' && cat <<END; } | expect_files "$work/deb" $doc/examples
usr/share/zsh/vendor-completions/_murlreport
$doc/changelog.Debian.gz
$doc/changelog.gz
$doc/copyright
END
    # What a distribution asks of a package and its sources. As root it warns that it is run as root. It finds
    # nothing by a path that has letters beyond ASCII, so it starts in the folder.
    (cd "$MURL_BUILD/debian" &&
        lintian --allow-root --display-info --pedantic --fail-on error,warning,info,pedantic ./*.changes) \
        >"$work/lintian" 2>&1 || fail "lintian: $(cat "$work/lintian")"
    [ ! -s "$work/lintian" ] || cat "$work/lintian" >&2
    check_man_pages "$work/deb/usr" /usr
    check_completion "$work/deb/usr/share/bash-completion/completions/murlreport"
    check_report "$work/deb/$doc/examples" "$work/deb/usr/bin/murlreport"

    pairs=0
    for sample in $samples; do
        want_folder=tests/golden/samples
        printed_want=$want_folder/${sample%.mrl}.out
        check_pair "$work/deb/$doc/examples/$sample"
        cmp "$want_folder/${sample%.mrl}.want" "$work/deb/$doc/examples/${sample%.mrl}_conv.mrl"
    done
    for script in tests/golden/*/*.mrl; do
        [ -e "${script%.mrl}.want" ] || continue # an output that somebody has made
        want_folder=${script%/*}
        printed_want=${script%.mrl}.out
        check_pair "$script"
    done
    for run in tests/golden/*/*.run; do
        want_folder=$run
        printed_want=${run%.run}.out
        set --
        for script in "$run"/*.mrl; do
            [ ! -e "${script%.mrl}.want" ] || set -- "$@" "$script"
        done
        check_pair "$@"
    done
    echo "packages: the deb's program converts $pairs scripts as wanted"
}

licences_of_libraries='libcli11-dev libfmt-dev nlohmann-json3-dev LGPL-2.1 GPL-3'

# The archives and rpms of programs that need no library; those for this processor are run.
check_linux() { # ARCH NAME_OF_C_LIBRARY'S_PACKAGE
    doc=share/doc/murlconv
    cxx=$(echo "$2" | sed "s/libc6/libstdc++-$("$1-linux-gnu-g++" -dumpversion)/")
    {
        installed ''
        echo share/zsh/site-functions/_murlreport
        for document in CHANGELOG.md COPYRIGHT LICENSE; do
            echo "$doc/$document"
        done
        for licence in $licences_of_libraries "$2" "$cxx"; do
            echo "$doc/licences/$licence.txt"
        done
    } >"$work/list"
    tar -C "$work" -xzf "$dist/murlconv-$version-linux-$1.tar.gz"
    folder=$work/murlconv-$version-linux-$1
    { cat "$work/list" && echo README.txt; } | expect_files "$folder" $doc/examples
    check_man_pages "$folder" /usr/local

    rpm=$dist/murlconv-$version-1.$1.rpm
    # No more than what rpm itself has to understand.
    ! rpm -qp --requires "$rpm" | grep -v '^rpmlib(' || fail "$rpm needs something"
    mkdir "$work/rpm_$1"
    as_root=
    [ "$(id -u)" = 0 ] || as_root='unshare --map-root-user'
    $as_root rpm --root "$work/rpm_$1" --ignorearch --install "$rpm" >"$work/rpm.log" 2>&1 ||
        fail "$rpm can't be installed: $(cat "$work/rpm.log")"
    # Its database is beside it.
    mv "$work/rpm_$1/usr" "$work/rpm_$1.usr"
    rm -rf "$work/rpm_$1.usr/lib"
    expect_files "$work/rpm_$1.usr" $doc/examples <"$work/list"
    check_man_pages "$work/rpm_$1.usr" /usr
    for program in murlconv murlreport; do
        cmp "$folder/bin/$program" "$work/rpm_$1.usr/bin/$program"
    done
    [ "$1" = "$(uname -m)" ] || return 0
    converted=$folder/$doc/examples/plate_conv.mrl
    mv "$converted" "$converted.packed"
    "$folder/bin/murlconv" "$folder/$doc/examples/plate.mrl"
    cmp "$converted" "$converted.packed"
    rm "$converted.packed"
    check_report "$folder/$doc/examples" "$folder/bin/murlreport"
}

check_zip() {
    (cd "$work" && cmake -E tar xf "$zip")
    folder=$work/$(basename "$zip" .zip)
    expect_files "$folder" examples <<END
CHANGELOG.txt
COPYRIGHT.txt
LICENSE.txt
README.txt
docs/browser.html
docs/commands.html
docs/finishing.html
docs/windows.html
mcomp.txt
murlconv.exe
murlreport.exe
$(for licence in $licences_of_libraries gcc-mingw-w64-base mingw-w64-common; do echo "licences/$licence.txt"; done)
END
    # Every text has CR LF at each line end, and is otherwise what it is here.
    for text in CHANGELOG.txt=CHANGELOG.md LICENSE.txt=LICENSE README.txt=packaging/README.txt \
        mcomp.txt=packaging/mcomp.txt COPYRIGHT.txt=packaging/copyright; do
        to_crlf "${text#*=}" | cmp - "$folder/${text%%=*}"
    done
    # Each link in the guides leads to a guide and a heading of it.
    for guide in "$folder"/docs/*.html; do
        grep -o 'href="[^"]*"' "$guide" | cut -d '"' -f 2 | while read -r link; do
            target=${link%%#*}
            target=$folder/docs/${target:-${guide##*/}}
            [ "${link#*#}" = "$link" ] || grep -q "id=\"${link#*#}\"" "$target" || fail "$guide: $link"
            [ -e "$target" ] || fail "$guide: $link"
        done
    done
    for sample in $samples; do
        cmp "samples/$sample" "$folder/examples/$sample"
    done
    # Windows shows the version from a text of 16-bit characters.
    for program in murlconv murlreport; do
        perl -0777 -e '
            my ($version, $file) = @ARGV;
            open my $exe, "<:raw", $file or die;
            my $text = join "", map { "$_\0" } split //, "FileVersion\0\0$version\0";
            exit(index(<$exe>, $text) < 0);' "$version" "$folder/$program.exe" ||
            fail "version in $program.exe"
    done
}

# Needs what check_zip and check_deb have unpacked.
check_zip_program() {
    for sample in $samples; do
        converted=$folder/examples/${sample%.mrl}_conv.mrl
        mv "$converted" "$converted.packed"
        wine_run "$folder/murlconv.exe" "$folder/examples/$sample"
        to_crlf "tests/golden/samples/${sample%.mrl}.want" | cmp - "$converted" || fail "$sample"
        cmp "$converted" "$converted.packed"
    done
    check_report "$folder/examples" wine_run "$folder/murlreport.exe"
    echo "packages: the zip's program converts the samples as wanted"
}

for group in windows html packages linux web; do
    need $group 'the packages are not made'
done
rm -rf "$work"
mkdir -p "$work"
dist=$work/dist
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
day=$(sed -n '/^## /{s/.*, //p;q;}' CHANGELOG.md)
samples=$(cd samples && find . -name '*.mr[lp]' ! -name '*_conv.*' | sed 's|^\./||' | sort)
deb=$dist/murlconv_$version-1_$(dpkg --print-architecture).deb
zip=$dist/murlconv-$version-windows.zip
tools/package.sh "$dist" >"$work/packages"
{
    printf '%s\n' "$deb" "$zip" "$dist/murlconv-$version.tar.gz" "$dist/murlconv-$version.html" "$dist/SHA256SUMS"
    for arch in x86_64 aarch64; do
        printf '%s\n' "$dist/murlconv-$version-linux-$arch.tar.gz" "$dist/murlconv-$version-1.$arch.rpm"
    done
} | sort >"$work/wanted"
sort "$work/packages" | diff -u "$work/wanted" - || fail 'names of the files'
(cd "$dist" && sha256sum --check --quiet SHA256SUMS)
check_deb
check_linux x86_64 libc6-dev
check_linux aarch64 libc6-dev-arm64-cross
check_zip

need wine 'the program of the zip was not run'
. tools/wine.sh
wine_start
check_zip_program

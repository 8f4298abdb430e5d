#!/bin/sh
# Builds the packages, unpacks them, and converts with what is inside.
set -eu
cd "$(dirname -- "$0")/.."
. tools/checks.sh
work=$MURL_BUILD/packages
wine_home=$MURL_BUILD/packages_wine

# A package must have these files, wanted one a line on standard input, and the samples with their converted forms.
#   expect_files FOLDER PLACE_OF_EXAMPLES
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

check_deb() {
    dpkg-deb -x "$deb" "$work/deb"
    [ "$(dpkg-deb -f "$deb" Package)" = murlconv ] || fail 'name of the deb'
    # The C library only: the program must start on a machine without a C++ runtime.
    depends=$(dpkg-deb -f "$deb" Depends)
    case $depends in
    *,* | *'|'*) fail "the deb depends on $depends" ;;
    libc6*) ;;
    *) fail "the deb depends on $depends" ;;
    esac
    doc=usr/share/doc/murlconv
    expect_files "$work/deb" $doc/examples <<END
usr/bin/murlconv
usr/share/man/man1/murlconv.1.gz
usr/bin/murlreport
usr/share/bash-completion/completions/murlreport
usr/share/man/man1/murlreport.1.gz
usr/share/zsh/vendor-completions/_murlreport
$doc/report.schema.json
$doc/changelog.Debian.gz
$doc/changelog.gz
$doc/commands.md
$doc/copyright
$doc/finishing.md
$doc/mcomp.txt
END
    # What a distribution asks of a package. As root it warns that it is run as root.
    lintian --allow-root --fail-on error,warning "$deb" >"$work/lintian" 2>&1 ||
        fail "lintian: $(cat "$work/lintian")"
    for program in murlconv murlreport; do
        page=$work/$program.1
        gzip -dc "$work/deb/usr/share/man/man1/$program.1.gz" >"$page"
        groff -man -ww -z -Tutf8 "$page" 2>"$work/page.log" || fail "man page of $program"
        [ ! -s "$work/page.log" ] || fail "man page of $program: $(cat "$work/page.log")"
        grep -qi "^\.TH $program 1 .*$version\"" "$page" || fail "version in the man page of $program"
    done
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

check_zip() {
    (cd "$work" && cmake -E tar xf "$zip")
    folder=$work/$(basename "$zip" .zip)
    expect_files "$folder" examples <<END
CHANGELOG.txt
COPYRIGHT.txt
LICENSE.txt
README.txt
docs/commands.md
docs/finishing.md
docs/windows.md
mcomp.txt
murlconv.exe
murlreport.exe
END
    # Every text has CR LF at each line end, and is otherwise what it is here.
    for text in CHANGELOG.txt=CHANGELOG.md LICENSE.txt=LICENSE README.txt=packaging/README.txt \
        mcomp.txt=packaging/mcomp.txt COPYRIGHT.txt=packaging/copyright docs/windows.md=docs/windows.md \
        docs/commands.md=docs/commands.md docs/finishing.md=docs/finishing.md; do
        to_crlf "${text#*=}" | cmp - "$folder/${text%%=*}"
    done
    for sample in $samples; do
        cmp "samples/$sample" "$folder/examples/$sample"
    done
    # Windows shows the version from a text of 16-bit characters.
    perl -0777 -e '
        my ($version, $file) = @ARGV;
        open my $exe, "<:raw", $file or die;
        my $text = join "", map { "$_\0" } split //, "FileVersion\0\0$version\0";
        exit(index(<$exe>, $text) < 0);' "$version" "$folder/murlconv.exe" || fail 'version in murlconv.exe'
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

need windows 'the packages are not made'
need packages 'the packages are not made'
rm -rf "$work"
mkdir -p "$work"
tools/package.sh "$work/dist" >"$work/packages"
zip=$(grep '\.zip$' "$work/packages")
deb=$(grep '\.deb$' "$work/packages")
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
samples=$(cd samples && find . -name '*.mr[lp]' ! -name '*_conv.*' | sed 's|^\./||' | sort)
[ "$deb" = "$work/dist/murlconv_$version-1_$(dpkg --print-architecture).deb" ] || fail "name of $deb"
[ "$zip" = "$work/dist/murlconv-$version-windows.zip" ] || fail "name of $zip"
check_deb
check_zip

need wine 'the program of the zip was not run'
. tools/wine.sh
wine_start
check_zip_program

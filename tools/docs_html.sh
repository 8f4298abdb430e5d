#!/bin/sh
# Makes HTML of Markdown documents, for systems on which a double-click opens no Markdown:
#   tools/docs_html.sh FOLDER FILE.md...    writes FOLDER/FILE.html for each
# A link to another document leads to its HTML. Needs cmark-gfm (tools/packages.sh html).
set -eu
script=$(readlink -f -- "$0")
. "${script%/*}/arguments.sh"
arguments 99 "$@"
[ $# -ge 2 ] || refuse 'a folder and documents are needed'
folder=$1
shift
mkdir -p "$folder"
for document in "$@"; do
    name=$(basename "$document" .md)
    title=$(sed -n 's/^# //p;T;q' "$document" | sed 's/&/\&amp;/g; s/</\&lt;/g; s/`//g')
    {
        cat <<END
<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>$title</title>
<style>
:root { color-scheme: light dark; }
body { font: 16px/1.5 system-ui, "Segoe UI", sans-serif; max-width: 50rem; margin: 2rem auto; padding: 0 1rem; }
pre { overflow-x: auto; padding: .6rem .8rem; background: #8882; border-radius: .3rem; }
code { font-family: Consolas, ui-monospace, monospace; font-size: .9em; }
table { border-collapse: collapse; display: block; overflow-x: auto; }
th, td { border: 1px solid #8886; padding: .2rem .6rem; text-align: left; vertical-align: top; }
</style>
</head>
<body>
END
        # Headings get the ids that links to them use, unless an anchor before them has it.
        cmark-gfm --unsafe --extension table "$document" | perl -pe '
            $has{$1} = 1 while /<a id="([^"]*)"/g;
            s{<h([1-6])>(.*?)</h\1>}{
                my ($level, $text) = ($1, $2);
                my $id = lc $text;
                $id =~ s/<[^>]*>|&[a-z]+;//g;
                $id =~ s/[^\w\s-]//g;
                $id =~ s/\s/-/g;
                $has{$id}++ ? qq(<h$level>$text</h$level>) : qq(<h$level id="$id">$text</h$level>)
            }ge;
            s{(href="(?![a-z]+:)[^"#]*)\.md(["#])}{$1.html$2}g'
        echo '</body>'
        echo '</html>'
    } >"$folder/$name.html"
done

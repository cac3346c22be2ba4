#!/bin/bash
# usage: addon_files.sh ADDON PROJECT SOURCE_DIR
#
# Checks the content of an add-on directory. PROJECT is the layout that the build runs with.
set -euo pipefail
shopt -s globstar nullglob
addon=$1
development=$2/addons/webview
left_to_the_machine=$(grep '^[^#]' "$3/cmake/addon/left_to_the_machine.txt")
failed=0

# must_be_empty LIST RULE
must_be_empty() {
    [[ -n $1 ]] || return 0
    failed=1
    printf 'broken rule: %s:\n%s\n' "$2" "$1"
}

cd "$addon"
programs=(**/*.so **/*.so.* **/*.exe)

for name in libmarlune.so lib qml plugins QtWebEngineProcess.exe resources \
    translations/qtwebengine_locales; do
    [[ -e $name ]] || must_be_empty "$name" "what the start names is there"
done
must_be_empty "$(find . -type l)" "no file is a link, for archives and shops lose them"
must_be_empty "$(find . -name '*.qmltypes' -o -name '*.debug' -o -name '*devtools*' \
    -o -path '*/qmltooling/*' -o -path '*/QtQuick/Controls/Material*' -o -path '*/QtTest*')" \
    "nothing is there that no game needs"
must_be_empty "$(readelf --sections --wide "${programs[@]}" | grep -E '^File:|\.debug_info' \
    | grep -B 1 '\.debug_info')" "nothing holds debug data"
must_be_empty "$(readelf --sections --wide libmarlune.so | grep '\.symtab')" "the library is stripped"

languages_of() { (cd "$1/translations/qtwebengine_locales" && ls); }
must_be_empty "$(diff <(languages_of "$development") <(languages_of .))" "all languages are there"

# Libraries: each needed one is in lib/ or belongs to the machine, and the loader searches lib/ first.
needed=$(readelf --dynamic --wide "${programs[@]}" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | sort -u)
must_be_empty "$(grep -vxF -e libmarlune.so -f <(ls lib) <<<"$needed" \
    | grep -vE -f <(echo "$left_to_the_machine"))" \
    "each needed library is in lib/ or left to the machine"
must_be_empty "$(ls lib | grep -E -f <(echo "$left_to_the_machine"))" \
    "what is left to the machine is not there"
for program in "${programs[@]}"; do
    path=$(readelf --dynamic --wide "$program" | sed -n 's/.*(RPATH).*\[\(.*\)\]/\1/p')
    folder=${path/'$ORIGIN'/$(dirname "$program")}
    [[ $path == '$ORIGIN'* && $folder -ef lib ]] \
        || must_be_empty "$program: \"$path\"" "run paths lead to lib/"
done

must_be_empty "$(grep '^  "version"' manifest.json | grep -vE '"[0-9.]+\+[0-9a-f]{7}",$')" \
    "the manifest tells the version"

# The manifest: all files, their checksums, owners and licences.
field() { sed -n "s/^    {.*\"path\": .*\"$1\": \"\{0,1\}\([^\",}]*\).*/\1/p" manifest.json; }
paths=$(sed -n 's/^    {"path": "\([^"]*\)".*/\1/p' manifest.json)
must_be_empty "$(diff <(find . -type f ! -name manifest.json -printf '%P\n' | sort) \
    <(sort <<<"$paths"))" "the manifest names each file"
must_be_empty "$(paste -d ' ' <(field sha256) /dev/null <(echo "$paths") \
    | sha256sum --check --quiet 2>&1)" "checksums are right"
must_be_empty "$(paste -d '|' <(field component) <(field package) <(echo "$paths") \
    | grep '||' | grep -vE '^(marlune|licences)\|')" "each file of others is of a package"
for package in $(field package | sort -u); do
    [[ -s licenses/$package.txt ]] || must_be_empty "$package" "each package has a licence"
done

# docs/deployment.md states the sizes. With Debian's packages they may change by a fifth and a megabyte.
while IFS='|' read -r component bytes; do
    told=$(sed -n "s/^| \`$component\` | \([0-9.]*\) | .*/\1/p" "$3/docs/deployment.md")
    awk -v told="${told:-0}" -v is="$((bytes / 1000))" \
        'BEGIN { d = told * 1000 - is; exit !(d * d <= (is / 5 + 1000) ^ 2 && told > 0) }' \
        || must_be_empty "$component: $((bytes / 1000)) kB" "the guide tells the size"
done < <(sed -n 's/^    "\([^"]*\)": \([0-9]*\),\{0,1\}$/\1|\2/p' manifest.json)
exit "$failed"

#!/bin/bash
# usage: make_import_libraries.sh QT_LIBRARIES FOLDER OBJECTS MODULE...
#
# Makes FOLDER/libQt6MODULE.dll.a for each module: an import library of the names that the Windows
# objects, whose paths are the lines of the file OBJECTS, need of it. Only what this system's Qt in
# QT_LIBRARIES really exports comes in, so that linking fails for a name that Qt does not offer.
set -euo pipefail
qt_libraries=$1 folder=$2 objects=$3
shift 3
export LC_ALL=C

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# What Qt exports on Windows alone, where compiled resources cannot look at its variables.
windows_only="T _Z20qResourceFeatureZstdv"

# A size and a 64-bit integer have other names there than here, which makes other symbols of them.
# Reads symbols as the last word of each line and prints them as the first, the plain name behind.
with_plain_names() {
    awk '{ print $NF, $0 }' | sort -u >"$scratch/symbols"
    cut -d ' ' -f 1 "$scratch/symbols" | c++filt | sed 's/long long/long/g; s/\([0-9]\)ll\b/\1l/g; s/ /_/g' \
        | paste -d ' ' "$scratch/symbols" -
}

# "symbol": what the objects need and do not define. Imported data and functions have a prefix.
tr '\n' '\0' <"$objects" | xargs -0 x86_64-w64-mingw32-nm --format=posix >"$scratch/table"
awk '$2 == "U" { sub(/^__imp_/, "", $1); print $1 }' "$scratch/table" | sort -u >"$scratch/used"
awk 'NF > 2 && $2 != "U" { print $1 }' "$scratch/table" | sort -u >"$scratch/defined"
comm -23 "$scratch/used" "$scratch/defined" | with_plain_names >"$scratch/needed"

mkdir -p "$folder"
for module in "$@"; do
    # "symbol type symbol plain", then the definitions "symbol" or "symbol DATA".
    {
        nm --dynamic --defined-only --without-symbol-versions --format=posix \
            "$qt_libraries/libQt6$module.so.6" | awk '{ print $2, $1 }'
        [[ $module != Core ]] || echo "$windows_only"
    } | with_plain_names >"$scratch/offered"
    {
        echo "LIBRARY Qt6$module.dll"
        echo EXPORTS
        awk 'NR == FNR { type[$NF] = $2; next }
            $NF in type { print "    " $1 (type[$NF] ~ /[TtWi]/ ? "" : " DATA") }' \
            "$scratch/offered" "$scratch/needed"
    } >"$folder/Qt6$module.def"
    x86_64-w64-mingw32-dlltool --input-def "$folder/Qt6$module.def" \
        --output-lib "$folder/libQt6$module.dll.a"

    # A name comes from the first module that has it.
    awk 'NR == FNR { offered[$NF]; next } !($NF in offered)' \
        "$scratch/offered" "$scratch/needed" >"$scratch/left"
    mv "$scratch/left" "$scratch/needed"
done

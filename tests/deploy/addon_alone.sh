#!/bin/bash
# usage: addon_alone.sh ADDON HOST CLIP OUT
#
# Runs a host that shows all kinds of view with the add-on directory, on this system, which has its own
# Qt: the host may load no file of that Qt.
set -euo pipefail
addon=$1 host=$2 clip=$3 out=$4
log=$out/loaded.txt

rm -rf "$out"
mkdir -p "$out"
LD_DEBUG=files LD_LIBRARY_PATH=$addon MARLUNE_PROJECT_ROOT=${addon%/addons/webview} \
    timeout 60 "$host" "$out" "$clip" 2>"$log" || { grep -av '^ *[0-9]*:' "$log"; exit 1; }
grep -aqF "file=$addon/plugins" "$log" || { echo "what was loaded is not to be seen"; exit 1; }
if grep -aE '(file=|init: )/[^ ]*(qt6/|libQt6)' "$log" | grep -avF " $addon/" | grep -avF "=$addon/"; then
    echo "these are not the add-on directory's"
    exit 1
fi

#!/bin/bash
# usage: bare_missing.sh ROOT
#
# Removes one file after the other from the add-on directory and expects the message that names it.
set -euo pipefail
root=$1
here=$(dirname "$0")
addon=$root/game/addons/webview
[[ -d $addon ]] || { echo "there is no bare root"; exit 77; }
failed=0

# Prints the output of a host that shows one view, or that ends while it tries.
show() {
    { "$here/run_bare.sh" "$root" MARLUNE_PROJECT_ROOT="${2:-/game}" \
        timeout 30 /game/host /game/pictures /game/clip.mp4 "$1"; } 2>&1 || true
}

fail() {
    failed=1
    echo "$1; it was said:"
    sed 's/^/    /' <<<"$2"
}

# without FILE MESSAGE [VIEW]
without() {
    local said
    mv "$addon/$1" "$root/game/away"
    said=$(show "${3:-scene}")
    mv "$root/game/away" "$addon/$1"
    [[ $said == *"$2"* ]] || fail "without $1 there is no \"$2\"" "$said"
}

said=$(show scene)
[[ $said == *right* && $said != *lacks* ]] || fail "a whole directory does not pass" "$said"
said=$(show scene /nowhere)
[[ $said == *'Could not find the Qt platform plugin'* && $said != *'add-on directory'* ]] \
    || fail "a wrong project root is not left to Qt to report" "$said"

lacks='the add-on directory "/game/addons/webview/" lacks'
without QtWebEngineProcess.exe "$lacks QtWebEngineProcess.exe"
without resources/qtwebengine_resources.pak "$lacks resources/qtwebengine_resources.pak"
without resources/icudtl.dat "$lacks resources/icudtl.dat"
without resources/v8_context_snapshot.bin "$lacks resources/v8_context_snapshot.bin"
without plugins/platforms/libqxcb.so "$lacks plugins/platforms/libqxcb.so"
without plugins/multimedia/libffmpegmediaplugin.so "$lacks plugins/multimedia/libffmpegmediaplugin.so"
without lib/libavcodec.so.61 "$lacks lib/libavcodec.so.61"
without qml/QtMultimedia "$lacks qml/QtMultimedia/"
without qml/QtQuick/Layouts 'module "QtQuick.Layouts" is not installed'
without translations "could not find the translation file" page
without lib/libQt6Quick.so.6 "error while loading shared libraries: libQt6Quick.so.6"
without libmarlune.so "error while loading shared libraries: libmarlune.so"

chmod -x "$addon/QtWebEngineProcess.exe"
said=$(show scene)
chmod +x "$addon/QtWebEngineProcess.exe"
[[ $said == *'QtWebEngineProcess.exe" is not executable'* ]] \
    || fail "a process without the right to run is not named" "$said"
exit "$failed"

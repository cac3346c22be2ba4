#!/bin/bash
# usage: bare_views.sh ROOT HOST PROJECT CLIP OUT
#
# Runs a host that shows all kinds of view, here with the Qt of this system, and in the bare root with
# the add-on directory. The images must be the same.
set -euo pipefail
root=$1 host=$2 project=$3 clip=$4 out=$5
here=$(dirname "$0")
[[ -d $root/game ]] || { echo "there is no bare root"; exit 77; }

# The bare root must hold every library that the add-on directory needs.
missing=$("$here/run_bare.sh" "$root" bash -c \
    'find /game/addons -name "*.so*" -o -name "*.exe" | xargs ldd 2>&1 | grep "not found"' || true)
[[ -z $missing ]] || { echo "libraries are missing in the bare root:"; sort -u <<<"$missing"; exit 1; }

# An older copy of a library that the graphics drivers need would break them.
stands_still='^lib(bsd|lzma|md|xml2)\.so\.'
drivers=$("$here/run_bare.sh" "$root" bash -c 'ldd /usr/lib/*/{libvulkan_*,lib*_mesa*,gbm/*}' \
    | sed -n 's/^\t\([^ ]*\) => .*/\1/p' | sort -u)
[[ $drivers == *libLLVM* ]] || { echo "these are no graphics drivers: $drivers"; exit 1; }
in_the_way=$(grep -xF -f <(ls "$root/game/addons/webview/lib") <<<"$drivers" \
    | grep -vE "$stands_still" || true)
[[ -z $in_the_way ]] || { echo "the machine's drivers need their own: $in_the_way"; exit 1; }

rm -rf "$out" "$root/game/pictures"
echo "--- over this system's Qt"
MARLUNE_PROJECT_ROOT=$project timeout 60 "$host" "$out" "$clip"

# The add-on directory's libraries take precedence over those in a player's library path.
mkdir -p "$root/game/decoy"
cp "$root/game/addons/webview/lib/libQt6Svg.so.6" "$root/game/decoy/libQt6Core.so.6"
echo "--- over the add-on directory"
"$here/run_bare.sh" "$root" MARLUNE_PROJECT_ROOT=/game LD_LIBRARY_PATH=/game/decoy \
    timeout 60 /game/host /game/pictures /game/clip.mp4
"$host" --compare "$out" "$root/game/pictures"

echo "--- a page in the engine's sandbox, which wants an ordinary user"
player=(setpriv --reuid 54321 --regid 54321 --clear-groups)
if "$here/run_bare.sh" "$root" "${player[@]}" \
    unshare --user --map-root-user --net --pid --fork chroot / true; then
    "$here/run_bare.sh" "$root" MARLUNE_PROJECT_ROOT=/game SANDBOXED=1 HOME=/tmp XDG_RUNTIME_DIR=/tmp \
        unshare --pid --fork --mount-proc \
        "${player[@]}" timeout 60 /game/host /tmp/pictures /game/clip.mp4 page
else
    echo "not tried: this system gives nobody user namespaces with rights of their own"
fi

echo "--- the smallest example"
"$here/run_bare.sh" "$root" MARLUNE_PROJECT_ROOT=/game LD_LIBRARY_PATH=/game/addons/webview \
    timeout 60 /game/minimal

#!/bin/bash
# usage: bare_game.sh ROOT PREFIX HOST CAMERA EXAMPLE CLIP
#
# Puts a game into the bare root: the installed add-on directory, a host, the library that simulates a
# camera, an example host, and a clip.
set -euo pipefail
root=$1 prefix=$2 host=$3 camera=$4 example=$5 clip=$6
[[ -w $root ]] || { echo "there is no bare root"; exit 77; }

rm -rf "$root/game"
found=$(find "$root/usr" "$root/opt" -name 'libQt*' -o -path '*/bin/g++*' -o -path '*/bin/gcc*' \
    -o -path '*/bin/ld' -o -path '*/bin/cmake')
[[ -z $found ]] || { echo "the bare root is not bare: $found"; exit 1; }

mkdir "$root/game"
cp -r "$prefix/addons" "$root/game/"
cp "$host" "$root/game/host"
cp "$camera" "$root/game/"
cp "$example" "$root/game/minimal"
cp "$clip" "$root/game/clip.mp4"

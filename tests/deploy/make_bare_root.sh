#!/bin/bash
# usage: make_bare_root.sh FOLDER
#
# Creates a Debian 13 in FOLDER with the packages of a machine that runs games: graphics drivers, X,
# sound and fonts. No Qt, no compiler. Does nothing where it exists already.
set -euo pipefail
root=$1
PATH=$PATH:/usr/sbin:/sbin
if [[ $EUID -ne 0 ]] || ! command -v debootstrap >/dev/null || ! unshare --mount true; then
    echo "making a bare root takes root, debootstrap, and the right to unshare mounts"
    exit 77
fi

# cmake/addon/left_to_the_machine.txt names what an add-on directory expects to find.
packages=(
    libvulkan1 mesa-vulkan-drivers libgl1 libegl1 libopengl0 libgbm1 libdrm2
    libx11-6 libx11-xcb1 libxcb1 libxext6 libxfixes3 libxrandr2
    libxcb-glx0 libxcb-randr0 libxcb-shm0 libxcb-sync1 libxcb-xfixes0 libxcb-keysyms1
    libasound2t64 libfontconfig1 libfreetype6 fonts-dejavu-core
    libstdc++6 libgcc-s1 zlib1g libzstd1 libexpat1
)

exec 9>"$root.lock"
flock 9
[[ ! -d $root ]] || exit 0

rm -rf --one-file-system "$root.partial"
mkdir -p "$root.partial"
[[ -n ${http_proxy:-} ]] || eval "$(apt-config shell http_proxy Acquire::http::Proxy)"
export http_proxy=${http_proxy:-}
# /proc and similar are mounted in a namespace, whose end unmounts them however this script ends.
unshare --mount --propagation private -- \
    debootstrap --variant=minbase --include="$(IFS=,; echo "${packages[*]}")" \
    trixie "$root.partial" || { tail -n 5 "$root.partial/debootstrap/debootstrap.log"; exit 1; }
rm -rf "$root.partial"/var/cache/apt/archives/*.deb "$root.partial"/var/lib/apt/lists/*
mv "$root.partial" "$root"

#!/bin/bash
# usage: run_bare.sh ROOT COMMAND...
#
# Runs a command inside the bare root, with the display that DISPLAY names. All mounts end with it.
set -euo pipefail

# Called again in a mount namespace of its own.
if [[ ${1:-} != --inside ]]; then
    exec unshare --mount --propagation private -- "$0" --inside "$@"
fi
root=$2
shift 2

# Only what is mounted can become the root. To be chrooted to it would not do: who is may make no user
# namespaces, of which the engine's sandbox is made.
mount --bind "$root" "$root"
for folder in proc sys dev; do
    mount --rbind "/$folder" "$root/$folder"
done
mount -t tmpfs -o mode=1777 tmpfs "$root/dev/shm"
mount -t tmpfs -o mode=1777 tmpfs "$root/tmp"
if [[ -d /tmp/.X11-unix ]]; then
    mkdir "$root/tmp/.X11-unix"
    mount --bind /tmp/.X11-unix "$root/tmp/.X11-unix"
fi
cd "$root"
pivot_root . .
umount --lazy .
# A machine of a player says nothing of the build: nothing of the caller's environment goes along but
# what is named here.
exec /usr/bin/env -i --chdir=/ HOME=/root LANG=C.UTF-8 PATH=/usr/bin:/bin \
    DISPLAY="${DISPLAY:-}" QT_QPA_PLATFORM=xcb "$@"

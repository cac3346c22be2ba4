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

# Only a mount can become the root. A chroot would not do: inside one a process may create no user
# namespaces, which the engine's sandbox needs.
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
# A player's machine has no variables of the build: of the caller's environment, only the variables
# named here are passed on.
exec /usr/bin/env -i --chdir=/ HOME=/root LANG=C.UTF-8 PATH=/usr/bin:/bin \
    DISPLAY="${DISPLAY:-}" QT_QPA_PLATFORM=xcb "$@"

#!/bin/bash
# usage: with_display.sh COMMAND...
#
# Runs a command with a display of its own, so that it paints on no other display.
set -euo pipefail

# The parent-death signal ends Xvfb even where this script is killed and its trap cannot run.
exec 8< <(exec setpriv --pdeathsig TERM \
    Xvfb -displayfd 1 -screen 0 1280x720x24 -noreset -nolisten tcp 2>/dev/null)
xvfb=$!
trap 'kill "$xvfb" 2>/dev/null || true' EXIT
read -r -t 30 -u 8 number || { echo "Xvfb did not start"; exit 1; }
exec 8<&-
DISPLAY=:$number "$@"

#!/bin/bash
# Makes the clips that the benchmarks play: make_clips.sh FOLDER. Does nothing if they exist.
set -euo pipefail

script=$(readlink -f "${BASH_SOURCE[0]}")
folder=$1
stamp=$folder/.made
[[ ! $stamp -nt $script ]] || exit 0
# shellcheck source=../tests/clips/recipes.sh
source "${script%/*}/../tests/clips/recipes.sh"
mkdir -p "$folder"
cd "$folder"

# SIZE RATE SECONDS BITRATE FILE: a picture that is expensive to decode, with sound, and with the
# frame numbers in a strip across its middle.
moving() {
    local strip=${1%x*}x72
    run -f lavfi -i "testsrc2=s=$1:r=$2:d=$3" -f lavfi -i "$(numbered "$strip" "$2" "$3")" \
        -f lavfi -i "$(tone 440 "$3")" \
        -filter_complex '[0]noise=alls=12:allf=t,format=yuv420p[picture];[picture][1]overlay=y=(H-h)/2[out]' \
        -map '[out]' -map 2 "${h264[@]}" -b:v "$4" -g 60 "${aac[@]}" -movflags +faststart "$5"
}

moving 1920x1080 30 6 8M 1080p30.mp4
moving 1920x1080 60 6 12M 1080p60.mp4
moving 640x360 30 60 500k small.mp4

touch "$stamp"

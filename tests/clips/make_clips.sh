#!/bin/bash
# Makes the clips that the tests of media play: make_clips.sh FOLDER. Does nothing when they are there.
set -euo pipefail

script=$(readlink -f "${BASH_SOURCE[0]}")
folder=$1
stamp=$folder/.made
[[ ! $stamp -nt $script ]] || exit 0
mkdir -p "$folder"
cd "$folder"

# shellcheck source=recipes.sh
source "${script%/*}/recipes.sh"

# Full-range RGB to BT.709, as the clips say of themselves.
bt709='scale=out_color_matrix=bt709:out_range=tv:flags=neighbor'

# SIDE RATE SECONDS: red, green in the upper half; blue, white in the lower.
quadrants() {
    echo "color=red:s=$1x$1:r=$2:d=$3[a];color=lime:s=$1x$1:r=$2:d=$3[b];color=blue:s=$1x$1:r=$2:d=$3[c];color=white:s=$1x$1:r=$2:d=$3[d];[a][b]hstack[top];[c][d]hstack[low];[top][low]vstack,format=gbrp,$bt709"
}

run -f lavfi -i "$(numbered 640x360 60 10)" -f lavfi -i "$(tone 440 10)" \
    "${h264[@]}" -g 60 -bf 2 "${aac[@]}" -movflags +faststart numbered.mp4
run -f lavfi -i "$(numbered 320x180 30 1)" -f lavfi -i "$(tone 440 1)" \
    "${h264[@]}" "${aac[@]}" short.mp4
run -f lavfi -i "$(quadrants 160 30 4)" -f lavfi -i "$(tone 440 4)" \
    "${h264[@]}" "${aac[@]}" quadrants.mp4

# A red disc on nothing, half of it see-through.
run -f lavfi -i "color=red:s=256x256:r=30:d=2,format=yuva444p,geq=lum='lum(X,Y)':cb='cb(X,Y)':cr='cr(X,Y)':a='if(lt(hypot(X-128,Y-128),100),if(lt(X,128),255,128),0)',format=yuva420p" \
    -f lavfi -i "$(tone 440 2)" -c:v libvpx-vp9 -deadline realtime -cpu-used 8 -auto-alt-ref 0 \
    -b:v 500k -c:a libopus alpha.webm

# Red that is half see-through, in each order of bytes that FFmpeg's decoders have; and red in four bytes
# of which one is unused.
for film in png:rgba:mkv apng:rgba:apng qtrle:argb:mov ffv1:bgra:mkv; do
    IFS=: read -r codec pixels suffix <<<"$film"
    run -f lavfi -i "color=red@0.5:s=64x64:r=10:d=3,format=$pixels" -c:v "$codec" -pix_fmt "$pixels" \
        "half_red_$codec.$suffix"
done
run -f lavfi -i "color=red:s=64x64:r=10:d=3,format=bgr0" -c:v ffv1 -pix_fmt bgr0 red_ffv1.mkv

# Larger than textures can be, and as small as can be.
run -f lavfi -i "color=red:s=20000x16:r=10:d=2,format=yuv420p" -c:v ffv1 wide.mkv
for width in 600 8000; do
    run -f lavfi -i "color=red:s=64x64:r=10:d=2,setsar=$width:max=10000" -f lavfi -i "$(tone 440 2)" \
        -c:v png "${aac[@]}" "stretched_$width.mkv"
done
run -f lavfi -i "color=red:s=1x1:r=10:d=2,format=yuv444p" -c:v ffv1 -pix_fmt yuv420p dot.mkv

# Two tracks of sound, two of subtitles, with languages.
cat >english.srt <<'END'
1
00:00:00,000 --> 00:00:05,000
Good evening

2
00:00:05,000 --> 00:00:06,000
Good night
END
cat >french.srt <<'END'
1
00:00:00,000 --> 00:00:06,000
Bonsoir
END
# One with marks, of the kind that players of subtitles know, and one that no picture has room for.
cat >marks.srt <<'END'
1
00:00:00,000 --> 00:00:06,000
<b>IIII</b> <font color="red">IIII</font>
END
{
    printf '1\n00:00:00,000 --> 00:00:06,000\n'
    for ((i = 0; i < 20000; ++i)); do echo "Line $i of a text that never ends"; done
} >endless.srt
run -f lavfi -i "color=0x204060:s=640x360:r=30:d=6" -i marks.srt -i endless.srt -map 0 -map 1 -map 2 \
    "${h264[@]}" -c:s srt -disposition:s:0 0 -disposition:s:1 0 subtitles.mkv
run -f lavfi -i "color=0x204060:s=640x360:r=30:d=6" -f lavfi -i "$(tone 440 6)" \
    -f lavfi -i "$(tone 880 6)" -i english.srt -i french.srt \
    -map 0 -map 1 -map 2 -map 3 -map 4 "${h264[@]}" "${aac[@]}" -c:s srt \
    -metadata:s:a:0 language=eng -metadata:s:a:0 title=Film \
    -metadata:s:a:1 language=deu -metadata:s:a:1 title=Kommentar \
    -metadata:s:s:0 language=eng -metadata:s:s:1 language=fra \
    -disposition:s:0 0 -disposition:s:1 0 tracks.mkv

# All metadata that text can carry.
run -f lavfi -i "$(tone 440 2)" "${aac[@]}" \
    -metadata title="A Title – ein Titel" -metadata artist="The Artist" \
    -metadata album="The Album" -metadata album_artist="The Album's Artist" \
    -metadata composer="The Composer" -metadata genre="The Genre" -metadata comment="A comment" \
    -metadata description="A description" -metadata copyright="The owner" -metadata date=2021 \
    -metadata track=7 -metadata performer="The performer" tone.m4a

# 30 frames a second in the first second, then 10.
run -f lavfi -i "$(numbered 320x180 30 3)" \
    -vf "select='lt(n,30)+not(mod(n,3))'" -fps_mode vfr "${h264[@]}" uneven.mkv
run -f lavfi -i "color=0x00ff00:s=3840x2160:r=30:d=1,format=gbrp,$bt709" \
    "${h264[@]}" -preset ultrafast uhd.mp4
# What a server can serve in parts, and what takes a while.
run -f lavfi -i "testsrc2=s=640x360:r=30:d=20" "${h264[@]}" -b:v 1500k -g 60 \
    -movflags +faststart long.mp4

: >empty.mp4
head -c 60000 numbered.mp4 >truncated.mp4
for ((i = 0; i < 4000; ++i)); do echo "{\"line\": $i},"; done >text.mp4
cp quadrants.mp4 'ein Über & 100% name.mp4'

# Titles of 3 million characters, in lines.
{
    printf ';FFMETADATA1\ntitle='
    for ((i = 0; i < 100000; ++i)); do printf 'A title that never ends, %d\\\n' "$i"; done
    printf '.\n'
} >long_title.txt
run -i quadrants.mp4 -i long_title.txt -map 0 -map_metadata 1 -c copy long_title.mkv

touch "$stamp"

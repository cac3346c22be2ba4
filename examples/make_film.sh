#!/bin/bash
# Makes the film that the media example plays: make_film.sh PICTURE FILM. The film pans along the
# picture, which `marlune-media --paint PICTURE` paints; it has two audio and two subtitle tracks.
set -euo pipefail

picture=$1
film=$2
seconds=20
texts=$(mktemp -d)
trap 'rm -rf "$texts"' EXIT

cat >"$texts/english.srt" <<'END_OF_TEXT'
1
00:00:01,000 --> 00:00:05,000
They say that nobody has come back from there.

2
00:00:06,000 --> 00:00:12,000
Then let us see what lies beyond the ridge.
END_OF_TEXT
cat >"$texts/german.srt" <<'END_OF_TEXT'
1
00:00:01,000 --> 00:00:05,000
Von dort ist noch keiner zurückgekommen.

2
00:00:06,000 --> 00:00:12,000
Dann sehen wir nach, was hinter dem Kamm liegt.
END_OF_TEXT

chord() {
    echo "aevalsrc=0.12*(sin(2*PI*$1*t)+sin(2*PI*$2*t)+sin(2*PI*$3*t))*(0.7+0.3*sin(t)):s=48000:d=$seconds"
}

ffmpeg -nostdin -hide_banner -loglevel error -y -loop 1 -framerate 30 -t "$seconds" -i "$picture" \
    -f lavfi -i "$(chord 110 165 220)" -f lavfi -i "$(chord 98 147 196)" \
    -i "$texts/english.srt" -i "$texts/german.srt" \
    -vf "crop=w=1280:h=720:x='(iw-ow)*t/$seconds'" -map 0 -map 1 -map 2 -map 3 -map 4 \
    -c:v libx264 -preset veryfast -crf 20 -pix_fmt yuv420p -c:a aac -b:a 96k -c:s srt \
    -metadata title="Evening on Vesper" \
    -metadata:s:a:0 language=eng -metadata:s:a:1 language=deu \
    -metadata:s:s:0 language=eng -metadata:s:s:1 language=deu "$film"

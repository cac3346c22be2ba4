# What scripts that make clips have in common. Sourced.

run() { ffmpeg -nostdin -hide_banner -loglevel error -y "$@"; }

h264=(-c:v libx264 -preset veryfast -pix_fmt yuv420p -color_range tv -colorspace bt709
      -color_primaries bt709 -color_trc bt709)
aac=(-c:a aac -b:a 96k)

# SIZE RATE SECONDS: each frame shows its number as 16 cells side by side: a white one, a black one,
# and 14 bits, the highest first.
numbered() {
    echo "nullsrc=s=16x2:r=$2:d=$3,format=gray,geq=lum='if(eq(X,0),255,if(eq(X,1),0,255*mod(floor(N/pow(2,15-X)),2)))',scale=$1:flags=neighbor:in_range=pc:out_range=tv,setsar=1,format=yuv420p"
}

tone() { echo "sine=frequency=$1:sample_rate=48000:duration=$2"; }

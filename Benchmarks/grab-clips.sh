#!/bin/bash
# grab-clips.sh FOLDER: writes the clips on which grabbing is timed, where they are not there yet.
# Fine texture that moves, under fresh noise in every frame, so that decoding costs what footage
# from a camera costs. Some minutes and about 250 MB, once.
set -euo pipefail
mkdir -p "$1"
cd "$1"

# clip NAME SIZE SECONDS ENCODER-OPTION…
clip() {
    local name=$1 size=$2 seconds=$3
    shift 3
    [ -s "$name" ] && return
    echo "writing $name ($seconds s of $size)" >&2
    local texture="mandelbrot=size=960x540:rate=30:maxiter=100:end_scale=0.01,scale=$size"
    local figures="testsrc2=size=$size:rate=30"
    nice ffmpeg -nostdin -y -v error -filter_complex \
        "$texture,format=yuv420p[t];$figures,format=yuv420p[f];
         [t][f]blend=all_mode=average,noise=alls=10:allf=t[v]" \
        -map '[v]' -t "$seconds" -c:v libx264 -profile:v high "$@" \
        -sc_threshold 0 -movflags +faststart "unfinished-$name"
    mv "unfinished-$name" "$name"
}

trap 'rm -f unfinished-*' EXIT
clip 1080p30.mp4 1920x1080 60 -preset veryfast -g 250 -keyint_min 250 -bf 3 \
    -b:v 16M -maxrate 24M -bufsize 32M
clip 4k30.mp4 3840x2160 20 -preset superfast -g 60 -keyint_min 60 -bf 2 \
    -b:v 50M -maxrate 70M -bufsize 100M

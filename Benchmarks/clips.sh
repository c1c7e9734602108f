#!/bin/bash
# clips.sh FOLDER [SECONDS]: writes the clips on which grabbing and stepping are timed, where they are not there yet;
# with SECONDS only the two of 1080p30, so long each.
# Fine texture that moves, under fresh noise in every frame, so that decoding costs what footage
# from a camera costs. Some minutes and about 250 MB, once.
set -euo pipefail
sample=$(dirname "$(readlink -f "$0")")/../Samples/balles.mp4
mkdir -p "$1"
cd "$1"
short=${2-}

# clip NAME SIZE RATE SECONDS ENCODER-OPTION…
clip() {
    local name=$1 size=$2 rate=$3 seconds=$4
    shift 4
    [ -s "$name" ] && return
    echo "writing $name ($seconds s of $size)" >&2
    local texture="mandelbrot=size=960x540:rate=$rate:maxiter=100:end_scale=0.01,scale=$size"
    local figures="testsrc2=size=$size:rate=$rate"
    nice ffmpeg -nostdin -y -v error -filter_complex \
        "$texture,format=yuv420p[t];$figures,format=yuv420p[f];
         [t][f]blend=all_mode=average,noise=alls=10:allf=t[v]" \
        -map '[v]' -t "$seconds" "$@" -movflags +faststart "unfinished-$name"
    mv "unfinished-$name" "$name"
}

trap 'rm -f unfinished-*' EXIT
x264=(-c:v libx264 -profile:v high -sc_threshold 0)
clip 1080p30.mp4 1920x1080 30 "${short:-60}" "${x264[@]}" -preset veryfast -g 250 -keyint_min 250 -bf 3 \
    -b:v 16M -maxrate 24M -bufsize 32M
if [ -z "$short" ]; then
    clip 4k30.mp4 3840x2160 30 20 "${x264[@]}" -preset superfast -g 60 -keyint_min 60 -bf 2 \
        -b:v 50M -maxrate 70M -bufsize 100M
    clip 1080p60.mp4 1920x1080 60 15 -pix_fmt yuv420p10le -c:v libx265 -preset ultrafast -tag:v hvc1 \
        -x265-params log-level=error:keyint=120:min-keyint=120:scenecut=0:bframes=3:bitrate=12000
fi

# The sample's two balls, over and over, under noise: a film with subjects, for exports.
subjects=1080p30-subjects.mp4
if [ ! -s "$subjects" ]; then
    echo "writing $subjects (${short:-104} s of 1920x1080)" >&2
    nice ffmpeg -nostdin -y -v error -stream_loop 25 -i "$sample" -an \
        -vf "scale=1920:1080:flags=bicubic,noise=alls=4:allf=t" -r 30 -t "${short:-104}" "${x264[@]}" \
        -preset veryfast -g 250 -keyint_min 250 -bf 3 -b:v 16M -maxrate 24M -bufsize 32M \
        -movflags +faststart "unfinished-$subjects"
    mv "unfinished-$subjects" "$subjects"
fi

#!/bin/bash
# make-clips.sh FOLDER: makes the clips that the tests of Media run on: small and short, each with one
# thing in it that leads careless frame access astray. FOLDER/films holds what can be opened,
# FOLDER/long one film that takes long to decode, FOLDER/refused what cannot be opened. Fails where one of them cannot be made. Takes some 20 s on two cores.
set -euo pipefail
shopt -s inherit_errexit

mkdir -p "$1/films" "$1/long" "$1/refused" "$1/parts"
cd "$1/films"
parts=../parts
refused=../refused

run() { ffmpeg -nostdin -y -v error "$@"; }

# encode FILE SECONDS RATE OPTIONS…: a film in which no two pictures are alike.
encode() {
    local file=$1 seconds=$2 rate=$3
    shift 3
    run -f lavfi -i "testsrc2=s=${size:-176x144}:r=$rate,noise=alls=6:allf=t" -t "$seconds" "$@" "$file"
}

# copy FROM TO OPTIONS…: the same packets in another container.
copy() {
    local from=$1 to=$2
    shift 2
    run -i "$from" -map 0 -c copy "$@" "$to"
}

# damage FILE FROM TO SEED: overwrites 16 places of 12 bytes between two percentages of the file.
damage() {
    local file=$1 size state=$4 place bytes
    size=$(stat -c %s "$file")
    for _ in {1..16}; do
        state=$(((state * 1103515245 + 12345) & 0x7fffffff))
        place=$((size * $2 / 100 + state % (size * ($3 - $2) / 100)))
        bytes=$(printf '\\x%02x' $(((state >> 8) & 255)) $(((state >> 16) & 255)) $((state & 255)))
        printf '%b' "$bytes$bytes$bytes$bytes" | dd of="$file" bs=1 seek="$place" conv=notrunc status=none
    done
}

x264=(-pix_fmt yuv420p -c:v libx264 -preset veryfast)
x265=(-pix_fmt yuv420p -c:v libx265 -preset superfast -tag:v hvc1)
open264=open-gop=1:keyint=24:min-keyint=24:scenecut=0:bframes=3
open265=open-gop=1:keyint=24:min-keyint=24:scenecut=0:bframes=4:log-level=error

# H.264: groups of pictures, closed and open, in every container that takes them.
encode closed_h264.mp4 3 30 "${x264[@]}" -g 24 -bf 3
encode open_h264.mp4 3 30 "${x264[@]}" -x264-params "$open264"
encode pyramid_h264.mp4 3 60000/1001 "${x264[@]}" -g 48 -bf 5 -x264-params b-pyramid=normal
encode one_group_h264.mp4 3 25 "${x264[@]}" -g 1000 -bf 2
encode intra_refresh_h264.mp4 3 30 "${x264[@]}" -x264-params intra-refresh=1:keyint=24
encode no_reordering_h264.mp4 2 30 "${x264[@]}" -g 20 -bf 0
encode all_intra_h264.mp4 1 30 "${x264[@]}" -g 1
for container in ts mkv flv avi; do copy closed_h264.mp4 "closed_h264.$container"; done
for container in ts mkv nut; do copy open_h264.mp4 "open_h264.$container"; done
copy open_h264.mp4 open_raw.h264
copy closed_h264.mp4 closed_raw.h264
copy pyramid_h264.mp4 pyramid_h264.ts

# HEVC, whose open groups leave pictures out when entered.
encode open_hevc.mp4 3 30 "${x265[@]}" -x265-params "$open265"
for container in ts mkv; do copy open_hevc.mp4 "open_hevc.$container"; done
copy open_hevc.mp4 open_raw.hevc
run -ss 0.9 -i open_hevc.mp4 -c copy cut_open_hevc.ts

# Timelines: edit lists, negative and late starts, large and wrapping and restarting times.
run -ss 1.1 -i closed_h264.mp4 -c copy edit_list_closed.mp4
run -ss 1.1 -i open_h264.mp4 -c copy edit_list_open.mp4
run -ss 1.1 -i open_hevc.mp4 -c copy edit_list_open_hevc.mp4
run -ss 1.1 -i closed_h264.mp4 -c copy -avoid_negative_ts disabled negative_times.mkv
copy closed_h264.mp4 no_edit_list.mp4 -use_editlist 0
copy closed_h264.mp4 late_start.mp4 -output_ts_offset 0.7
copy closed_h264.mp4 large_times.ts -output_ts_offset 40000
copy closed_h264.mp4 wrapping_times.ts -output_ts_offset 95442.2 # 2^33 / 90000 s is 95443.7 s
cat closed_h264.ts closed_h264.ts >restarting_times.ts
encode $parts/small.ts 1.5 30 "${x264[@]}" -g 15
size=320x180 encode $parts/large.ts 1.5 30 "${x264[@]}" -g 15 -output_ts_offset 1.5
cat $parts/small.ts $parts/large.ts >changing_size.ts

# Containers without an index, or with one in pieces.
copy closed_h264.mp4 fragmented.mp4 -movflags frag_keyframe+empty_moov
copy open_h264.mp4 fragmented_short.mp4 -movflags empty_moov+default_base_moof -frag_duration 250000
run -i open_h264.mp4 -c copy -f matroska - >no_index.mkv

# Variable rates: gaps of one to seven pictures.
gaps="select='not(between(mod(n\,19)\,4\,9))*gt(mod(n\,7)\,0)'"
encode variable_rate.mp4 4 30 -vf "$gaps" -vsync vfr "${x264[@]}" -g 24 -bf 3
copy variable_rate.mp4 variable_rate.mkv
encode still_for_long.mp4 4 30 -vf "select='lt(n\,3)+gt(n\,117)'" -vsync vfr "${x264[@]}" -g 24

# Interlaced.
encode mbaff_h264.mp4 4 50 -vf "tinterlace=interleave_top,fieldorder=tff" "${x264[@]}" \
    -flags +ildct+ilme -x264-params tff=1 -g 24 -bf 2
copy mbaff_h264.mp4 mbaff_h264.ts
encode interlaced_mpeg2.ts 4 50 -vf "tinterlace=interleave_top" -c:v mpeg2video -flags +ildct+ilme \
    -g 12 -bf 2 -b:v 2M

# Other codecs.
encode mpeg2.mpg 3 25 -c:v mpeg2video -g 12 -bf 2 -b:v 1M
encode mpeg2.ts 3 25 -c:v mpeg2video -g 12 -bf 2 -b:v 1M
copy mpeg2.ts mpeg2.mkv
encode mpeg1.mpg 2 25 -c:v mpeg1video -g 12 -bf 2 -b:v 1M
encode mpeg4_reordered.avi 3 30 -c:v mpeg4 -g 40 -bf 2 -b:v 800k -vtag xvid
encode mpeg4.mp4 2 30 -c:v mpeg4 -g 40 -bf 0 -b:v 800k
encode mpeg4_reordered.mp4 2 30 -c:v mpeg4 -g 24 -bf 2 -b:v 800k
encode mjpeg.avi 1 30 -pix_fmt yuvj420p -c:v mjpeg -q:v 4
encode mjpeg.mov 1 30 -pix_fmt yuvj422p -c:v mjpeg -q:v 4
encode prores.mov 1 30 -pix_fmt yuv422p10le -c:v prores_ks
encode alternate_vp8.webm 3 30 -pix_fmt yuv420p -c:v libvpx -b:v 500k -g 40 -auto-alt-ref 1 \
    -lag-in-frames 16 -deadline realtime -cpu-used 8
encode alternate_vp9.webm 3 30 -pix_fmt yuv420p -c:v libvpx-vp9 -b:v 500k -g 40 -auto-alt-ref 1 \
    -lag-in-frames 16 -deadline realtime -cpu-used 8
encode transparent_vp9.webm 1 30 -vf "format=yuva420p,geq=lum='p(X,Y)':cb='p(X,Y)':cr='p(X,Y)':a='X+N'" \
    -c:v libvpx-vp9 -b:v 500k -g 15 -auto-alt-ref 0 -deadline realtime -cpu-used 8
for container in mp4 mkv; do
    encode "av1.$container" 2 30 -pix_fmt yuv420p -c:v libsvtav1 -preset 12 -g 24 2>$parts/av1.log
done
encode theora.ogv 2 30 -pix_fmt yuv420p -c:v libtheora -g 24 -b:v 800k
encode wmv2.wmv 2 30 -c:v wmv2 -g 30 -b:v 800k
encode h263.3gp 1 15 -c:v h263 -g 10 -b:v 300k
encode sorenson.flv 1 25 -c:v flv1 -g 10 -b:v 500k
encode animated.gif 1 10
encode animated.apng 1 10 -c:v apng -plays 0
encode lossless_ffv1.mkv 1 30 -c:v ffv1 -level 3

# Geometry and sampling.
encode full_chroma_h264.mp4 3 30 -pix_fmt yuv444p -c:v libx264 -preset veryfast -g 24 -bf 2
encode ten_bits_hevc.mp4 1 30 -pix_fmt yuv420p10le -c:v libx265 -preset superfast -tag:v hvc1 \
    -x265-params keyint=15:log-level=error
size=161x121 encode odd_size.mp4 1 30 -pix_fmt yuv444p -c:v libx264 -preset veryfast -g 15
size=176x136 encode cropped.mp4 1 30 "${x264[@]}" -g 15 -bsf:v h264_metadata=crop_left=6:crop_bottom=10
encode one_picture.mp4 1 30 -frames:v 1 "${x264[@]}"

run -i closed_h264.mp4 -c copy -metadata:s:v rotate=90 turned.mp4

# One group of pictures in which the last needs all others.
run -f lavfi -i testsrc2=s=640x360:r=60 -t 20 "${x264[@]}" -g 10000 -bf 0 -preset ultrafast -crf 35 \
    -movflags +faststart ../long/one_group.mp4

# Other streams beside the pictures.
run -f lavfi -i color=teal:s=96x96 -frames:v 1 $parts/cover.jpg
run -i closed_h264.mp4 -i $parts/cover.jpg -map 0 -map 1 -c copy -disposition:v:1 attached_pic \
    cover_last.mp4
run -i $parts/cover.jpg -i closed_h264.mp4 -map 0 -map 1 -c copy -disposition:v:0 attached_pic \
    cover_first.mp4
run -f lavfi -i sine=440:d=4 -i closed_h264.mp4 -map 0 -map 1 -c:v copy -c:a aac sound_first_longer.mp4
run -f lavfi -i sine=440:d=4 -i closed_h264.mp4 -map 0 -map 1 -c:v copy -c:a mp2 sound_first.ts

# Cut off and damaged.
copy closed_h264.mp4 $parts/head_first.mp4 -movflags +faststart
cut() { head -c $(($(stat -c %s "$1") * $2 / 100)) "$1" >"$3"; }
cut $parts/head_first.mp4 60 cut_head_first.mp4
cut closed_h264.mkv 60 cut.mkv
cut closed_h264.ts 60 cut.ts
cut mpeg4_reordered.avi 60 cut.avi
cut open_raw.hevc 60 cut_raw.hevc
tail -c +60001 mpeg2.mpg >cut_front.mpg
tail -c +$((188 * 200 + 1)) mpeg2.ts >cut_front_mpeg2.ts
tail -c +$((188 * 60 + 1)) closed_h264.ts >cut_front_h264.ts
cp closed_h264.mp4 damaged.mp4 && damage damaged.mp4 10 80 1
cp open_h264.mp4 damaged_open.mp4 && damage damaged_open.mp4 10 80 5
cp closed_h264.ts damaged.ts && damage damaged.ts 20 80 2
cp open_hevc.mkv damaged.mkv && damage damaged.mkv 20 80 3
cp mpeg2.mpg damaged.mpg && damage damaged.mpg 20 80 4

# What has no picture to give.
cut closed_h264.mp4 70 $refused/tables_lost.mp4
head -c 4000 $parts/head_first.mp4 >$refused/no_picture_left.mp4
run -f lavfi -i sine=440:d=1 -c:a aac $refused/sound_only.m4a
run -f lavfi -i sine=440:d=1 -c:a libmp3lame $refused/sound_only.mp3
run -f lavfi -i sine=440:d=1 $refused/sound_only.wav
for codec in aac libmp3lame; do
    file=$refused/cover_only.$([[ $codec == aac ]] && echo m4a || echo mp3)
    run -f lavfi -i sine=440:d=1 -i $parts/cover.jpg -map 0 -map 1 -c:a $codec -c:v copy \
        -disposition:v attached_pic "$file"
done
: >$refused/nothing.mp4
printf 'Ceci est un texte, pas un film.\n%.0s' {1..200} >$refused/text.mp4
printf '#EXTM3U\n#EXTINF:1,\n../films/closed_h264.ts\n#EXT-X-ENDLIST\n' >$refused/play_list.m3u8
printf "ffconcat version 1.0\nfile '../films/closed_h264.mp4'\n" >$refused/play_list.mp4
cp $parts/cover.jpg $refused/jpeg_picture.mp4
run -i $parts/cover.jpg $refused/png_picture.mp4.png && mv $refused/png_picture.mp4.png $refused/png_picture.mp4
mkdir -p $refused/folder.mp4

rm -r $parts

#!/usr/bin/env bash
# docs/contact-sheet.sh FILMS: draws docs/images/styles.jpg from the films in that folder.
#
# Cuts out one subject, or all together, at a few times and draws each in every style.
set -euo pipefail
films=$(realpath "${1:?usage: docs/contact-sheet.sh FILMS}")
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/setup.sh
build=build/release

stillwick_install build
cmake --preset release -DSTILLWICK_BENCHMARKS=ON >/dev/null
cmake --build --preset release --target stillwick contact-sheet >/dev/null

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
pictures=()

# row FILM SECONDS SUBJECT: adds one cut-out; SUBJECT is its number, or all.
row() {
    local into=$folder/${#pictures[@]} mode=perSubject wanted="_s$3.png"
    [ "$3" != all ] || { mode=merged wanted=.png; }
    "$build/Stillwick/stillwick" capture "$films/$1.mp4" --at "$2" -o "$into" --mode "$mode" --crop >/dev/null
    pictures+=("$(echo "$into"/*"$wanted")")
}

row flower 4.5 all
row coffee 8.5 2
row cups 7 all
row juggle 8.5 2
row dog 5.5 1
row coffee 2.5 1
row juggle 5.5 1
row flower 3 all

"$build/Benchmarks/contact-sheet" docs/images/styles.jpg 400 "${pictures[@]}"

#!/usr/bin/env bash
# Takes the README's pictures of the phone app anew, a real finger before its camera; those by night are left in
# build/phone-pictures. Wants the program, and the page as scripts/build_web.sh builds it.
set -euo pipefail
cd "$(dirname "$0")/.."

# Of the recorded fingers one that both values can be told of, from where it lies still.
recording=../shared/recordings/resting-04.csv
from=10000 # milliseconds
[ -r "$recording" ] || { echo "no pictures are taken: the recordings are not here" >&2; exit 0; }
folder=$PWD/build/phone-pictures
mkdir -p "$folder"
awk -F, -v from=$from 'NR == 1 || $1 >= from' "$recording" >"$folder/finger.csv"
build/veyla synth "$folder/finger.y4m" --seconds 45 --fps 30 --size 192x144 --noise 3 --from "$folder/finger.csv"
(cd apps/web && node_modules/.bin/vite-node pictures/phone.ts "$folder/finger.y4m" "$folder")
for name in measuring results charts; do
  ffmpeg -v error -y -i "$folder/phone_${name}_light.png" -filter_complex \
    "scale=390:844:flags=area,split[a][b];[a]palettegen=96[p];[b][p]paletteuse=dither=none" "docs/phone_$name.png"
done

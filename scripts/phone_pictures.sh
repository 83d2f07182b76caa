#!/usr/bin/env bash
# Takes the README's pictures of the phone app anew, a real finger before its camera; those by night are left in
# build/phone-pictures. Wants the program, and the page as scripts/build_web.sh builds it.
set -euo pipefail
cd "$(dirname "$0")/.."

# The clearest pulse of those recordings that are in the public domain.
recordings=../shared/recordings
recording=$recordings/resting-05.csv
[ -r "$recording" ] || { echo "no pictures are taken: the recordings are not here" >&2; exit 0; }
folder=$PWD/build/phone-pictures
mkdir -p "$folder"
build/veyla synth "$folder/finger.y4m" --seconds 45 --fps 30 --size 192x144 --noise 3 --from "$recording"
build/veyla measure $recordings/resting-??.csv --only heartrate --every 20 --no-save --csv "$folder/measured.csv" >/dev/null
(cd apps/web && node_modules/.bin/vite-node pictures/phone.ts "$folder/finger.y4m" "$folder/measured.csv" "$folder")
for name in measuring results charts; do
  ffmpeg -v error -y -i "$folder/phone_${name}_light.png" -filter_complex \
    "scale=390:844:flags=area,split[a][b];[a]palettegen=96[p];[b][p]paletteuse=dither=none" "docs/phone_$name.png"
done

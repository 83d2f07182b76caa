#!/usr/bin/env bash
# Builds the phone app and tests it in a real browser, with generated fingers before its camera.
# Wants the program at build/veyla, which generates them. Writes build/web-tests.xml and pictures of
# the screens into build/web-pictures.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/build_web.sh

mkdir -p build/web-recordings
generate() { # name, options
  local file=build/web-recordings/$1.y4m
  [ "$file" -nt build/veyla ] || build/veyla synth "$file" --seconds 45 --fps 30 --size 192x144 "${@:2}"
}
generate 72 --bpm 72
generate 96 --bpm 96
generate low --spo2 80
series=build/web-recordings/series.csv dark=build/web-recordings/dark-blue.csv
build/veyla synth $series --seconds 45
awk -F, -v OFS=, 'NR > 1 { $4 *= 0.1 } 1' $series >$dark
generate dark-blue --from $dark

cd apps/web
npm test

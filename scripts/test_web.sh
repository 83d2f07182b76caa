#!/usr/bin/env bash
# Builds the phone app and tests it in a real browser, with generated fingers before its camera.
# Wants the program at build/veyla, which generates them. Writes build/web-tests.xml and pictures of
# the screens into build/web-pictures.
# usage: scripts/test_web.sh [FILE]... [-t NAME]; without either, every test
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/build_web.sh

mkdir -p build/web-recordings
generate() { # name, options
  local file=build/web-recordings/$1.y4m
  [ "$file" -nt build/veyla ] || build/veyla synth "$file" --seconds 45 --fps 30 --size 192x144 "${@:2}"
}
generate 72 --bpm 72
series=build/web-recordings/series.csv
build/veyla synth $series --seconds 45
change() { # name, what happens to a row's colours, t seconds after the first
  awk -F, -v OFS=, "NR > 1 { t = \$1 / 1000; $2 } 1" $series >build/web-recordings/$1.csv
  generate $1 --from build/web-recordings/$1.csv
}
# Absent at first, away for three seconds, then too close to the light; the camera sees next to no blue.
change absent '$4 *= 0.1
  if (t < 6) $2 = $3 = $4 = 3
  else if (t >= 12 && t < 15) { $2 = 60; $3 = 62; $4 = 55 }
  else if (t >= 15 && t < 18) $2 = 255'

cd apps/web
npm test -- "$@"

#!/usr/bin/env bash
# Draws every recorded colour series of a folder as a video of a fingertip (hot spot, gradient, noise, 8 bits),
# averages its frames as a device does, and evaluates the heart rates that are measured from them.
# Videos and averages stay in OUT and are used again.
set -euo pipefail
if [ $# -lt 2 ]; then
  echo "usage: benchmarks/rendered_fingers.sh FOLDER OUT [MODEL]" >&2
  exit 2
fi
veyla=$(dirname "$0")/../build/veyla recordings=$1 out=$2 model=${3:-iPhone8,1}
shopt -s nullglob
references=("$recordings"/*.reference.csv)
if [ ${#references[@]} -eq 0 ]; then
  echo "$recordings: holds no NAME.reference.csv; put one beside each colour series" >&2
  exit 3
fi
mkdir -p "$out/videos" "$out/$model"
for reference in "${references[@]}"; do
  name=$(basename "$reference" .reference.csv)
  video=$out/videos/$name.mp4 series=$out/$model/$name.csv
  [ -e "$video" ] || "$veyla" synth "$video" --from "$recordings/$name.csv" --size 192x144
  [ -e "$series" ] || "$veyla" series "$video" -o "$series" --device "$model"
  cp -f "$reference" "$out/$model/"
done
"$veyla" evaluate "$out/$model" --device "$model"

#!/usr/bin/env bash
# Draws every recorded colour series of a folder as frames of a fingertip (hot spot, gradient, noise, 8 bits),
# three times with different noise, averages the frames as a device does, and evaluates the heart rates that are
# measured from them. The frames go through a video without loss, since a camera's live frames have not been
# compressed either; it takes up to 2 GB and is removed. The averages stay in OUT and are used again.
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
mkdir -p "$out/$model"
video=$out/$model/frames.y4m
trap 'rm -f "$video"' EXIT
for reference in "${references[@]}"; do
  name=$(basename "$reference" .reference.csv)
  for seed in 1 2 3; do
    drawn=$out/$model/drawn$name-s$seed
    if [ ! -e "$drawn.csv" ]; then
      "$veyla" synth "$video" --from "$recordings/$name.csv" --size 192x144 --seed "$seed"
      "$veyla" series "$video" -o "$drawn.csv" --device "$model"
    fi
    cp -f "$reference" "$drawn.reference.csv"
  done
done
"$veyla" evaluate "$out/$model" --device "$model"

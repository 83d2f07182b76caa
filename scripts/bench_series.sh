#!/usr/bin/env bash
# Compares `veyla series` on 1080p H.264 and 4K HEVC with FFmpeg merely decoding the same with as many threads,
# alternating the two: prints the medians of processor time and of time with their ratios, and the most memory.
set -euo pipefail
cd "$(dirname "$0")/.."

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
echo "making clips of 1080p H.264 and 4K HEVC ..."
clip() { # name, size, seconds, encoder's options
  ffmpeg -v error -f lavfi -i "testsrc2=size=$2:rate=30:duration=$3,noise=alls=8:allf=t" -pix_fmt yuv420p "${@:4}" \
    "$folder/$1.mp4"
}
clip h264 1920x1080 30 -c:v libx264 -preset veryfast -crf 23
clip hevc 3840x2160 10 -c:v libx265 -preset ultrafast -crf 28 -x265-params log-level=none

runs=7
# The processor time of a command, and the time on the wall.
times() { bash -c 'TIMEFORMAT="%U %S %R"; time "$@" >/dev/null 2>&1' _ "$@" 2>&1 | awk '{ print $1 + $2, $3 }'; }
# The high-water mark of its resident set in MB, while it runs.
memory() {
  local most=0 now
  "$@" >/dev/null 2>&1 &
  while kill -0 $! 2>/dev/null; do
    now=$(awk '/^VmHWM/ { print $2 }' "/proc/$!/status" 2>/dev/null || true)
    [ "${now:-0}" -le $most ] || most=$now
    sleep 0.1
  done
  wait $!
  echo $((most / 1024))
}
for name in h264 hevc; do
  decoding=(ffmpeg -nostdin -v error -i "$folder/$name.mp4" -f null -)
  series=(build/veyla series "$folder/$name.mp4" -o "$folder/series.csv")
  for _ in $(seq $runs); do
    times "${decoding[@]}" >>"$folder/decoding-$name"
    times "${series[@]}" >>"$folder/series-$name"
  done
  median() { cut -d " " -f "$2" "$folder/$1-$name" | sort -n | sed -n $(((runs + 1) / 2))p; }
  awk -v s="$(median series 1)" -v d="$(median decoding 1)" -v st="$(median series 2)" -v dt="$(median decoding 2)" \
    'BEGIN { printf "%.2f s of processor time to %.2f s: %.3f times; %.2f s to %.2f s: %.3f times; ", s, d, s / d, st, dt, st / dt }' |
    sed "s/^/$name: veyla series takes /"
  echo "$(memory "${series[@]}") MB to $(memory "${decoding[@]}") MB"
done

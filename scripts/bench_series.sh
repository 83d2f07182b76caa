#!/usr/bin/env bash
# Times `veyla series` on a minute of 1080p H.264 against FFmpeg merely decoding it, alternating the
# two, and prints the ratio of the medians and the most memory that `veyla` took.
set -euo pipefail
cd "$(dirname "$0")/.."

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
clip=$folder/clip.mp4
echo "making a clip of 60 s at 1920 x 1080 ..."
ffmpeg -v error -f lavfi -i testsrc2=size=1920x1080:rate=30:duration=60,noise=alls=8:allf=t \
  -c:v libx264 -preset veryfast -crf 23 -pix_fmt yuv420p "$clip"

seconds() { /usr/bin/env bash -c 'TIMEFORMAT=%R; time "$@" >/dev/null 2>&1' _ "$@" 2>&1; }
median() { sort -n | sed -n "$(((${1:-5} + 1) / 2))p"; }

runs=5
for _ in $(seq $runs); do
  seconds ffmpeg -nostdin -v error -i "$clip" -f null - >>"$folder/ffmpeg"
  seconds build/veyla series "$clip" -o "$folder/series.csv" >>"$folder/veyla"
done
decoding=$(median $runs <"$folder/ffmpeg")
series=$(median $runs <"$folder/veyla")
awk -v d="$decoding" -v s="$series" \
  'BEGIN { printf "veyla series %.2f s, ffmpeg -f null %.2f s: %.2f times\n", s, d, s / d }'

# The high-water mark of the resident set, while the clip is read.
build/veyla series "$clip" -o "$folder/series.csv" &
most=0
while kill -0 $! 2>/dev/null; do
  now=$(awk '/^VmHWM/ { print $2 }' "/proc/$!/status" 2>/dev/null || true)
  [ "${now:-0}" -gt "$most" ] && most=$now
  sleep 0.2
done
wait $!
echo "veyla series took at most $((most / 1024)) MB"

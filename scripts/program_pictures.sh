#!/usr/bin/env bash
# Takes the pictures of docs/commands.md anew: the measuring screen with the pulse of a recorded finger, and the chart
# of a demo history, since a history bears the days on which it was measured. Wants the program.
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/program-pictures
rm -rf "$build"
mkdir -p "$build"
LC_ALL=en_US.UTF-8 build/veyla demo-history --data "$build/history" >/dev/null
LC_ALL=en_US.UTF-8 build/veyla chart --data "$build/history" --period month -o docs/chart.png

# The clearest pulse of those recordings that are in the public domain. Its camera gives no oxygen value, as most.
recording=../shared/recordings/resting-05.csv
[ -r "$recording" ] || { echo "the measuring screen is left as it is: the recordings are not here" >&2; exit 0; }
build/veyla measure "$recording" --only heartrate --no-save --scale 1 --snapshot docs/measuring_screen.png

#!/usr/bin/env bash
# Searches for input that breaks what must hold of any, FUZZ_SECONDS (60) for each program of tests/fuzz,
# or for those named. Begins with tests/fuzz/corpus and what earlier runs came to. What breaks something is
# left in build/fuzz/found. Prints how many inputs were tried; fails where anything broke.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
programs=$PWD/build/fuzz/tests/fuzz
corpus=$PWD/tests/fuzz/corpus
found=build/fuzz/found
# shellcheck disable=SC2046
[ $# -gt 0 ] || set -- $(ls "$corpus")
declare -i total=0 broken=0

mkdir -p "$found"
for name in "$@"; do
  mkdir -p "build/fuzz/corpus/$name"
  # What a file in memory is for one target, a folder in memory is for another.
  TMPDIR=/dev/shm "$programs/fuzz_$name" -max_total_time="${FUZZ_SECONDS:-60}" -timeout=20 -max_len=4096 \
    -print_final_stats=1 -artifact_prefix="$found/$name-" \
    "build/fuzz/corpus/$name" "$corpus/$name" >"$found/$name.log" 2>&1 || {
    broken+=1
    echo "fuzz: $name: $(grep -m 1 -E 'does not hold|ERROR|error:' "$found/$name.log")" >&2
    echo "fuzz: see $found/$name.log" >&2
  }
  runs=$(awk '/number_of_executed_units/ { print $2 }' "$found/$name.log")
  echo "fuzz: $name: ${runs:-0} runs"
  total+=${runs:-0}
done
echo "fuzz: $total runs, $broken of $# broken"
((broken == 0))

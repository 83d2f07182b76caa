#!/usr/bin/env bash
# Kills the program at any moment and at every call that writes, makes each of these calls fail, damages
# what is kept, and looks after each blow whether anything was lost, half-written or told wrongly.
# Prints what it did; fails where anything was wrong. usage: scripts/torture.sh [SCALE]; 1 takes minutes
# on two cores, 0 a few seconds. The random numbers begin with SEED (20).
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
root=$PWD
scale=${1:-1}
program=$root/build/veyla
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
export XDG_DATA_HOME=$work LC_ALL=C.UTF-8
data=$work/veyla
RANDOM=${SEED:-20}
declare -i kills=0 faults=0 damages=0 wrong=0 attempted=0 saved=0

veyla() { "$program" "$@"; }
wrong() {
  echo "torture: $*" >&2
  wrong+=1
}
entries() { veyla history --json 2>/dev/null | grep -c '"number"'; }
records() { veyla health export -o - 2>/dev/null | grep -c '^{.*}$'; }

begin() { # an empty history whose health records are wanted
  rm -rf "$data"
  veyla health allow heartrate >/dev/null && veyla health allow spo2 >/dev/null
  attempted=0 saved=0
}

look() { # after what: what was told to be saved is there, and nothing that nobody measured
  local -i there kept
  there=$(entries)
  kept=$(records)
  veyla history >/dev/null 2>&1 || wrong "$1: the history cannot be read"
  [ "$(sqlite3 "$data/veyla.db" 'PRAGMA integrity_check' 2>&1)" = ok ] || wrong "$1: damaged store"
  ((there >= saved && there <= attempted)) ||
    wrong "$1: $there entries of $attempted attempted, $saved told to be saved"
  ((kept >= 2 * saved && kept <= 2 * attempted)) || wrong "$1: $kept records for $saved saved"
}

# Killed at random moments: one, four at once, and beside others that read and write.
measure_for() { # file for its output, seconds until it is killed
  timeout -s KILL "$2" "$program" measure finger.csv >"$1" 2>/dev/null
  grep -q '^Saved' "$1"
}
moment() { printf '0.%03d' $((RANDOM % 120 + 1)); }
kill_at_random() { # rounds, programs at once
  local -i round each
  for ((round = 0; round < $1; ++round)); do
    for ((each = 0; each < $2; ++each)); do
      rm -f "out$each"
      measure_for "out$each" "$(moment)" 2>/dev/null &
    done
    {
      timeout -s KILL "$(moment)" "$program" history label 1 Resting
      timeout -s KILL "$(moment)" "$program" history export -o list.csv
    } >/dev/null 2>&1
    wait
    attempted+=$2
    kills+=$(($2 + 2))
    saved+=$(cat out* | grep -c '^Saved')
    look "killed at random"
  done
  veyla history export -o list.csv 2>/dev/null || wrong "the list cannot be exported any more"
  compgen -G 'list.csv.part*' >/dev/null && wrong "what the killed had begun lies beside list.csv"
}

# At every call that writes: killed there, or refused by the system.
writing=write,pwrite64,fsync,fdatasync,ftruncate,unlink,rename,mkdir,chmod
calls_of() { # command; a line for each call, its name and its number among those of the name
  strace -f -qq -o calls -e trace=$writing "$program" "$@" >/dev/null 2>&1
  sed 's/^[0-9]* *//; s/(.*//' calls | grep -x "${writing//,/\\|}" | awk '{ print $1, ++seen[$1] }'
}
with() { # what is injected, call, its number, command
  local what=$1 call=$2 number=$3
  shift 3
  { strace -f -qq -o /dev/null -e trace="$call" -e "inject=$call:$what:when=$number" \
    "$program" "$@" >out 2>error; } 2>/dev/null
}
kill_at_every_call() { # command
  local call number
  while read -r call number; do
    with signal=KILL "$call" "$number" "$@"
    attempted+=1 kills+=1
    saved+=$(grep -c '^Saved' out)
    look "$* killed at $call $number"
  done < <(calls_of "$@")
}
refuse_every_call() { # error, command
  local error=$1 call number told
  shift
  local -i before after status more lines
  while read -r call number; do
    before=$(entries)
    with "error=$error" "$call" "$number" "$@"
    status=$?
    faults+=1
    after=$(entries)
    lines=$(grep -c . error)
    told="$* with $error at $call $number, status $status: $(cat error)"
    ((status < 5)) || wrong "$told"
    ((lines <= 1)) || wrong "more than one line: $told"
    ((status == 0 || lines == 1)) || [ "$call" = write ] || wrong "silent: $told"
    [ "$1" = measure ] || continue
    more=0
    grep -q '^Saved\|is saved' out error && more=1
    ((after == before + more)) || wrong "$((after - before)) entries more, not $more: $told"
  done < <(calls_of "$@")
}

# Bytes that are others than were written: told, with a status of the table.
damage() { # rounds
  local -i round status
  local file
  for ((round = 0; round < $1; ++round)); do
    file=$(printf '%s\n' veyla.db Observations.ndjson | sed -n "$((RANDOM % 2 + 1))p")
    cp -r "$data" whole
    printf "\\x$(printf %02x $((RANDOM % 256)))" |
      dd of="$data/$file" bs=1 seek=$((RANDOM * 2 % $(stat -c %s "$data/$file"))) conv=notrunc status=none
    for command in "history" "history --json" "health export -o -" "chart" "measure finger.csv"; do
      # shellcheck disable=SC2086
      veyla $command >/dev/null 2>error
      status=$?
      ((status < 5)) || wrong "$command on a damaged $file: status $status: $(cat error)"
    done
    damages+=1
    rm -rf "$data"
    mv whole "$data"
  done
}

veyla synth finger.csv --seconds 45 || exit 1
begin
kill_at_random $((1 + 250 * scale)) 1
kill_at_random $((1 + 120 * scale)) 4

if strace -o /dev/null true 2>/dev/null; then
  begin
  veyla measure finger.csv >/dev/null && attempted+=1 saved+=1
  kill_at_every_call measure finger.csv
  if ((scale > 0)); then
    for error in ENOSPC EIO EDQUOT EROFS EINTR; do
      for command in "measure finger.csv" "history label 1 Working" "history export -o list.csv"; do
        # shellcheck disable=SC2086
        refuse_every_call $error $command
      done
    done
  else
    refuse_every_call ENOSPC measure finger.csv
  fi
else
  echo "torture: no call is made to fail: this system lets strace trace nothing"
fi

begin
veyla measure finger.csv >/dev/null
damage $((3 + 120 * scale))

begin
crowd=$((10 + 90 * scale))
for ((i = 0; i < crowd; ++i)); do veyla measure finger.csv >"out$i" 2>"error$i" & done
wait
attempted=$crowd saved=$(cat out* | grep -c '^Saved')
look "$crowd at once"
# On a machine that is busy a lock can be waited for in vain, which is told.
((saved >= crowd * 9 / 10)) || wrong "$crowd at once: $saved saved: $(cat error* | head -1)"

# Recordings measured side by side, under the thread sanitizer where the program is built with it.
threaded=$root/build/threads
if [ -x "$threaded/apps/cli/veyla" ] && ((scale > 0)); then
  mkdir recordings
  for bpm in 60 75 100 120; do
    veyla synth recordings/$bpm.csv --bpm $bpm --seconds 60
    printf 'time,heartrate,spo2\n1,%i,97\n59,%i,97\n' $bpm $bpm >recordings/$bpm.reference.csv
  done
  # What others' libraries do under locks that it does not see.
  printf 'race:tzset_internal\nrace:libicu\n' >known
  # It knows no addresses as random as some systems make them.
  TSAN_OPTIONS=suppressions=known setarch -R "$threaded/apps/cli/veyla" evaluate recordings \
    --every 5 --jobs 4 >/dev/null 2>races || wrong "under the thread sanitizer: $(head -3 races)"
fi

echo "torture: $kills kills, $faults calls refused, $damages damaged files, $saved of $crowd at once saved: $wrong wrong"
((wrong == 0))

#!/usr/bin/env bash
# Kills the program at any moment and at every call that writes, makes each of these calls fail, gives it
# few files and a full disk, damages what is kept, and looks after each blow whether anything was lost,
# half-written, left lying about or told wrongly. Prints what it did; fails where anything was wrong.
# usage: scripts/torture.sh [SCALE]; 1 takes minutes on two cores, 0 a few seconds. The random numbers
# begin with SEED (20). The work is shared by WORKERS (as many as there are processors), in memory where
# the system gives that as files.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
# With mounts of its own, where the system gives them.
own=(--mount)
[ "$(id -u)" -eq 0 ] || own+=(--map-root-user)
if [ -z "${TORTURE_MOUNTS+asked}" ]; then
  TORTURE_MOUNTS=$(unshare "${own[@]}" true 2>/dev/null && echo own)
  export TORTURE_MOUNTS
  [ -z "$TORTURE_MOUNTS" ] || exec unshare "${own[@]}" scripts/torture.sh "$@"
fi
root=$PWD
scale=${1:-1}
program=$root/build/veyla
workers=${WORKERS:-$(nproc)}
memory=/dev/shm
[ -w $memory ] || memory=${TMPDIR:-/tmp}
if [ -z "${TORTURE_WORKER:-}" ]; then
  tallies=$(mktemp -d)
  sum() {
    cat "$tallies"/* | awk -v workers="$workers" '
      { kills += $1; faults += $2; damages += $3; wrong += $4 }
      END {
        printf "torture: %d kills, %d calls refused, %d damaged files: %d wrong\n", kills, faults, damages, wrong
        exit NR < workers || wrong > 0
      }'
  }
  trap 'rm -rf "$tallies"' EXIT
  trap 'kill $(jobs -p) 2>/dev/null; wait; echo "torture: interrupted"; sum; exit 1' INT TERM
  for ((worker = 0; worker < workers; ++worker)); do
    TORTURE_WORKER=$worker WORKERS=$workers TORTURE_TALLY=$tallies/$worker scripts/torture.sh "$scale" &
  done
  wait
  sum
  exit
fi
work=$(mktemp -d -p "$memory")
trap 'umount -q "$work/veyla" 2>/dev/null; rm -rf "$work"; tell' EXIT
trap 'exit 1' INT TERM
cd "$work" || exit 1
export XDG_DATA_HOME=$work LC_ALL=C.UTF-8
data=$work/veyla
RANDOM=$((${SEED:-20} + TORTURE_WORKER))
declare -i kills=0 faults=0 damages=0 wrong=0 attempted=0 saved=0 turn=0
tell() { echo "$kills $faults $damages $wrong" >"$TORTURE_TALLY"; }
share() { echo $((($1 + workers - 1) / workers)); }

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
  timeout --foreground -s KILL "$2" "$program" measure finger.csv >"$1" 2>/dev/null
  grep -q '^Saved' "$1"
}
others=("history mail 1 -o mail.eml" "health export -o records.ndjson" "health allow spo2"
  "chart -o chart.svg" "evaluate recordings --windows windows.csv" "history label 1 Working")
moment() { # within the time that so many at once take
  local -i milliseconds=$((RANDOM % longest + 1))
  printf '%d.%03d' $((milliseconds / 1000)) $((milliseconds % 1000))
}
time_crowd() { # programs at once
  local -i each begun
  begun=$(date +%s%3N)
  for ((each = 0; each < $1; ++each)); do veyla measure finger.csv --no-save >/dev/null & done
  wait
  longest=$(($(date +%s%3N) - begun + 20))
}
kill_at_random() { # rounds, programs at once
  local -i round each
  local command
  for ((round = 0; round < $1; ++round)); do
    ((round % 25 > 0)) || { begin && time_crowd "$2"; }
    for ((each = 0; each < $2; ++each)); do
      rm -f "out$each"
      measure_for "out$each" "$(moment)" 2>/dev/null &
    done
    for command in "history label 1 Resting" "history export -o list.csv" "${others[RANDOM % ${#others[@]}]}"; do
      # shellcheck disable=SC2086
      timeout --foreground -s KILL "$(moment)" "$program" $command >/dev/null 2>&1 &
    done 2>/dev/null
    wait
    attempted+=$2
    kills+=$(($2 + 3))
    saved+=$(cat out* | grep -c '^Saved')
    look "killed at random"
  done
  local output
  veyla measure finger.csv >/dev/null && attempted+=1 saved+=1
  for output in "history export -o list.csv" "history mail 1 -o mail.eml" "health export -o records.ndjson" \
    "chart -o chart.svg" "evaluate recordings --windows windows.csv"; do
    # shellcheck disable=SC2086
    veyla $output >/dev/null 2>&1 || wrong "$output cannot be done any more"
    compgen -G "${output##* }.part*" >/dev/null && wrong "what the killed had begun lies beside ${output##* }"
  done
}

# At every call that writes: killed there, or refused by the system. Each time the history and the outputs
# of earlier runs are the same before, and the command does what it did when it ran undisturbed.
writing=write,pwrite64,fsync,fdatasync,ftruncate,unlink,rename,renameat2,linkat,mkdir,mkdirat,chmod,fchown,openat
errors=(ENOSPC EIO EDQUOT EROFS EACCES EMFILE EINTR)
reading=read,pread64
changes=("measure finger.csv" "history label 1 Working" "history delete 2" "health deny spo2"
  "history restore backup.json")
outputs=("history export -o out" "history mail 1 -o out.eml" "health export -o out" "chart -o out.svg"
  "history backup -o out" "synth out.csv --seconds 5" "series finger.csv -o out"
  "measure finger.csv --no-save --trace out" "evaluate recordings --windows out")

state() { # what is kept, as the program tells it
  { veyla history --json && veyla health && veyla health export -o -; } 2>&1
}
isUntouched() { cmp -s "$data/veyla.db" whole/veyla.db && cmp -s "$data/Observations.ndjson" whole/Observations.ndjson && [ ! -e "$data/veyla.db-journal" ]; }
again() {
  rm -rf "$data" out*
  cp -rp whole "$data"
  for output in out out.svg out.csv out.eml; do echo old >$output; done
}
# With the threads of the program, not with gnuplot, which writes into memory and takes no heed of errors.
trace() {
  local follow=-f
  [ "$1" != chart ] || follow=
  strace $follow -qq "${@:2}"
}
some() { ((turn++ % workers == TORTURE_WORKER)) && ((scale > 0 || RANDOM % 20 == 0)); }
# What a power loss would cost, of the calls in their order: pages go into the store once the journal that can take
# them back is on the disk, the journal goes once they are there, and what is told of is there, the journal gone and
# a new folder named.
unsafe_order() {
  awk -v store="<$data/veyla.db>" -v journal="<$data/veyla.db-journal>" -v folder="<$data>" -v above="<$work>" '
    function need(fact, what) { if (!fact && !found++) print what ": " $0 }
    BEGIN { stored = gone = named = 1 }
    /mkdir.*veyla".* = 0/ { named = 0 }
    index($0, above) && /sync/ { named = 1 }
    /unlink.*veyla.db-journal/ { need(stored, "the journal goes before the store is on the disk"); kept = gone = 0 }
    index($0, journal) && /(write|truncate)/ { kept = 0 }
    index($0, journal) && /sync/ { kept = 1 }
    index($0, store) && /(write|truncate)/ { need(kept, "the store changes before its journal is on the disk"); stored = 0 }
    index($0, store) && /sync/ { stored = 1 }
    index($0, folder) && /sync/ { gone = 1 }
    / write\(1[<,]/ { need(stored && gone && named, "told before it is on the disk") }
    END { need(stored && gone && named, "not on the disk at the end") }' "$1"
}
calls_of() { # calls, command; a line for each that writes or reads what is ours: its name and its number among those of the name
  local calls=$1
  shift
  again
  trace "$1" -y -o calls -e trace="$calls" "$program" "$@" >/dev/null 2>&1
  # An output that is not on the disk when it takes its name is lost with the power.
  unsafe_order calls >>unsynced
  ! grep -qE 'rename[^ ]*\(.*\.part' calls || grep -qE 'f(data)?sync\([0-9]+<[^>]*\.part' calls || echo "an output takes its name before it is synchronized" >>unsynced
  for output in out*; do cp "$output" "new-$output"; done
  entries >after
  sed 's/^[0-9][0-9]* *//' calls | awk -F'(' -v work="<$work/" '
    { ++seen[$1] }
    $1 ~ /^p?read/ && !index($2, work) { next }
    $1 ~ /^[a-z0-9]+$/ && ($1 != "openat" || (/O_WRONLY|O_RDWR/ && !/"\/dev\//)) { print $1, seen[$1] }'
}
with() { # what is injected, call, its number, command
  local what=$1 call=$2 number=$3
  shift 3
  again
  { trace "$1" -o /dev/null -e trace="$call" -e "inject=$call:$what:when=$number" \
    "$program" "$@" >told 2>error; } 2>/dev/null
}
look_at_outputs() { # after what: each is the old one or all of the new one
  local output
  for output in out out.svg out.csv; do
    [ "$(cat $output)" = old ] || cmp -s $output new-$output || wrong "$1: $output is neither old nor new"
  done
  # A mail bears its own date and number.
  [ "$(cat out.eml)" = old ] || tail -1 out.eml | grep -q '^--.*--' || wrong "$1: out.eml is cut off"
}
kill_at_every_call() { # command
  local call number line
  local -i there kept
  while read -r call number; do
    some || continue
    with signal=KILL "$call" "$number" "$@"
    kills+=1
    line="$* killed at $call $number"
    there=2 kept=4
    isUntouched || there=$(entries) kept=$(records)
    ((there == 2 || there == $(cat after))) || wrong "$line: $there entries"
    ! grep -q '^Saved' told || ((there == 3 && kept == 6)) || wrong "$line: $there entries, $kept records"
    ((kept >= 4 && kept <= 6)) || wrong "$line: $kept records"
    isUntouched || [ "$(sqlite3 "$data/veyla.db" 'PRAGMA integrity_check' 2>&1)" = ok ] || wrong "$line: damaged store"
    look_at_outputs "$line"
  done < <(calls_of $writing "$@")
  [ ! -s unsynced ] || wrong "$*: $(cat unsynced)"
  rm -f unsynced
}
settle() { # status, what was done: the promised status in one line, what is told is so, nothing lies about
  local -i status=$1 lines told=0 changed=0
  local line
  lines=$(grep -c . error)
  line="$2, status $status: $(cat error)"
  faults+=1
  ((status == 0 || status == 4)) || { ((status == 3)) && grep -qE ' (finger.csv|backup.json|recordings[^:]*): ' error; } || wrong "not the promised status: $line"
  # What lasts may be told of the store and of the records.
  [[ $2 == *+ ]] && ((lines == 2)) && lines=1
  ((lines == (status == 0 ? 0 : 1))) || wrong "$lines lines: $line"
  isUntouched || [ "$(state)" = "$before" ] || changed=1
  if [ "$kind" = change ] && { ((status == 0)) || grep -q 'is saved\|done, but' error; }; then told=1; fi
  ((changed == told)) || wrong "$((changed)) changed, $((told)) told: $line"
  [ "$kind" != output ] || ((status > 0)) || [ "$(sort -u out out.svg out.csv out.eml)" != old ] || wrong "not written: $line"
  look_at_outputs "$line"
  stray=$(cd "$data" && printf '%s\n' * | grep -vx 'veyla.db\|veyla.db-journal\|Observations.ndjson')
  stray+=$(compgen -G '*.part*')
  [ -z "$stray" ] || wrong "$stray lies about: $line"
}
refuse() { # error, call, its number, command: this one, and, but where it prints, all from then on
  local error=$1 call=$2 number=$3 from
  shift 3
  for from in "" +; do
    # What is interrupted is tried again, for ever.
    [[ $from == "" || ($call != write && $error != EINTR) ]] || continue
    with "error=$error" "$call" "$number$from" "$@"
    settle $? "$* with $error at $call $number$from"
  done
}
refuse_every_call() { # command
  local call number
  local -i first i most=$((scale < 1 ? 1 : scale > ${#errors[@]} ? ${#errors[@]} : scale))
  while read -r call number; do
    some || continue
    first=RANDOM
    for ((i = first; i < first + most; ++i)); do refuse "${errors[i % ${#errors[@]}]}" "$call" "$number" "$@"; done
  done < <(calls_of $writing "$@")
  # Recordings that cannot be read are left out there, and the rest is written.
  ((scale > 0)) && [ "$1" != evaluate ] || return 0
  while read -r call number; do
    some && refuse EIO "$call" "$number" "$@"
  done < <(calls_of $reading "$@")
}
few_files() { # command; from hardly one on
  local files
  for files in 4 5 6 7 8 9 10; do
    some || continue
    again
    (ulimit -n $files && exec "$program" "$@") >told 2>error
    settle $? "$* with $files files"
  done
}
first_version() { # of the store: its history in one row
  sqlite3 whole/veyla.db "UPDATE entries SET type = 'array', value = (SELECT '[' || group_concat(value, ',' ||
    char(10)) || ']' FROM parts) WHERE key = 'values'; DROP TABLE parts; PRAGMA user_version = 1; VACUUM"
}
at_every_call() {
  local command kind=change
  rm -rf ./*.part* "$data"
  trace measure -y -o calls -e trace=$writing "$program" measure finger.csv >/dev/null 2>&1
  unsafe_order calls >unsynced
  [ ! -s unsynced ] || wrong "the first measurement: $(cat unsynced)"
  rm unsynced
  begin
  veyla measure finger.csv >/dev/null && veyla measure finger.csv >/dev/null
  veyla demo-history --data demo >/dev/null && veyla history backup --data demo -o backup.json
  rm -rf whole
  mv "$data" whole
  again
  before=$(state)
  for command in "${changes[@]}" output "${outputs[@]}" look history first "${changes[@]}"; do
    if [ "$command" = output ] || [ "$command" = look ]; then
      kind=$command
    elif [ "$command" = first ]; then
      kind=change
      first_version
      again
      [ "$(state)" = "$before" ] || wrong "the first version reads otherwise"
    else
      # shellcheck disable=SC2086
      kill_at_every_call $command && refuse_every_call $command && few_files $command
    fi
  done
}

# A disk that is full after some measurements.
fill_disk() {
  local -i round there
  local command
  rm -rf "$data"
  mkdir "$data"
  mount -t tmpfs -o size=64k none "$data" || return
  head -c 20K /dev/zero >"$data/ballast"
  saved=0
  for ((round = 0; round < 200; ++round)); do
    veyla measure finger.csv >told 2>error || break
    saved+=1
  done
  ! grep -q 'is saved' error || saved+=1
  [ "$(grep -c full error)/$(grep -c . error)" = 1/1 ] || wrong "on a full disk: $(cat error)"
  for command in history "history label 1 Working" "history export -o $data/list.csv" chart; do
    faults+=1
    # shellcheck disable=SC2086
    veyla $command >/dev/null 2>error || { (($? == 4)) && [ "$(grep -c . error)" = 1 ]; } ||
      wrong "$command on a full disk: $(cat error)"
  done
  there=$(entries)
  ((there == saved && saved > 2)) || wrong "on a full disk: $there entries, $saved told to be saved"
  [ "$(sqlite3 "$data/veyla.db" 'PRAGMA integrity_check' 2>&1)" = ok ] || wrong "on a full disk: damaged store"
  umount "$data"
}

# Bytes that are others than were written: told, with a status of the table.
damage() { # rounds
  local -i round status
  local file command
  for ((round = 0; round < $1; ++round)); do
    files=("$data/veyla.db" "$data/Observations.ndjson" settings/{Spo2,Heartrate,Camera}Settings.json)
    file=${files[RANDOM % ${#files[@]}]}
    rm -rf whole settings
    cp -r "$data" whole
    cp -r "$root/resources" settings
    printf "\\x$(printf %02x $((RANDOM % 256)))" |
      dd of="$file" bs=1 seek=$((RANDOM * 2 % $(stat -c %s "$file"))) conv=notrunc status=none
    for command in history "history --json" "health export -o -" chart "measure finger.csv" "history delete 1" \
      "history backup -o out" "measure finger.csv --no-save --settings settings"; do
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

# Recordings measured side by side by a program that is built with the thread sanitizer.
race() { # program, its arguments
  local threaded=$root/build/threads/$1
  shift
  [ -x "$threaded" ] || { echo "torture: no look at threads: there is no $threaded, which make torture builds"; return; }
  # It knows no addresses as random as some systems make them.
  TSAN_OPTIONS=suppressions=known setarch -R "$threaded" "$@" >/dev/null 2>races || wrong "$threaded: $(head -3 races)"
}

veyla synth finger.csv --seconds 22 >/dev/null || exit 1
mkdir recordings
for bpm in 60 75 100 120; do
  veyla synth recordings/$bpm.csv --bpm $bpm --seconds 60 >/dev/null
  printf 'time,heartrate,spo2\n1,%i,97\n59,%i,97\n' $bpm $bpm >recordings/$bpm.reference.csv
done
kill_at_random "$(share $((1 + 100 * scale)))" 1
kill_at_random "$(share $((1 + 100 * scale)))" 4
kill_at_random "$(share $((50 * scale)))" 16

if strace -o /dev/null true 2>/dev/null; then
  at_every_call
else
  echo "torture: no call is made to fail: this system lets strace trace nothing"
fi

if ((TORTURE_WORKER > 0)); then
  : # Of what follows the first one does what is done once.
elif [ -n "$TORTURE_MOUNTS" ]; then
  fill_disk
else
  echo "torture: no disk is filled: this system lets nobody mount one"
fi

begin
veyla measure finger.csv >/dev/null
damage "$(share $((3 + 120 * scale)))"

((TORTURE_WORKER == 0)) || exit $((wrong > 0))
begin
crowd=$((10 + (scale > 0 ? 90 : 0)))
for ((i = 0; i < crowd; ++i)); do veyla measure finger.csv >"out$i" 2>"error$i" & done
wait
attempted=$crowd saved=$(cat out* | grep -c '^Saved')
look "$crowd at once"
# On a machine that is busy a lock can be waited for in vain, which is told.
((saved >= crowd * 9 / 10)) || wrong "$crowd at once: $saved saved: $(cat error* | head -1)"

if ((scale > 0)); then
  # What others' libraries do under locks that it does not see.
  printf 'race:tzset_internal\nrace:libicu\n' >known
  race apps/cli/veyla evaluate recordings --every 5 --jobs 4
  race benchmarks/tune_settings recordings --sizes 120 120 --skips 5 --samples 1 --needed 10 10 \
    --beats-apart 66
fi

echo "torture: $saved of $crowd at once saved"
((wrong == 0))

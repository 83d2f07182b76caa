#!/usr/bin/env bash
# Writes the tables of docs/commands.md anew from the program's own descriptions.
set -euo pipefail
cd "$(dirname "$0")/.."
described=$(mktemp)
trap 'rm -f "$described"' EXIT
build/veyla --describe markdown >"$described"
awk '
  FNR == NR && /^<!-- end -->$/ { name = ""; next }
  FNR == NR && /^<!-- / { name = $0; next }
  FNR == NR { table[name] = table[name] $0 "\n"; next }
  /^<!-- end -->$/ { name = "" }
  name == "" { print }
  /^<!-- / && !/^<!-- end -->$/ { name = $0; printf "%s", table[name] }
' "$described" docs/commands.md >docs/commands.md.new
mv docs/commands.md.new docs/commands.md

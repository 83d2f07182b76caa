#!/usr/bin/env bash
# Builds everything and runs every test: the core with the second compiler, all tests as released and
# under the sanitizers, and beside these the phone app's in a browser. Prints the count of all of them last.
set -euo pipefail
cd "$(dirname "$0")/.."

# GNU tools and the programs under test speak the language that the tests expect.
export LC_ALL=C.UTF-8

passed=0 failed=0 skipped=0 status=0

# Adds what a file of results in JUnit's form counts. A file that is not there, or counts nothing, is a
# failure: no test ran.
add_results() {
  local tests failures skips
  read -r tests failures skips < <(
    [ ! -f "$1" ] || awk 'BEGIN { RS = "<" }
      function count(name) {
        return match($0, "[ \t\n]" name "=\"[0-9]+") ? substr($0, RSTART + length(name) + 3, RLENGTH - length(name) - 3) : 0
      }
      /^testsuite[ \t\n]/ { tests += count("tests"); failures += count("failures") + count("errors"); skips += count("skipped") }
      END { print tests + 0, failures + 0, skips + 0 }' "$1"
    echo 0 0 0
  )
  if [ "$tests" -eq 0 ]; then
    echo "no test ran: $1 counts none" >&2
    status=1
  fi
  failed=$((failed + failures)) skipped=$((skipped + skips))
  passed=$((passed + tests - failures - skips))
}

stage() { printf '== %s (after %d:%02d)\n' "$1" $((SECONDS / 60)) $((SECONDS % 60)); }

stage "program"
cmake --preset release -DVEYLA_TESTS=ON >/dev/null
cmake --build --preset release --target veyla

# A finger before the browser's camera is measured in its own time, which leaves the machine room: the
# phone app is built and tested beside the rest, and the rest gives way to it. It has a process group,
# so that nothing of it outlives this.
rm -f build/web-tests.xml
set -m
scripts/test_web.sh </dev/null >build/web-tests.log 2>&1 &
web=$!
set +m
trap 'kill -- "-$web" 2>/dev/null || true' EXIT
renice -n 10 -p $$ >/dev/null || true

stage "core with clang and libc++"
cmake --preset clang-core >/dev/null
cmake --build --preset clang-core

for preset in release sanitize; do
  stage "$preset: build"
  cmake --preset "$preset" -DVEYLA_TESTS=ON >/dev/null
  cmake --build --preset "$preset"
  stage "$preset: tests"
  rm -f "build/$preset/tests.xml"
  # One more than there are cores: some wait for a lock, a signal or an end.
  ctest --test-dir "build/$preset" --output-on-failure --output-junit tests.xml -j "$(($(nproc) + 1))" || status=$?
  add_results "build/$preset/tests.xml"
done

stage "torture, a few seconds of it"
if scripts/torture.sh 0; then passed=$((passed + 1)); else failed=$((failed + 1)) status=1; fi

stage "phone app: tests in a browser, begun before"
wait "$web" || status=$?
trap - EXIT
cat build/web-tests.log
add_results build/web-tests.xml

stage "done"
echo "$passed passed, $failed failed, $skipped skipped"
[ "$status" -eq 0 ] && [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]

#!/usr/bin/env bash
# Builds everything and runs every test: the core with the second compiler, then all tests as
# released and under the sanitizers. Prints the count of all of them last.
set -euo pipefail
cd "$(dirname "$0")/.."

# GNU tools and the programs under test speak the language that the tests expect.
export LC_ALL=C.UTF-8

echo "== core with clang and libc++"
cmake --preset clang-core >/dev/null
cmake --build --preset clang-core

passed=0 failed=0 skipped=0 status=0
# A file of results in JUnit's form, counted to the total.
add_results() {
  count() { sed -n "s/.*<testsuites\? .*$1=\"\([0-9]*\)\".*/\1/p;s/^[[:space:]]*$1=\"\([0-9]*\)\".*/\1/p" "$2" | head -n 1; }
  local tests failures skips
  tests=$(count tests "$1") failures=$(count failures "$1") skips=$(count skipped "$1")
  : "${tests:?no test ran}" "${failures:?}"
  failed=$((failed + failures)) skipped=$((skipped + ${skips:-0}))
  passed=$((passed + tests - failures - ${skips:-0}))
}
for preset in release sanitize; do
  echo "== tests, $preset"
  cmake --preset "$preset" -DVEYLA_TESTS=ON >/dev/null
  cmake --build --preset "$preset"
  results=build/$preset/tests.xml
  ctest --test-dir "build/$preset" --output-on-failure --output-junit tests.xml -j "$(nproc)" || status=$?
  add_results "$results"
done

echo "== tests of the phone app, in a browser"
rm -f build/web-tests.xml
scripts/test_web.sh || status=$?
add_results build/web-tests.xml
echo "$passed passed, $failed failed, $skipped skipped"
[ "$status" -eq 0 ] && [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]

#!/usr/bin/env bash
# Builds the phone app: the core as WebAssembly, then the page around it, into build/site.
set -euo pipefail
cd "$(dirname "$0")/.."

# Debian's Emscripten finds its JavaScript helpers by itself only with Debian's Node.js.
export NODE_PATH="${NODE_PATH:-/usr/share/nodejs}"

emcmake cmake --preset web >/dev/null
cmake --build --preset web

cd apps/web
# The packages, at the versions of the lock file, unless they are there.
if ! cmp -s package-lock.json node_modules/.installed-lock.json; then
  npm ci --ignore-scripts --no-progress
  cp package-lock.json node_modules/.installed-lock.json
fi
npm run --silent build

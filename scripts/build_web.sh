#!/usr/bin/env bash
# Builds the phone app: the core as WebAssembly, then the page around it, into build/site.
set -euo pipefail
cd "$(dirname "$0")/.."

# Debian's Emscripten finds its JavaScript helpers by itself only with Debian's Node.js.
export NODE_PATH="${NODE_PATH:+$NODE_PATH:}/usr/share/nodejs"

emcmake cmake --preset web >/dev/null
cmake --build --preset web

scripts/web_packages.sh
cd apps/web
npm run --silent build

#!/usr/bin/env bash
# Installs the phone app's npm packages at the versions of the lock file, unless they are there.
set -euo pipefail
cd "$(dirname "$0")/../apps/web"
installed=node_modules/.installed-lock.json
cmp -s package-lock.json "$installed" && exit 0
npm ci --ignore-scripts --no-progress
cp package-lock.json "$installed"

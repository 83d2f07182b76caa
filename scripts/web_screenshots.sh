#!/usr/bin/env bash
# Takes the pictures that the installed app is offered with: from the browser tests, which measure a
# generated finger. Wants what scripts/test_web.sh makes: the built page and the recordings.
set -euo pipefail
cd "$(dirname "$0")/.."

(cd apps/web && npx vitest run tests/measuring.test.ts -t "first visit")
mkdir -p apps/web/public/screenshots
take() { # the test's picture, the screenshot
  ffmpeg -v error -y -i "build/web-pictures/$1.png" -filter_complex \
    "scale=390:844:flags=area,split[a][b];[a]palettegen=48[p];[b][p]paletteuse=dither=none" \
    "apps/web/public/screenshots/$2.png"
}
take measuring-finished finished
take intro-2 finger

#!/usr/bin/env bash
# Installs the Debian packages that building and testing Veyla needs, and only those that are missing.
# Works as root and as a user with sudo; does nothing when everything is there.
set -euo pipefail

packages=(
  # building
  g++ cmake ninja-build pkg-config
  # the services behind the platform interfaces
  libavformat-dev libavcodec-dev libavutil-dev libswscale-dev
  gnuplot-nox
  libsqlite3-dev libkissfft-dev nlohmann-json3-dev libicu-dev uuid-dev libcli11-dev
  # pictures and their letters
  libcairo2-dev fonts-inter
  libgmime-3.0-dev
)
testing=(
  libgtest-dev libgmock-dev libbenchmark-dev
  # the second compiler that the core must please
  clang-14 libc++-14-dev libc++abi-14-dev
  # test media, damaged stores, calls that fail, the published health-record schema
  ffmpeg sqlite3 strace nodejs ca-certificates
  # what shows the manual page
  groff-base
  # the browsers that the phone app is tested in, and the screen that the last one wants
  chromium chromium-headless-shell firefox-esr webkit2gtk-driver xvfb
)
linting=(clang-format-14 clang-tidy-14)
# the sanitizers and the search of the second compiler
fuzzing=(libclang-rt-14-dev)
# the phone app: the compiler to WebAssembly, the headers it takes in, and what builds the page
web=(emscripten cmake ninja-build libkissfft-dev nlohmann-json3-dev nodejs ca-certificates openssl)
# the Debian packages, and the bare system that they are tried on
packaging=(debhelper dpkg-dev fakeroot git lintian mmdebstrap)

case "${1:-build}" in
  build) ;;
  test) packages+=("${testing[@]}" "${web[@]}") ;;
  lint) packages+=("${testing[@]}" "${web[@]}" "${linting[@]}") ;;
  fuzz) packages+=("${testing[@]}" "${fuzzing[@]}") ;;
  web) packages=("${web[@]}") ;;
  deb) packages+=("${web[@]}" "${packaging[@]}") ;;
  *) echo "usage: scripts/setup.sh [build|test|lint|fuzz|web|deb]" >&2; exit 2 ;;
esac

installed() { dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null | grep -qx installed; }

# A Node.js that did not come from Debian serves as well, and npm comes with it; Debian's needs npm beside it.
if printf '%s\n' "${packages[@]}" | grep -qx nodejs; then
  packages=("${packages[@]/nodejs/}")
  command -v npm >/dev/null || packages+=(nodejs npm)
fi

missing=()
for package in "${packages[@]}"; do
  [ -z "$package" ] || installed "$package" || missing+=("$package")
done
[ "${#missing[@]}" -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || {
    echo "setup: not root and no sudo here; as root, run: apt-get install ${missing[*]}" >&2
    exit 1
  }
  as_root=(sudo)
fi
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null

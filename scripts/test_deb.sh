#!/usr/bin/env bash
# Installs the packages of build/deb on a bare Debian 12 in a folder that is gone afterwards, measures there, has both
# web servers serve the page as the documentation says, and removes all of it. Needs to be root, or a system that lets
# users be root in namespaces of their own; says so where it is neither.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" != inside ]; then
  if [ "$(id -u)" -ne 0 ] && ! unshare --user --map-root-user true 2>/dev/null; then
    echo "test-deb: not tested: this is not root, and the system lets users make no namespace; run it as root"
    exit 0
  fi
  # From where this system has its own packages.
  sources=()
  for list in /etc/apt/sources.list.d/debian.sources /etc/apt/sources.list; do
    [ ! -s "$list" ] || { sources=("$list") && break; }
  done
  mmdebstrap --quiet --variant=apt --format=null \
    --customize-hook="copy-in $(echo build/deb/*.deb) scripts/test_deb.sh /tmp" \
    --customize-hook='cp /etc/resolv.conf "$1/etc/resolv.conf"; chroot "$1" bash /tmp/test_deb.sh inside' \
    bookworm /dev/null "${sources[@]}"
  exit
fi

cd /tmp
export DEBIAN_FRONTEND=noninteractive HOME=/tmp LC_ALL=C.UTF-8
fail() { echo "test-deb: $*" >&2; exit 1; }
install() { apt-get install -qq --no-install-recommends "$@" >install.log 2>&1 || { cat install.log >&2; fail "$* cannot be installed"; }; }

before=$(dpkg-query -f '${Package}\n' -W | sort)
install ./veyla_*.deb ./veyla-web_*.deb

version=$(dpkg-query -f '${Version}' -W veyla)
[ "$(veyla --version)" = "veyla $version" ] || fail "$(veyla --version) is not the package's version $version"
veyla synth finger.mp4 --seconds 25 --size 320x240
veyla measure finger.mp4 | grep -q '^Heart rate   71 ' || fail "the fingertip is not measured"
veyla history | grep -q ' 71' || fail "the measurement is not kept"
bash -c 'source /usr/share/bash-completion/completions/veyla && complete -p veyla' >/dev/null || fail "no completion"
zcat /usr/share/man/man1/veyla.1.gz | grep -q "veyla $version" || fail "no manual of this version"

install nginx-light apache2 curl
examples=/usr/share/doc/veyla-web/examples
printf 'pid /tmp/nginx.pid;\nevents {}\nhttp { server { listen 127.0.0.1:8471; include %s/nginx.conf; } }\n' $examples >nginx
nginx -q -c /tmp/nginx 2>nginx.log
a2enmod -q headers deflate >/dev/null
sed -i 's/^Listen .*/Listen 127.0.0.1:8472/' /etc/apache2/ports.conf
cp $examples/apache.conf /etc/apache2/conf-enabled/veyla.conf
apache2ctl -k start 2>apache.log
stop() { nginx -q -c /tmp/nginx -s stop; apache2ctl -k stop; }
trap 'stop 2>/dev/null' EXIT
core=$(basename /usr/share/veyla-web/assets/*.wasm)
told() { # address; its type and how it is kept
  curl -sS --retry 5 --retry-connrefused -o got -D head "http://127.0.0.1:$1" && tr -d '\r' <head |
    awk 'tolower($1) == "content-type:" { sub(/;.*/, "", $2); type = $2 } tolower($1) == "cache-control:" { $1 = ""; kept = $0 } END { print type kept }'
}
for port in 8471 8472; do
  [ "$(told $port/veyla/)" = "text/html no-cache" ] || fail "the page at $port is $(told $port/veyla/)"
  [ "$(told "$port/veyla/assets/$core")" = "application/wasm public, max-age=31536000, immutable" ] ||
    fail "the core at $port is $(told "$port/veyla/assets/$core")"
  cmp -s got "/usr/share/veyla-web/assets/$core" || fail "the core at $port is another"
  [ "$(told $port/veyla/manifest.webmanifest)" = "application/manifest+json no-cache" ] || fail "the manifest at $port"
done
stop 2>stop.log
trap - EXIT

# shellcheck disable=SC2046
apt-get purge -qq $(dpkg-query -f '${Package}\n' -W | sort | comm -13 <(echo "$before") -) >/dev/null
left=$(find / -xdev \( -path /proc -o -path /sys -o -path /tmp -o -path '*/conf-enabled/veyla.conf' \) -prune -o -name '*veyla*' -print)
[ -z "$left" ] || fail "left behind: $left"
echo "test-deb: veyla $version installs, measures, is served and goes without a trace"

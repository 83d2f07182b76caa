#!/usr/bin/env bash
# Builds the Debian packages of the program and of the phone app's page into build/deb, of the files that git follows as
# they lie here, and has lintian judge them: an error or a warning is a failure.
set -euo pipefail
cd "$(dirname "$0")/.."

version=$(sed -n 's/^project(veyla VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
folder=$PWD/build/deb source=$PWD/build/deb/veyla-$version
rm -rf "$folder"
mkdir -p "$source"
git ls-files -z | tar --create --null --files-from=- | tar --extract -C "$source"

# What a user of the packages reads: the entries of this version.
{
  printf 'veyla (%s) unstable; urgency=medium\n\n' "$version"
  awk -v version="## $version" '
    function entry() { if (text != "") print text; text = "" }
    /^## / { here = $0 == version }
    here && /^- / { entry(); text = "* " substr($0, 3) }
    here && /^  / { text = text substr($0, 2) }
    END { entry() }' CHANGELOG.md | tr -d '`' | fold -s -w 74 | sed 's/ *$//; s/^/    /; s/^    \* /  * /'
  printf '\n -- The Veyla developers <support@veyla.example>  %s\n' "$(date -R -d "@$(git log -1 --format=%ct)")"
} >"$source/debian/changelog"
grep -q '^  \* ' "$source/debian/changelog" || { echo "deb: CHANGELOG.md has no entry for $version" >&2; exit 1; }

echo "builds both packages, which takes some minutes; build/deb/build.log tells how far it is"
# npm that did not come from Debian serves as well, which a package of Debian's could not depend on.
(cd "$source" && dpkg-buildpackage --build=binary --no-sign --no-check-builddeps >"$folder/build.log" 2>&1) ||
  { tail -20 "$folder/build.log" >&2; exit 1; }
as_root=()
[ "$(id -u)" -ne 0 ] || as_root=(--allow-root)
lintian "${as_root[@]}" --fail-on error,warning "$folder"/*.changes
ls -1 "$folder"/*.deb

#!/bin/sh
# Compiles NAME.xml of this folder to NAME.bin, as it would stand in an Android package, and writes
# the packager's own view of it to NAME.xmltree. Takes framework.bin and framework.xmltree from the
# package that Android's own resources come in. Needs the Debian packages aapt and
# android-framework-res. The small results are committed, so that the tests have real documents
# where these packages don't exist.
#
#   tests/android/data/compile.sh [FOLDER FOR THE RESULTS]
set -eu

here=$(cd "$(dirname "$0")" && pwd)
out=${1-$here}
framework=/usr/share/android-framework-res/framework-res.apk
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

# keep PACKAGE NAME: the manifest of a package and the packager's view of it.
keep() {
  unzip -p "$1" AndroidManifest.xml >"$out/$2.bin"
  aapt dump xmltree "$1" AndroidManifest.xml >"$out/$2.xmltree"
}

for source in "$here"/*.xml; do
  cp "$source" "$work/AndroidManifest.xml"
  aapt package -f -M "$work/AndroidManifest.xml" -F "$work/package.apk" -I "$framework"
  keep "$work/package.apk" "$(basename "$source" .xml)"
done
[ "$out" = "$here" ] || keep "$framework" framework

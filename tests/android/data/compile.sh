#!/bin/sh
# Compiles NAME.xml of this folder to NAME.bin, as it would stand in an Android package.
# Needs the Debian packages aapt and android-framework-res. The results are committed, so that the
# tests have real documents where these packages don't exist.
#
#   tests/android/data/compile.sh [FOLDER FOR THE RESULTS]
set -eu

here=$(cd "$(dirname "$0")" && pwd)
out=${1-$here}
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
for source in "$here"/*.xml; do
  cp "$source" "$work/AndroidManifest.xml"
  aapt package -f -M "$work/AndroidManifest.xml" -F "$work/package.apk" \
    -I /usr/share/android-framework-res/framework-res.apk
  unzip -p "$work/package.apk" AndroidManifest.xml >"$out/$(basename "$source" .xml).bin"
done

#!/bin/sh
# Compiles application.xml of this folder to application.bin, as it would stand in an Android
# package, and prints the packager's own view of it, which application.txt was checked against.
# Needs the Debian packages aapt and android-framework-res. The result is committed, so that the
# tests have a real document where these packages don't exist.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

cp "$here/application.xml" "$work/AndroidManifest.xml"
aapt package -f -M "$work/AndroidManifest.xml" -F "$work/package.apk" \
  -I /usr/share/android-framework-res/framework-res.apk
unzip -p "$work/package.apk" AndroidManifest.xml >"$here/application.bin"
aapt dump xmltree "$work/package.apk" AndroidManifest.xml

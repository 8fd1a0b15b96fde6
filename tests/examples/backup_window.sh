#!/usr/bin/env bash
# Runs backup_window under Wine on a display of its own, works it by messages, and takes pictures:
#   backup_window.sh PROJECT ARCH BIN-FOLDER FOLDER
#
# "skipped: " with a reason where the machine lacks what that takes.
set -euo pipefail
project=$1 arch=$2 bin=$3 folder=$4
wine_run=$project/scripts/wine-run
prefix=$folder/wine

for tool in Xvfb import convert; do
  command -v $tool >/dev/null || { echo "skipped: no $tool (packages xvfb, imagemagick)"; exit 0; }
done

rm -rf "$folder"
mkdir -p "$folder"
cd "$folder"

# A display that nobody else has.
exec 7<>"$folder/display"
Xvfb -displayfd 7 -screen 0 900x700x24 -nolisten tcp -ac >/dev/null 2>&1 &
xvfb=$!
end() {
  "$wine_run" --end "$arch" "$prefix" >/dev/null 2>&1 || true
  kill $xvfb 2>/dev/null || true
  wait $xvfb 2>/dev/null || true
}
trap end EXIT
for _ in $(seq 100); do
  [ -s "$folder/display" ] && break
  sleep 0.1
done
export TEMVAR_DISPLAY=:$(head -n 1 "$folder/display") DISPLAY=:$(head -n 1 "$folder/display")

wine() { "$wine_run" "$arch" "$prefix" "$@"; }
press() { wine "$bin/press.exe" "$@" || fail "not so: $*"; }
fail() {
  echo "FAILED: $*"
  picture failed || true
  exit 1
}
# picture NAME: the window without the empty screen around it.
picture() { import -window root -silent png:- | convert png:- -trim +repage "$folder/$1.png"; }

# A tree in several scripts, with a name of 100 characters, and one folder for which no archive can
# be made: something is in its way.
long=$(printf 'long-%.0s' $(seq 20))
for name in "Ελλάδα 2024" "写真 東京タワー" "Фотографии" "Grüße aus Köln" "♫ music" "$long"; do
  mkdir -p "tree/$name"
  for i in 1 2 3 4 5 6; do
    head -c 1500000 /dev/urandom >"tree/$name/file $i 🎂.bin"
  done
done
mkdir -p "tree/blocked" "archives/blocked.zip.unfinished/in the way"
echo text >"tree/blocked/file.txt"
windows() { echo "Z:${1//\//\\\\}"; }
cat >settings.json <<JSON
{ "Source": "$(windows "$folder/tree")", "Destination": "$(windows "$folder/archives")", "Workers": 2 }
JSON

# For the picture in the documents, which has to show every script, TEMVAR_FONTS names files of
# fonts: Wine takes from them what the font of the window lacks.
links=
for font in ${TEMVAR_FONTS:-}; do
  wine reg query 'HKCU\Software' >/dev/null
  cp "$font" "$prefix/drive_c/windows/Fonts/"
  links=${links:+$links\\0}${font##*/},$(fc-scan -f '%{family[0]}\n' "$font" | head -n 1)
done
for face in Tahoma "MS Shell Dlg" "MS Shell Dlg 2" "Segoe UI"; do
  [ -n "$links" ] || break
  wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontLink\SystemLink' \
    /v "$face" /t REG_MULTI_SZ /d "$links" /f >/dev/null
done

# Wine draws the frame of the window itself where no window manager does.
wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null
wine "$bin/backup_window.exe" --settings "$folder/settings.json" &
window=$!

# The numbers of the controls: kSource=101 and so on.
eval "$(awk '/^  k[A-Za-z]+( = [0-9]+)?,$/ {
  if ($3 != "") number = $3 + 0
  sub(/,/, "", $1)
  print $1 "=" number++
}' "$project/examples/backup_window/ids.h")"

press live:$kStart grey:$kPause grey:$kResume grey:$kCancel
press click:$kStart rows:$kLanes:7 live:$kPause click:$kPause live:$kResume "shows:$kStatus:Pau"
picture paused
press click:$kResume live:$kPause
[ -z "$links" ] || sleep 4
picture running
press live:$kStart "shows:$kStatus:6 packed, 0 unchanged, 1 failed" grey:$kPause
picture done

# Only the failed one is left to do; then a cancel, at which the window can be closed.
press click:$kStart grey:$kStart live:$kStart "shows:$kStatus:0 packed, 6 unchanged, 1 failed"
for name in "写真 東京タワー" "$long"; do echo more >>"tree/$name/file 1 🎂.bin"; done
press click:$kStart live:$kPause click:$kPause live:$kResume click:$kCancel live:$kStart "shows:$kStatus:Cancelled"
# Closed while it is paused.
press click:$kStart live:$kPause click:$kPause live:$kResume close
wait $window || fail "the window ended with $?"

for name in "Ελλάδα 2024" "写真 東京タワー" "$long"; do
  [ -s "archives/$name.zip" ] || fail "no archive of $name"
done
[ -z "$(find archives -name '*.unpacked' -o -name '*.names')" ] || fail "left: $(ls archives)"
grep -q '"Source"' settings.json || fail "the settings are gone"
[ -d temvar-backup-crashes ] || fail "no folder for crash reports"
echo "passed"

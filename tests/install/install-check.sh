#!/usr/bin/env bash
# Installs the build into a temporary DESTDIR, validates the desktop entry and the AppStream
# metainfo, checks the .xls reader installed beside the executable, and starts the installed
# program offscreen on a demo installation: it must find its files under share/quillet (only the
# .xls reader lies beside the installed executable) and end cleanly on SIGTERM.
#   install-check.sh <build dir> <demodata tool>
set -euo pipefail
build=$1
demodata=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

DESTDIR="$work/stage" cmake --install "$build" --prefix /opt/quillet >/dev/null
root="$work/stage/opt/quillet"
exe="$root/bin/quillet"
[ -x "$exe" ] || fail "no executable at $exe"
for f in share/quillet/ThumbnailPlaceholder.gif share/quillet/quillet.html share/quillet/help/main-window.png \
         share/applications/org.quillet.Quillet.desktop share/metainfo/org.quillet.Quillet.metainfo.xml \
         share/icons/hicolor/scalable/apps/quillet.svg; do
  [ -s "$root/$f" ] || fail "missing $f"
done
for size in 16 22 24 32 48 64 128 256; do
  png="$root/share/icons/hicolor/${size}x${size}/apps/quillet.png"
  [ -s "$png" ] || fail "missing icon $size"
  # The PNG header holds the width and height as big-endian numbers at bytes 16 and 20.
  width=$(od -An -tu1 -j16 -N4 "$png" | awk '{print $1*16777216+$2*65536+$3*256+$4}')
  [ "$width" = "$size" ] || fail "icon ${size}x${size} is $width wide"
done
[ ! -e "$root/bin/ThumbnailPlaceholder.gif" ] || fail "placeholder beside the executable"
# The .xls reader the program runs as a child lies beside it and refuses a file that is no workbook.
reader="$root/bin/quillet-xlsreader"
[ -x "$reader" ] || fail "no .xls reader at $reader"
echo "Child,Mon AM" >"$work/not.xls"
status=0
"$reader" "$work/not.xls" >"$work/reader.out" 2>"$work/reader.err" || status=$?
[ "$status" = 3 ] && [ ! -s "$work/reader.out" ] && [ "$(wc -l <"$work/reader.err")" = 1 ] \
  && grep -q "damaged" "$work/reader.err" || fail "the installed .xls reader did not refuse a text file (status $status: $(cat "$work/reader.err"))"

desktop-file-validate "$root/share/applications/org.quillet.Quillet.desktop" || fail "desktop-file-validate"
grep -q '^Categories=Graphics;Photography;$' "$root/share/applications/org.quillet.Quillet.desktop" || fail "Categories"
grep -q '^MimeType=.*image/jpeg;' "$root/share/applications/org.quillet.Quillet.desktop" || fail "MimeType"
appstreamcli validate --no-net "$root/share/metainfo/org.quillet.Quillet.metainfo.xml" || fail "appstreamcli validate"

# A ready installation of photos and families, then the installed program on it.
"$demodata" "$work/demo" >/dev/null
export XDG_DATA_HOME="$work/demo/data" XDG_CACHE_HOME="$work/demo/cache" HOME="$work/demo"
export QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES='qt.qpa.*=false'
cd "$work"
"$exe" >"$work/out.txt" 2>&1 &
pid=$!
# The photo list is loaded (its timing line is logged) only once the thumbnail placeholder was
# found; without it the program stops with a message instead.
log="$XDG_DATA_HOME/Quillet/quilletDebug.txt"
for _ in $(seq 1 150); do
  kill -0 "$pid" 2>/dev/null || { cat "$work/out.txt" >&2; fail "the installed program ended by itself"; }
  grep -q ", LoadSource: " "$log" 2>/dev/null && break
  sleep 0.2
done
grep -q ", LoadSource: " "$log" 2>/dev/null || { cat "$work/out.txt" "$log" >&2; fail "the photo list was not loaded"; }
sleep 1
kill -0 "$pid" 2>/dev/null || { cat "$work/out.txt" >&2; fail "the installed program ended by itself"; }
kill -TERM "$pid"
status=0
wait "$pid" || status=$?
[ "$status" = 0 ] || { cat "$work/out.txt" >&2; fail "exit status $status after SIGTERM"; }
grep -q "^FormRectMn=" "$XDG_DATA_HOME/Quillet/quillet.ini" || fail "shutdown did not store the window rectangle"
echo "install check passed"

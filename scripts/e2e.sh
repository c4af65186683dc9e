#!/usr/bin/env bash
# End to end through the desktop program as a person uses it: opens a photograph, drags the
# target hue ring with the real pointer, saves a Tintorra document with the keyboard, quits, and
# checks with tintorra-cli that the document holds the new target hue and the photograph.
#
#   scripts/e2e.sh [BUILD_DIR] [PHOTO]      (default build/release; a photograph made from
#                                            ImageMagick's built-in rose when none is given)
#
# Needs a display: without DISPLAY it starts itself again under xvfb-run. Every wait is bounded;
# the whole run takes well under a minute. On failure it says which step failed and leaves a
# screenshot and the program's output in the work folder it names.
set -euo pipefail
cd "$(dirname "$0")/.."

build=${1:-build/release}
photo=${2:-}

if [ -z "${DISPLAY:-}" ]; then
    command -v xvfb-run >/dev/null || { echo "e2e: no display and no xvfb-run" >&2; exit 1; }
    exec xvfb-run -a -s '-screen 0 1366x768x24' "$0" "$build" "$photo"
fi

tintorra=$build/src/app/tintorra
cli=$build/src/cli/tintorra-cli
for tool in "$tintorra" "$cli"; do
    [ -x "$tool" ] || { echo "e2e: $tool is not built (cmake --build --preset release)" >&2; exit 1; }
done
command -v xdotool >/dev/null || { echo "e2e: xdotool is not installed" >&2; exit 1; }
# Debian's ImageMagick, whatever else is called convert on the PATH.
magick=/usr/bin/convert
[ -x "$magick" ] || magick=$(command -v convert || true)

work=$(mktemp -d "${TMPDIR:-/tmp}/tintorra-e2e.XXXXXX")
session_name=e2e
# shellcheck source=scripts/desktop-session.sh
source scripts/desktop-session.sh
finish() {
    local status=$?
    stop_program
    if [ "$status" -eq 0 ]; then
        rm -rf "$work"
    else
        echo "e2e: left the program's output, the widget map and a screenshot in $work" >&2
    fi
}
trap finish EXIT

# The photograph, and its size for the checks at the end.
if [ -z "$photo" ]; then
    [ -n "$magick" ] || fail "no photograph given and ImageMagick is not installed to make one"
    photo=$work/rose.png
    "$magick" rose: -filter Lanczos -resize 640x "$photo"
fi
[ -f "$photo" ] || fail "no photograph at $photo"
photo_info=$("$cli" info "$photo") || fail "tintorra-cli cannot read $photo"
json_number() { sed -n "s/.*\"$1\":\\([-0-9.eE]*\\).*/\\1/p" <<<"$2"; }
photo_width=$(json_number pixelsWide "$photo_info")
photo_height=$(json_number pixelsHigh "$photo_info")

echo "e2e: starting $tintorra on $photo"
start_program "$tintorra" "$photo"

# The target hue ring, by the name the program gives it, dragged a third of the way round.
target_widget=${TINTORRA_E2E_TARGET_WIDGET:-targetHue}
rect=$(widget_rect "$target_widget") || exit 1
read -r x y w h <<<"$rect"
echo "e2e: dragging the target hue ring at $x,$y (${w}x$h) from 0 to 120 degrees"
drag_ring "$x" "$y" "$w" "$h" 0 120
sleep 0.3

# Save with the keyboard into a document; the save dialog takes the file name typed.
document=$work/roses.tintorra.tiff
xdotool windowfocus --sync "$window" 2>/dev/null || true
xdotool key --clearmodifiers ctrl+s
timeout 15 xdotool search --all --sync --onlyvisible --pid "$app_pid" --name 'Save' > "$work/dialogs" ||
    fail "no save dialog appeared within 15 s after Ctrl+S"
dialog=$(head -n 1 "$work/dialogs")
xdotool windowfocus --sync "$dialog" 2>/dev/null || true
xdotool key --clearmodifiers ctrl+a
xdotool type --delay 5 "$document"
xdotool key --clearmodifiers Return
wait_for 20 test -s "$document" || fail "the document $document was not written within 20 s"

# Quit with the keyboard; the document is saved, so nothing may ask.
xdotool windowfocus --sync "$window" 2>/dev/null || true
xdotool key --clearmodifiers ctrl+q
wait_for 15 bash -c "! kill -0 $app_pid" || fail "the program did not quit within 15 s of Ctrl+Q"
wait "$app_pid" || fail "the program exited with status $?"
app_pid=

# The document: the new target hue, a document with the source page, the photograph's size.
params=$("$cli" params decode --from "$document") || fail "tintorra-cli cannot decode $document"
hue=$(json_number targetHue "$params")
awk -v h="$hue" 'BEGIN { exit !(h > 0.30 && h < 0.37) }' ||
    fail "the document's target hue is $hue, not a third of the circle (120 degrees)"
info=$("$cli" info "$document") || fail "tintorra-cli cannot describe $document"
grep -q '"document":true' <<<"$info" || fail "$document is not a Tintorra document: $info"
pages=$(json_number pages "$info")
[ "${pages:-0}" -ge 2 ] || fail "$document has ${pages:-no} pages; the source page is missing"
[ "$(json_number pixelsWide "$info")" = "$photo_width" ] &&
    [ "$(json_number pixelsHigh "$info")" = "$photo_height" ] ||
    fail "$document is not ${photo_width}x$photo_height like the photograph"
# The source page holds the photograph itself, pixel for pixel (when libtiff's tools are here).
if command -v tiffsplit >/dev/null && [ -n "$magick" ]; then
    (cd "$work" && tiffsplit "$document" page-)
    compare=${magick%convert}compare
    differing=$("$compare" -metric AE "$photo" "$work/page-aab.tif" null: 2>&1 || true)
    [ "$differing" = 0 ] || fail "the source page differs from the photograph ($differing pixels)"
fi

echo "e2e: passed: target hue $hue saved in a $pages-page document of ${photo_width}x$photo_height"

#!/usr/bin/env bash
# Writes the README's picture of the main window: the program on the sample image (or PHOTO)
# with the target hue dragged round, as it shows on a 1366x768 screen.
#
#   scripts/screenshots.sh [BUILD_DIR] [PHOTO]     (writes docs/images/main-window.png)
#
# Runs under its own virtual display when there is none; every wait is bounded.
set -euo pipefail
cd "$(dirname "$0")/.."

build=${1:-build/release}
photo=${2:-}
if [ -z "${DISPLAY:-}" ]; then
    command -v xvfb-run >/dev/null || { echo "screenshots: no display and no xvfb-run" >&2; exit 1; }
    exec xvfb-run -a -s '-screen 0 1366x768x24' "$0" "$build" "$photo"
fi

tintorra=$build/src/app/tintorra
[ -x "$tintorra" ] || { echo "screenshots: $tintorra is not built" >&2; exit 1; }
for tool in xdotool xwd; do
    command -v "$tool" >/dev/null || { echo "screenshots: $tool is not installed" >&2; exit 1; }
done
magick=/usr/bin/convert
[ -x "$magick" ] || magick=$(command -v convert) ||
    { echo "screenshots: ImageMagick is not installed" >&2; exit 1; }

work=$(mktemp -d "${TMPDIR:-/tmp}/tintorra-shots.XXXXXX")
session_name=screenshots
# shellcheck source=scripts/desktop-session.sh
source scripts/desktop-session.sh
trap 'stop_program; rm -rf "$work"' EXIT

output=docs/images/main-window.png
mkdir -p "$(dirname "$output")"
if [ -n "$photo" ]; then
    start_program "$tintorra" "$photo"
else
    start_program "$tintorra"
fi
# Without a window manager the window is wherever the program puts it; give it the screen, and
# take the widgets' places once the program has laid them out again.
wait_for 20 test -s "$work/widgets" || fail "the program never listed its widgets"
rm -f "$work/widgets"
xdotool windowmove --sync "$window" 0 0 windowsize --sync "$window" 1366 768 2>/dev/null || true
rect=$(widget_rect "${TINTORRA_E2E_TARGET_WIDGET:-targetHue}") || exit 1
read -r x y w h <<<"$rect"
drag_ring "$x" "$y" "$w" "$h" 0 150
# The shifted image arrives from the engine's threads.
sleep 2
xwd -id "$window" -silent | "$magick" xwd:- "$output"
echo "screenshots: wrote $output"

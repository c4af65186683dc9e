#!/usr/bin/env bash
# Checks the desktop integration the build lays out under SHARE (the build tree's share/):
# the launchers and the AppStream metadata with their validators, and that the MIME database
# built there tells a Tintorra document from a plain TIFF by its name. A validator that is not
# installed is skipped with a message; at least one check must run.
#   validate-desktop-files.sh SHARE INSTALLED_DESKTOP_FILE
set -euo pipefail
share=$1
installed_desktop=$2
id=com.velmora.Tintorra
ran=0
failed=0

check() {
    local what=$1
    shift
    if "$@"; then
        echo "ok: $what"
    else
        echo "FAILED: $what" >&2
        failed=1
    fi
    ran=$((ran + 1))
}

if command -v desktop-file-validate >/dev/null; then
    check "launcher (build tree)" desktop-file-validate "$share/applications/$id.desktop"
    check "launcher (installed)" desktop-file-validate "$installed_desktop"
else
    echo "skipped: desktop-file-validate is not installed (package desktop-file-utils)"
fi

if command -v appstreamcli >/dev/null; then
    check "AppStream metadata" appstreamcli validate --no-net "$share/metainfo/$id.metainfo.xml"
else
    echo "skipped: appstreamcli is not installed (package appstream)"
fi

for size in 16x16 22x22 24x24 32x32 48x48 64x64 128x128 256x256 512x512; do
    check "icon $size" test -s "$share/icons/hicolor/$size/apps/$id.png"
done
check "scalable icon" grep -q '<svg' "$share/icons/hicolor/scalable/apps/$id.svg"

if command -v gio >/dev/null && [ -f "$share/mime/mime.cache" ]; then
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    printf 'II*\0\10\0\0\0' > "$work/photo.tintorra.tiff"
    cp "$work/photo.tintorra.tiff" "$work/photo.tiff"
    type_of() {
        XDG_DATA_DIRS="$share:/usr/share" gio info -a standard::content-type "$1" |
            sed -n 's/.*standard::content-type: //p'
    }
    check "a document is a Tintorra document" test "$(type_of "$work/photo.tintorra.tiff")" = \
        application/x-tintorra-document
    check "a plain TIFF stays a TIFF" test "$(type_of "$work/photo.tiff")" = image/tiff
else
    echo "skipped: MIME detection (gio or the build tree's MIME cache is missing)"
fi

[ "$ran" -gt 0 ] || { echo "FAILED: no check ran" >&2; exit 1; }
exit "$failed"

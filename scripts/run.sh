#!/usr/bin/env bash
# Installs what Tintorra needs, builds it (Release) and runs the main job: with a display, the
# desktop program on the built-in sample image; without one, tintorra-cli demo.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    exec ./build/release/src/app/tintorra
fi
# The main job on the built-in sample image: shifted result, mask views, spectrogram, document.
./build/release/src/cli/tintorra-cli demo

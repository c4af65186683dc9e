#!/usr/bin/env bash
# Installs what Tintorra needs, builds it and runs the whole test suite.
# Usage: scripts/test.sh [release|debug|asan]   (default: release)
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-release}"

bash scripts/install-deps.sh
# Cached objects are found again from any checkout of the project.
export CCACHE_BASEDIR="$PWD"
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
QT_QPA_PLATFORM=offscreen ctest --preset "$preset"

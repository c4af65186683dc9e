#!/usr/bin/env bash
# Installs what Tintorra needs, builds it and runs the whole test suite.
# Usage: scripts/test.sh [release|debug|asan|tsan]   (default: release; tsan runs the engine and
# editor tests only)
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-release}"

bash scripts/install-deps.sh
# Cached objects are found again from any checkout of the project.
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
QT_QPA_PLATFORM=offscreen ctest --preset "$preset"

#!/usr/bin/env bash
# Builds the fuzz targets (clang, libFuzzer, AddressSanitizer and UndefinedBehaviorSanitizer) and
# runs each for a while, starting from the test fixtures. A hostile input must be refused within
# seconds and a few hundred megabytes: slower or larger counts as a failure.
# Usage: scripts/fuzz.sh [seconds per target]   (default: 60)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"

bash scripts/install-deps.sh
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

work=build/fuzz/corpus
fixtures=tests/data/imageio
run() {
  local target="$1"; shift
  mkdir -p "$work/$target"
  echo "fuzz: $target for ${seconds}s"
  "./build/fuzz/fuzz/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=1024 \
    -print_final_stats=1 "$work/$target" "$@"
}
run decode_image_fuzz "$fixtures"
mkdir -p "$work/documents"
cp "$fixtures"/own-*.tif "$fixtures"/multipage.tif "$work/documents/"
run read_document_fuzz "$work/documents"
run decode_parameters_fuzz fuzz/starters/parameters

#!/usr/bin/env bash
# End-to-end timing of `tintorra-cli shift` on the 24-megapixel benchmark photograph: the wall
# time of whole runs (PNG in -> PNG out, and 16-bit TIFF in -> TIFF out), their median, and the
# tool's own --json figures of the last run, with the median re-shift of --repeat.
#
# Usage: bench/cli_shift.sh [BUILD_DIR] [RUNS]
#   BUILD_DIR  a Release build (default build/release)
#   RUNS       whole runs per input (default 5)
# The images come from scripts/make-bench-images.sh (TINTORRA_BENCH_DIR, default /work/benchdata).
set -euo pipefail

build=${1:-build/release}
runs=${2:-5}
data=${TINTORRA_BENCH_DIR:-/work/benchdata}
cli="$build/src/cli/tintorra-cli"
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

[[ -x $cli ]] || { echo "cli_shift.sh: no $cli; build the release preset first" >&2; exit 2; }

median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

# One input: RUNS plain runs for the wall time, then one --json --repeat 5 run for the figures.
measure() {
    local input=$1 output=$2
    [[ -f $input ]] || { echo "skipped: no $input (run scripts/make-bench-images.sh)"; return; }
    local times=()
    for ((i = 0; i < runs; ++i)); do
        local start end
        start=$(date +%s%N)
        "$cli" shift "$input" -o "$out/$output" --hue-set Orange --target-hue 220 --quiet
        end=$(date +%s%N)
        times+=($(((end - start) / 1000000)))
    done
    echo "$(basename "$input") -> $output: wall ms ${times[*]}; median $(printf '%s\n' "${times[@]}" | median)"
    echo "  output bytes: $(stat -c %s "$out/$output")"
    echo "  $("$cli" shift "$input" -o "$out/$output" --hue-set Orange --target-hue 220 --json --repeat 5)"
}

measure "$data/eveningglow-6000x4000-8.png" shifted.png
measure "$data/eveningglow-6000x4000-16.tif" shifted.tif

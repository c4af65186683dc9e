#!/usr/bin/env bash
# The command-line tool against a libvips pipeline doing the same kind of job: a feathered
# hue-range recolour of the 24-megapixel benchmark photograph, PNG in -> PNG out, wall times of
# whole runs side by side (median of RUNS each) and the tool's minor page faults.
#
# The pipeline (libvips-tools' `vips`, intermediates in memory-backed /dev/shm): sRGB -> LCh,
# a weight that is 1 within 15 degrees of orange (35 degrees), falls to 0 over 20 more degrees
# either side, hue += weight x 185 degrees (towards 220), back to sRGB, PNG at zlib level 1.
# The tool runs its Orange hue set towards 220 degrees, which also keeps colours in gamut.
#
# Usage: bench/vips_recolour.sh [BUILD_DIR] [RUNS]
#   BUILD_DIR  a Release build (default build/release)
#   RUNS       whole runs of each (default 5)
# The image comes from scripts/make-bench-images.sh (TINTORRA_BENCH_DIR, default /work/benchdata).
set -euo pipefail
shopt -s inherit_errexit

build=${1:-build/release}
runs=${2:-5}
data=${TINTORRA_BENCH_DIR:-/work/benchdata}
input="$data/eveningglow-6000x4000-8.png"
cli="$build/src/cli/tintorra-cli"
[[ -x $cli ]] || { echo "vips_recolour.sh: no $cli; build the release preset first" >&2; exit 2; }
command -v vips >/dev/null || { echo "vips_recolour.sh: no vips; install libvips-tools" >&2; exit 2; }
[[ -f $input ]] || { echo "vips_recolour.sh: no $input; run scripts/make-bench-images.sh" >&2; exit 2; }
scratch=$(mktemp -d -p "$([[ -d /dev/shm ]] && echo /dev/shm || echo /tmp)")
trap 'rm -rf "$scratch"' EXIT

median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
now() { date +%s%N; }

centre=35 inner=15 feather=20 turn=185

vips_recolour() {
    local t=$scratch
    vips colourspace "$input" "$t/lch.v" lch
    vips extract_band "$t/lch.v" "$t/lc.v" 0 --n 2
    vips extract_band "$t/lch.v" "$t/h.v" 2
    # Distance round the circle: 180 - | 180 - |h - centre| |.
    vips linear "$t/h.v" "$t/a.v" -- 1 "-$centre"
    vips abs "$t/a.v" "$t/b.v"
    vips linear "$t/b.v" "$t/a.v" -- -1 180
    vips abs "$t/a.v" "$t/b.v"
    vips linear "$t/b.v" "$t/d.v" -- -1 180
    # Weight (inner + feather - d) / feather, clamped to [0, 1] as (|x| - |x - 1| + 1) / 2.
    vips linear "$t/d.v" "$t/x.v" -- "$(echo "-1 / $feather" | bc -l)" "$(echo "($inner + $feather) / $feather" | bc -l)"
    vips abs "$t/x.v" "$t/a.v"
    vips linear "$t/x.v" "$t/b.v" -- 1 -1
    vips abs "$t/b.v" "$t/c.v"
    vips subtract "$t/a.v" "$t/c.v" "$t/b.v"
    vips linear "$t/b.v" "$t/w.v" -- 0.5 0.5
    # The hue turned by the weight, back on the circle.
    vips linear "$t/w.v" "$t/a.v" -- "$turn" 0
    vips add "$t/h.v" "$t/a.v" "$t/b.v"
    vips remainder_const "$t/b.v" "$t/h2.v" -- 360
    vips bandjoin "$t/lc.v $t/h2.v" "$t/lch2.v"
    vips colourspace "$t/lch2.v" "$t/srgb.v" srgb
    vips pngsave "$t/srgb.v" "$t/vips.png" --compression 1
}

tool_recolour() {
    "$cli" shift "$input" -o "$scratch/tool.png" --hue-set Orange --target-hue 220 --quiet
}

time_runs() {
    local times=()
    for ((i = 0; i < runs; ++i)); do
        local start
        start=$(now)
        "$1"
        times+=($((($(now) - start) / 1000000)))
    done
    echo "${times[*]}; median $(printf '%s\n' "${times[@]}" | median)"
}

tool=$(time_runs tool_recolour)
vips=$(time_runs vips_recolour)
echo "tintorra-cli shift: wall ms $tool"
echo "vips pipeline:      wall ms $vips"
tool_median=${tool##* } vips_median=${vips##* }
echo "tool / vips: $(echo "scale=2; $tool_median / $vips_median" | bc)"
/usr/bin/time -f "tintorra-cli shift: %R minor page faults, %e s wall, %S s system" \
    "$cli" shift "$input" -o "$scratch/tool.png" --hue-set Orange --target-hue 220 --quiet

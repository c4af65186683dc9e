#!/usr/bin/env bash
# Makes the benchmark photographs: the EveningGlow wallpaper of Debian's
# plasma-workspace-wallpapers package, upscaled once to 6000 x 4000 (24 MP) with a Lanczos
# filter, as 8-bit and 16-bit binary PPM and as 8-bit PNG. The images are large and are never
# committed; point the benchmarks at them with
#   TINTORRA_BENCH_IMAGE=<dir>/eveningglow-6000x4000-8.ppm
# Usage: scripts/make-bench-images.sh [output directory]   (default: /work/benchdata)
# Needs apt-get, dpkg-deb and ImageMagick (benchmark-only tool: apt-get install imagemagick).
set -euo pipefail

out="$(realpath -m "${1:-/work/benchdata}")"
mkdir -p "$out"
cd "$out"

convert_bin=/usr/bin/convert
if [ ! -x "$convert_bin" ]; then
  echo "make-bench-images: ImageMagick is missing (apt-get install imagemagick)" >&2
  exit 1
fi

if ! ls plasma-workspace-wallpapers_*.deb >/dev/null 2>&1; then
  apt-get download plasma-workspace-wallpapers
fi
rm -rf extract
dpkg -x plasma-workspace-wallpapers_*.deb extract

# The package ships one picture under several size names; take the largest file.
source_image="$(find extract -path '*EveningGlow/contents/images/*' -type f -printf '%s %p\n' |
  sort -n | tail -1 | cut -d' ' -f2-)"
if [ -z "$source_image" ]; then
  echo "make-bench-images: EveningGlow not found in the package" >&2
  exit 1
fi
echo "make-bench-images: upscaling $source_image"

# Fill 6000 x 4000 and crop the overhang, so the photograph is not distorted.
geometry=(-filter Lanczos -resize '6000x4000^' -gravity center -extent 6000x4000)
"$convert_bin" "$source_image" -colorspace sRGB "${geometry[@]}" -depth 16 eveningglow-6000x4000-16.ppm
"$convert_bin" eveningglow-6000x4000-16.ppm -depth 8 eveningglow-6000x4000-8.ppm
"$convert_bin" eveningglow-6000x4000-8.ppm eveningglow-6000x4000-8.png
rm -rf extract

ls -l "$out"/eveningglow-6000x4000-*
echo "export TINTORRA_BENCH_IMAGE=$out/eveningglow-6000x4000-8.ppm"

#!/usr/bin/env bash
# Installs every Debian 12 package Tintorra needs to build, test and benchmark.
# Safe to run again: apt-get skips what is already there.
set -euo pipefail

packages=(
  # toolchain
  build-essential cmake ninja-build pkg-config clang-format ccache
  # colour management, geometry, text
  liblcms2-dev libtet1.5-dev libicu-dev
  # image codecs
  libtiff-dev libpng-dev libjpeg62-turbo-dev libopenjp2-7-dev libgif-dev zlib1g-dev
  # compression and checksums of PNG image data
  libisal-dev
  # vectorised maths for the pixel engine
  libsleef-dev
  # command line and JSON; photographs' metadata (EXIF, XMP, IPTC) for the command-line tool
  libcli11-dev nlohmann-json3-dev libexiv2-dev
  # desktop application
  qt6-base-dev qt6-pdf-dev qt6-svg-dev qt6-tools-dev qt6-tools-dev-tools libgl-dev libxcb1-dev
  # desktop integration: the validators the desktop test runs, MIME detection in it
  desktop-file-utils appstream shared-mime-info libglib2.0-bin
  # the end-to-end run and the screenshots: a virtual display, a pointer driver, a grabber
  xvfb xauth xdotool x11-apps imagemagick
  # tests and benchmarks, and the fuzz targets (clang's libFuzzer)
  libgtest-dev libgmock-dev libbenchmark-dev clang libclang-rt-14-dev
  # the libvips pipeline the command-line benchmark is compared with
  libvips-tools bc
  # real ICC profiles the colour tests read
  colord-data icc-profiles-free argyll-ref
  # file tools whose output the image and command-line tests check against
  libtiff-tools exiv2 libimage-exiftool-perl
)

if [ "$(id -u)" -eq 0 ]; then
  sudo=()
else
  sudo=(sudo)
fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: all ${#packages[@]} packages are installed"
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"

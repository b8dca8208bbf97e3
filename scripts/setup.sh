#!/usr/bin/env bash
# Installs every Debian 12 package Zendrel needs, then configures and builds.
# Usage: scripts/setup.sh [build-dir] [extra cmake args...]
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build}
shift || true

packages=(
  g++ cmake ninja-build pkg-config git
  qt6-base-dev qt6-base-dev-tools qt6-svg-dev libqt6svg6 qt6-multimedia-dev libgl-dev
  libsndfile1-dev libfftw3-dev libtag1-dev libsoundtouch-dev libebur128-dev
  sox libsox-fmt-all ffmpeg kid3-cli zip unzip curl espeak-ng
  libgtest-dev libgmock-dev libbenchmark-dev
  pulseaudio pulseaudio-utils
  xvfb xauth python3 python3-mutagen clang-format imagemagick
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo_cmd=""
  [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
  echo "setup: installing ${missing[*]}"
  $sudo_cmd apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${ZENDREL_BUILD_TYPE:-RelWithDebInfo}" "$@" >/dev/null
cmake --build "$build" --parallel "$(nproc)"
# The menu entry, icon and ".zendepisode" file type for this user.
"$here/scripts/install-desktop.sh" "$build/app/zendrel" || echo "setup: desktop entry not installed"

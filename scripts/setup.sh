#!/usr/bin/env bash
# Installs the Debian packages qvis builds and tests with, and nothing else; packages that are
# already there are left alone. `--bench` adds the benchmark-only ones (Cairo, the reference
# renderer). The Qt 6 development files (desktop port and editor) and the X server and input tool
# of the editor's end-to-end test are installed by default; `--qt` is kept for old callers.
set -euo pipefail

packages=(cmake ninja-build g++ pkg-config libgtest-dev libgmock-dev libbenchmark-dev
          libfreetype-dev libfontconfig-dev libpng-dev fonts-liberation2
          libboost-dev  # Boost.Geometry R-tree: the board's spatial index (headers only)
          gerbv   # the reference viewer the artwork renderer is compared with
          clang libclang-rt-14-dev  # libFuzzer, for the bounded fuzz runs of ./test.sh
          qt6-base-dev xvfb xdotool)  # the Qt editor and its end-to-end test in a real X server
for arg in "$@"; do
  case "$arg" in
    --bench) packages+=(libcairo2-dev) ;;
    --qt) ;;
    *) echo "setup: unknown option $arg (use --bench, --qt)" >&2; exit 2 ;;
  esac
done

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if ((${#missing[@]})); then
  echo "setup: installing ${missing[*]}"
  sudo_cmd=()
  if [[ $(id -u) -ne 0 ]]; then sudo_cmd=(sudo); fi
  export DEBIAN_FRONTEND=noninteractive
  "${sudo_cmd[@]}" apt-get update -qq
  "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
else
  echo "setup: all packages present"
fi

#!/usr/bin/env bash
# The Windows stage of test.sh: cross-builds qvis with MinGW-w64 into build/mingw, runs every
# test executable under Wine (ctest starts each one through wine64), then writes the fixed design
# with the Windows and the Linux build of qvis-design-bytes and compares the bytes.
# Usage: scripts/test-windows.sh [LINUX_BUILD_DIR]   (default build/release; built if needed)
set -euo pipefail
cd "$(dirname "$0")/.."
linux_build=${1:-build/release}
jobs=$(nproc 2>/dev/null || echo 2)
werror=OFF
if [[ "${CI:-}" == "true" ]]; then werror=ON; fi

start=$SECONDS
echo "== windows: cross-build (build/mingw)"
cmake -S . -B build/mingw -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-w64-x86_64.cmake \
  -DCMAKE_BUILD_TYPE=Release -DQVIS_WERROR=${werror} >/dev/null
cmake --build build/mingw -j "${jobs}"
built=$SECONDS

echo "== windows: tests under Wine"
out=build/mingw/same-bytes
mkdir -p "$out"
scripts/wine-session.sh build/mingw/wineprefix bash -c '
  set -e
  ctest --test-dir build/mingw --output-on-failure -j "$1" --timeout 900
  "$wine64" build/mingw/bin/qvis-design-bytes.exe "$2/windows.design" "$2/windows.records"
  # Our engine against the system GDI on the exact-rule golden scenes. Outside ctest and with
  # its output in a file: processes GDI+ starts under Wine keep an output pipe open after the
  # test has ended.
  if ! timeout 900 "$wine64" build/mingw/bin/qvis_platform_gdi_test.exe >"$2/platform_gdi.log" 2>&1; then
    tr -d "\r" <"$2/platform_gdi.log" | tail -60
    echo "== windows: the engine and the system GDI differ (above)" >&2
    exit 1
  fi
  tr -d "\r" <"$2/platform_gdi.log" | grep -E "^\[ *(PASSED|SKIPPED|FAILED) *\]|tests? from .* ran" || true
' wine-tests "${jobs}" "$out"

echo "== windows: the same bytes on both platforms"
if [[ ! -x $linux_build/apps/qvis-design-bytes/qvis-design-bytes ]]; then
  cmake -S . -B "$linux_build" >/dev/null
  cmake --build "$linux_build" -j "${jobs}" --target qvis-design-bytes
fi
"$linux_build/apps/qvis-design-bytes/qvis-design-bytes" "$out/linux.design" "$out/linux.records"
cmp "$out/linux.design" "$out/windows.design"
cmp "$out/linux.records" "$out/windows.records"
echo "== windows: design $(stat -c %s "$out/linux.design") bytes and records" \
     "$(stat -c %s "$out/linux.records") bytes identical on both platforms"
echo "== windows: cross-build $((built - start)) s, Wine tests $((SECONDS - built)) s"

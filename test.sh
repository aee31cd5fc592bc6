#!/usr/bin/env bash
# Builds and runs every test twice: a Release build and an AddressSanitizer + UBSan build,
# each with ctest, then the Windows build under Wine (scripts/test-windows.sh; skipped with
# QVIS_SKIP_WINDOWS=1). Build trees go to build/release, build/asan and build/mingw.
set -euo pipefail
cd "$(dirname "$0")"
if [[ "${QVIS_SKIP_WINDOWS:-0}" == "1" ]]; then
  bash scripts/setup.sh
else
  bash scripts/setup.sh --windows
fi

jobs=$(nproc 2>/dev/null || echo 2)
werror=OFF
if [[ "${CI:-}" == "true" ]]; then werror=ON; fi

run_suite() {
  local name=$1; shift
  echo "== ${name}: configure and build"
  cmake -S . -B "build/${name}" -G Ninja -DQVIS_BUILD_TESTS=ON -DQVIS_WERROR=${werror} "$@" >/dev/null
  cmake --build "build/${name}" -j "${jobs}"
  echo "== ${name}: test"
  ctest --test-dir "build/${name}" --output-on-failure -j "${jobs}" --timeout 900
}

run_suite release -DCMAKE_BUILD_TYPE=Release
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
  run_suite asan -DCMAKE_BUILD_TYPE=RelWithDebInfo "-DQVIS_SANITIZE=address;undefined"
# The archive and metafile readers under libFuzzer, each for a bounded time (about 20 s), when
# clang is installed; the replay drivers above already run their seed corpora in every build.
if command -v clang++ >/dev/null 2>&1; then
  echo "== fuzz: configure and build"
  CC=clang CXX=clang++ cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DQVIS_BUILD_TESTS=ON -DQVIS_BUILD_FUZZ=ON >/dev/null
  cmake --build build/fuzz -j "${jobs}" --target archive_fuzz design_file_fuzz emf_fuzz
  echo "== fuzz: test"
  ctest --test-dir build/fuzz --output-on-failure -R '^(archive|design_file|emf)_fuzz$'
else
  echo "== fuzz: skipped (clang++ is not installed; the seed replays ran in both suites)"
fi
if [[ "${QVIS_SKIP_WINDOWS:-0}" != "1" ]]; then
  bash scripts/test-windows.sh build/release
fi
echo "== all test suites passed"

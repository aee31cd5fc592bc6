#!/usr/bin/env bash
# Builds and runs every test twice: a Release build and an AddressSanitizer + UBSan build,
# each with ctest. Build trees go to build/release and build/asan.
set -euo pipefail
cd "$(dirname "$0")"
bash scripts/setup.sh

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
echo "== all test suites passed"

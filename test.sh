#!/usr/bin/env bash
# Builds and runs every test twice: a Release build and an AddressSanitizer + UBSan build (both
# with the Qt port and the editor), each with ctest, then the Windows build under Wine
# (scripts/test-windows.sh; skipped with QVIS_SKIP_WINDOWS=1). Build trees go to build/release,
# build/asan and build/mingw.
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

# The Release stage also builds the Qt port and editor; their tests run on Qt's offscreen
# platform and the editor's end-to-end test under Xvfb.
run_suite release -DCMAKE_BUILD_TYPE=Release -DQVIS_WITH_QT=ON
# A host project outside the tree, built against qvis installed from the Release tree (CMake
# package and pkg-config), against a shared libqvis (its own library-only build) and with qvis
# as a subproject.
echo "== consumer: install and build a host project against qvis"
consumer_start=$SECONDS
bash scripts/consumer_test.sh build/release
echo "== consumer: passed in $((SECONDS - consumer_start)) s"
# The sanitizer stage builds the Qt port and the editor too; the leak check passes over the
# session-bus connection the platform plugin's system library keeps (scripts/lsan.supp).
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
  LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp" \
  run_suite asan -DCMAKE_BUILD_TYPE=RelWithDebInfo "-DQVIS_SANITIZE=address;undefined" -DQVIS_WITH_QT=ON
# The multi-window test under ThreadSanitizer: two windows on two threads, each with its own
# design, share nothing. Only that test binary is built.
echo "== tsan: configure and build the multi-window test"
cmake -S . -B build/tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQVIS_BUILD_TESTS=ON \
  -DQVIS_WERROR=${werror} -DQVIS_SANITIZE=thread >/dev/null
cmake --build build/tsan -j "${jobs}" --target qvis_integration_test
echo "== tsan: test"
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
  build/tsan/tests/qvis_integration_test --gtest_filter='WindowStateTest.*'
# Every reader under libFuzzer (archive records, design file, metafile, session script, Gerber,
# Excellon, board text), each
# for a bounded time (about 20 s), when clang is installed; the replay drivers above already
# run their seed corpora in every build. scripts/fuzz.sh SECONDS runs them for longer.
if command -v clang++ >/dev/null 2>&1; then
  echo "== fuzz: configure and build"
  CC=clang CXX=clang++ cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DQVIS_BUILD_TESTS=ON -DQVIS_BUILD_FUZZ=ON >/dev/null
  cmake --build build/fuzz -j "${jobs}" --target archive_fuzz design_file_fuzz emf_fuzz \
    session_script_fuzz gerber_fuzz excellon_fuzz board_fuzz
  echo "== fuzz: test"
  ctest --test-dir build/fuzz --output-on-failure -R '^(archive|design_file|emf|session_script|gerber|excellon|board)_fuzz$'
else
  echo "== fuzz: skipped (clang++ is not installed; the seed replays ran in both suites)"
fi
if [[ "${QVIS_SKIP_WINDOWS:-0}" != "1" ]]; then
  bash scripts/test-windows.sh build/release
fi
echo "== all test suites passed"

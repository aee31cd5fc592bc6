#!/usr/bin/env bash
# Builds the benchmarks (Release, build-bench/) and runs every one of them. Each workload prints
# its CPU time and its ratios to references measured in the same run (see bench/README.md).
# Extra arguments go to every benchmark program, e.g. ./bench.sh --benchmark_filter=Tracks
set -euo pipefail
cd "$(dirname "$0")"
bash scripts/setup.sh --bench
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DQVIS_BUILD_TESTS=OFF \
  -DQVIS_BUILD_BENCH=ON -DQVIS_WITH_QT=ON >/dev/null
cmake --build build-bench -j "${jobs}"
status=0
for bench in build-bench/bench/*_bench; do
  [[ -x "${bench}" ]] || continue
  echo "== ${bench##*/}"
  "${bench}" --benchmark_counters_tabular=true "$@" || status=1
done
exit "${status}"

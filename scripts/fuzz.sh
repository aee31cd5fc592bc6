#!/usr/bin/env bash
# Runs every fuzz target for SECONDS each (default 600), one after another, from the committed
# seed corpus, and prints per target: executions, crashes (a hang counts as one: -timeout),
# peak memory and the time actually run. Needs clang; builds build/fuzz. New inputs go to
# build/fuzz/long-corpus/<target>/, crash and timeout inputs to build/fuzz/findings/<target>/.
#   scripts/fuzz.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-600}
if ! command -v clang++ >/dev/null 2>&1; then
  echo "fuzz.sh: clang++ is not installed" >&2
  exit 2
fi
targets=(archive_fuzz design_file_fuzz emf_fuzz session_script_fuzz gerber_fuzz excellon_fuzz board_fuzz)
declare -A corpus=([archive_fuzz]=archive [design_file_fuzz]=design [emf_fuzz]=emf
                   [session_script_fuzz]=session [gerber_fuzz]=gerber
                   [excellon_fuzz]=excellon [board_fuzz]=board)
CC=clang CXX=clang++ cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DQVIS_BUILD_TESTS=ON -DQVIS_BUILD_FUZZ=ON >/dev/null
cmake --build build/fuzz -j "$(nproc 2>/dev/null || echo 2)" --target "${targets[@]}"
status=0
printf '%-20s %12s %8s %10s %10s\n' target executions crashes peak_mb seconds
for t in "${targets[@]}"; do
  work=build/fuzz/long-corpus/$t
  findings=build/fuzz/findings/$t
  mkdir -p "$work" "$findings"
  log=build/fuzz/$t.log
  start=$(date +%s)
  # A run stops at its first finding (crash, leak, out-of-memory or timeout input, saved in
  # $findings); the "seconds" column then says how long it ran.
  set +e
  "build/fuzz/fuzz/$t" -max_total_time="$seconds" -timeout=30 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="$findings/" "$work" "fuzz/corpus/${corpus[$t]}" \
    >"$log" 2>&1
  rc=$?
  set -e
  ran=$(( $(date +%s) - start ))
  execs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' | tail -1)
  peak=$(grep -o 'stat::peak_rss_mb: *[0-9]*' "$log" | grep -o '[0-9]*$' | tail -1)
  crashes=$(find "$findings" -type f | wc -l)
  printf '%-20s %12s %8s %10s %10s\n' "$t" "${execs:-?}" "$crashes" "${peak:-?}" "$ran"
  if [[ $rc -ne 0 || $crashes -ne 0 ]]; then
    status=1
    echo "  $t: exit $rc; see $log and $findings" >&2
  fi
done
exit "$status"

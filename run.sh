#!/usr/bin/env bash
# Sets up, builds the session host and draws the example board; prints where the pictures went.
set -euo pipefail
cd "$(dirname "$0")"
bash scripts/setup.sh
cmake -S . -B build/run -G Ninja -DCMAKE_BUILD_TYPE=Release -DQVIS_BUILD_TESTS=OFF >/dev/null
cmake --build build/run --target qvis-session -j2
out="$(pwd)/out/examples"
mkdir -p "$out"
build/run/apps/qvis-session/qvis-session examples/board.qs --out "$out"
echo "run: the pictures and the listing are in $out"

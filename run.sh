#!/usr/bin/env bash
# Sets up, builds the session host and the Gerber renderer, draws the example session and renders
# the example Gerber board; prints where the pictures went.
set -euo pipefail
cd "$(dirname "$0")"
bash scripts/setup.sh
cmake -S . -B build/run -G Ninja -DCMAKE_BUILD_TYPE=Release -DQVIS_BUILD_TESTS=OFF -DQVIS_WITH_QT=ON >/dev/null
cmake --build build/run --target qvis-session qvis-gerber qvis-editor -j2
out="$(pwd)/out/examples"
mkdir -p "$out"
build/run/apps/qvis-session/qvis-session examples/board.qs --out "$out"
g=examples/gerber
build/run/apps/qvis-gerber/qvis-gerber render $g/board-B_Cu.gbr $g/board-F_Cu.gbr \
  $g/board-F_Silk.gbr $g/board-Edge_Cuts.gbr $g/board.drl -o "$out/gerber_board.png" --dpi 400 \
  --foreground 205080 --background 102010
build/run/apps/qvis-gerber/qvis-gerber info $g/board-F_Cu.gbr $g/board.drl > "$out/gerber_board.txt"
echo "run: the pictures and the listing are in $out (gerber_board.png: the example Gerber set)"
# The editor on the example board: in a window when there is a display, otherwise the canvas
# rendered headless into a picture.
editor=build/run/apps/qvis-editor/qvis-editor
board=($g/board-B_Cu.gbr $g/board-F_Cu.gbr $g/board-F_Silk.gbr $g/board-Edge_Cuts.gbr $g/board.drl)
if [[ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]]; then
  echo "run: opening the editor on the example board (close its window to finish)"
  "$editor" "${board[@]}"
else
  QT_QPA_PLATFORM=offscreen "$editor" --snapshot "$out/editor_board.png" --size 1280x800 "${board[@]}"
  echo "run: no display: the editor's canvas on the example board is in $out/editor_board.png"
fi

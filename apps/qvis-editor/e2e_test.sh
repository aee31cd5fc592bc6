#!/usr/bin/env bash
# End-to-end test of the editor in a real X server (Xvfb), driven with xdotool as a user would:
# start on a generated board, draw a track and a pad, move the pad, undo the move, save, and
# compare the saved board and its picture with what is expected.
#   e2e_test.sh QVIS_EDITOR OUT_DIR
set -euo pipefail
self=$(realpath "$0")
editor=$(realpath "$1")
out=$(realpath -m "$2")
if [[ -z "${QVIS_E2E_IN_X:-}" ]]; then rm -rf "$out"; fi
mkdir -p "$out"
cd "$out"

if [[ -z "${QVIS_E2E_IN_X:-}" ]]; then
  # Run the rest of this script inside a private X server.
  export QVIS_E2E_IN_X=1
  exec xvfb-run -a -s "-screen 0 1280x900x24" bash "$self" "$editor" "$out"
fi
export HOME=$out/home XDG_CONFIG_HOME=$out/home/.config  # no settings of the machine's user
mkdir -p "$HOME"

# board.qvb (the library's board text format, no view: the editor fits it): one layer holding
# a board outline (tracks) and two pads.
outline='  track 10 0 0 40000000 0
  track 10 40000000 0 40000000 25000000
  track 10 40000000 25000000 0 25000000
  track 10 0 25000000 0 0
  flash 11 5000000 5000000
  flash 11 35000000 5000000
'
make_board() {  # make_board FILE OBJECTS
  {
    echo 'qvis-board 1'
    echo 'layer "Top"'
    echo '  colour C83434'
    echo '  aperture 10 circle 200000 0 0 0 0'
    echo '  end'
    echo '  aperture 11 circle 1600000 0 0 0 800000'
    echo '  end'
    echo '  aperture 12 circle 250000 0 0 0 0'
    echo '  end'
    printf '%s' "$2"
    echo 'end'
  } > "$1"
}
make_board board.qvb "$outline"
# What the board must hold after the session: the outline, the pads, the new track and pad.
make_board expected.qvb "$outline"'  track 12 5000000 20000000 15000000 20000000
  flash 11 25000000 20000000
'

"$editor" --print-canvas board.qvb > editor.out 2> editor.err &
pid=$!
trap 'kill $pid 2>/dev/null || true' EXIT
for _ in $(seq 100); do
  grep -q '^canvas' editor.out 2>/dev/null && break
  sleep 0.1
done
read -r _ cx cy cw ch zoom vx vy < <(grep '^canvas' editor.out)
echo "e2e: canvas at $cx,$cy size ${cw}x$ch zoom $zoom view $vx,$vy"
# Screen position of a board point in mm (y up; the canvas's world y grows downwards).
sx() { awk -v x="$1" -v z="$zoom" -v v="$vx" -v o="$cx" 'BEGIN { printf "%d", o + (x - v) * z + 0.5 }'; }
sy() { awk -v y="$1" -v z="$zoom" -v v="$vy" -v o="$cy" 'BEGIN { printf "%d", o + (-y - v) * z + 0.5 }'; }
step() { sleep 0.3; }
click() { xdotool mousemove "$(sx "$1")" "$(sy "$2")"; step; xdotool click 1; step; }

wid=$(xdotool search --sync --name "qvis editor" | head -1)
xdotool windowactivate --sync "$wid" 2>/dev/null || xdotool windowfocus --sync "$wid"
click 20 12         # focus the canvas (select tool: picks nothing there)
xdotool key t; step                 # track
click 5 20
click 15 20
xdotool mousemove "$(sx 18)" "$(sy 14)"; step
xdotool key Return; step            # the track ends at the last click, not at the cursor
xdotool key Escape; step
xdotool key p; step                 # round pad
click 25 20
xdotool key Escape; step            # back to selection
# Move the pad with the mouse, then undo the move.
xdotool mousemove "$(sx 25)" "$(sy 20)"; step
xdotool mousedown 1; step
xdotool mousemove "$(sx 27)" "$(sy 20)"; step
xdotool mousemove "$(sx 30)" "$(sy 20)"; step
xdotool mouseup 1; step
import -window root moved.png 2>/dev/null || true
xdotool key ctrl+z; step
xdotool key ctrl+s; step
import -window root session.png 2>/dev/null || true
xdotool key ctrl+q; step
for _ in $(seq 50); do kill -0 $pid 2>/dev/null || break; sleep 0.1; done
if kill -0 $pid 2>/dev/null; then
  echo "e2e: the editor did not quit (unsaved changes after Ctrl+S?)" >&2
  exit 1
fi
trap - EXIT

fail=0
for want in 'track [0-9]+ 5000000 20000000 15000000 20000000$' 'flash [0-9]+ 25000000 20000000$'; do
  if ! grep -Eq "$want" board.qvb; then echo "e2e: the saved board lacks $want" >&2; fail=1; fi
done
for unwanted in 'flash [0-9]+ 30000000 20000000' ' 18000000 14000000'; do
  if grep -Eq "$unwanted" board.qvb; then echo "e2e: the saved board has $unwanted" >&2; fail=1; fi
done
# The saved board and the expected one render the same picture.
"$editor" --snapshot saved.png --size 640x400 board.qvb
"$editor" --snapshot expected.png --size 640x400 expected.qvb
if ! cmp -s saved.png expected.png; then
  echo "e2e: the saved board does not look as expected (compare $out/saved.png and expected.png)" >&2
  fail=1
fi
if ((fail)); then exit 1; fi
echo "e2e: passed (screenshots in $out)"

#!/usr/bin/env bash
# wine-session.sh WINEPREFIX COMMAND...: runs COMMAND (for example ctest over a cross-built tree,
# whose tests start Windows executables through wine64) with a private Wine prefix, one
# wineserver kept alive for the whole run and a virtual X display for windows.
#
# Without a persistent wineserver, captured output and ctest's emulator calls can hang; the
# prefix is created on first use (wineboot, 10-25 s) and reused afterwards. The installer
# prompts for Mono and Gecko and the menu-entry writer are turned off.
set -euo pipefail
if [[ $# -lt 2 ]]; then echo "usage: $0 WINEPREFIX COMMAND..." >&2; exit 2; fi
mkdir -p "$1"
export WINEPREFIX=$(cd "$1" && pwd)
shift
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"

wine_dir=
for w in wine64 /usr/lib/wine/wine64 /usr/lib64/wine/wine64; do
  if command -v "$w" >/dev/null 2>&1; then wine_dir=$(dirname "$(command -v "$w")"); break; fi
done
if [[ -z $wine_dir ]]; then echo "wine-session: no wine64 loader (scripts/setup.sh --windows)" >&2; exit 2; fi
wine64=$wine_dir/wine64
wineserver=$wine_dir/wineserver
[[ -x $wineserver ]] || wineserver=$(command -v wineserver)

# Inside the virtual display (this script runs itself again there): the server, the prefix,
# then the command.
if [[ ${QVIS_WINE_SESSION_INNER:-} == 1 ]]; then
  "$wineserver" -p >/dev/null 2>&1 &
  trap '"$wineserver" -k >/dev/null 2>&1 || true' EXIT
  # wineboot also starts the prefix's services with their output on /dev/null: started later by
  # a test instead, they would hold ctest's output pipe open and ctest would wait for ever.
  if [[ ! -f $WINEPREFIX/system.reg ]]; then
    "$wine64" wineboot -i >/dev/null 2>&1 || true
  else
    "$wine64" wineboot >/dev/null 2>&1 || true
  fi
  export wine64
  "$@"
  exit
fi
# Always a fresh virtual display, so that windows and screenshots do not depend on the desktop.
QVIS_WINE_SESSION_INNER=1 xvfb-run -a -s "-screen 0 1280x1024x24" "$0" "$WINEPREFIX" "$@"

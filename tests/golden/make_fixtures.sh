#!/usr/bin/env bash
# Renders the reference images of golden scenes: make_fixtures.sh SCENE.txt...
# Writes SCENE.png and SCENE.NAME.png (one per `save NAME`) beside each scene.
set -euo pipefail
oracle=${GDI_ORACLE:-/work/shared/tools/gdi-oracle/gdi-oracle}
if [[ $# -eq 0 ]]; then
  echo "usage: $0 SCENE.txt..." >&2
  exit 2
fi
for scene in "$@"; do
  "$oracle" "$scene" "${scene%.txt}.png"
done

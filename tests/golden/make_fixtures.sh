#!/usr/bin/env bash
# Renders the reference images of golden scenes: make_fixtures.sh SCENE.txt...
# Writes SCENE.png and SCENE.NAME.png (one per `save NAME`) beside each scene.
set -euo pipefail
# The oracle (a program that renders a scene with the reference GDI) is not part of the
# repository: name it with GDI_ORACLE or put `gdi-oracle` on PATH.
oracle=${GDI_ORACLE:-$(command -v gdi-oracle || true)}
if [[ -z "$oracle" || ! -x "$oracle" ]]; then
  echo "$0: set GDI_ORACLE to the gdi-oracle program (or put gdi-oracle on PATH)" >&2
  exit 2
fi
if [[ $# -eq 0 ]]; then
  echo "usage: $0 SCENE.txt..." >&2
  exit 2
fi
for scene in "$@"; do
  "$oracle" "$scene" "${scene%.txt}.png"
done

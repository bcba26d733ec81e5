#!/usr/bin/env bash
# Configures and builds one preset; prints only what went wrong. Usage: build.sh PRESET [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
shift
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { cmake --preset "$preset" && cmake --build --preset "$preset" ${@:+--target "$@"}; } >"$log" 2>&1; then
  grep -vE '^\[[0-9]+/[0-9]+\]|^-- ' "$log" >&2 || true
  echo "The build of '$preset' failed." >&2
  exit 1
fi

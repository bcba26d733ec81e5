#!/usr/bin/env bash
# Configures and builds one preset; prints only what went wrong, and while it is
# long a line that tells how far it is. Usage: build.sh PRESET [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
shift
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# Of ninja's lines "[done/all] ...": on a terminal one that is written over, elsewhere a single one.
progress() {
  local line shown=
  while IFS= read -r line; do
    [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]] && [ "${BASH_REMATCH[2]}" -ge 20 ] || continue
    if [ -t 2 ]; then
      printf '\rBuilding: %d of %d ' "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}" >&2
    elif [ -z "$shown" ]; then
      echo "Building, which takes some minutes ..." >&2
    fi
    shown=1
  done
  if [ -n "$shown" ] && [ -t 2 ]; then printf '\r\033[K' >&2; fi
}
if ! { cmake --preset "$preset" && cmake --build --preset "$preset" ${@:+--target "$@"}; } 2>&1 | tee "$log" | progress; then
  grep -vE '^\[[0-9]+/[0-9]+\]|^-- ' "$log" >&2 || true
  echo "The build of '$preset' failed." >&2
  exit 1
fi

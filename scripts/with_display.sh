#!/usr/bin/env bash
# Runs a command on a virtual X display of its own, with a window manager and a session bus; ends what it started.
# Usage: with_display.sh COMMAND [ARGUMENT...]
set -euo pipefail
for needed in Xvfb openbox dbus-run-session; do
  command -v "$needed" >/dev/null || { echo "with_display.sh: $needed is not installed" >&2; exit 1; }
done
folder=$(mktemp -d)
started=()
finish() {
  for process in "${started[@]}"; do kill "$process" 2>/dev/null || true; done
  wait 2>/dev/null || true
  rm -rf "$folder"
}
trap finish EXIT
export XDG_RUNTIME_DIR=$folder/run
mkdir -m 700 "$XDG_RUNTIME_DIR"
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset 3>"$folder/number" 2>"$folder/log" &
started+=($!)
for _ in $(seq 200); do [ -s "$folder/number" ] && break; sleep 0.05; done
[ -s "$folder/number" ] || { cat "$folder/log" >&2; exit 1; }
export DISPLAY=:$(tr -d '\n' <"$folder/number")
export QT_QPA_PLATFORM=xcb
openbox --sm-disable >/dev/null 2>&1 &
started+=($!)
dbus-run-session -- "$@"

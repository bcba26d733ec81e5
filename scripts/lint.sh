#!/usr/bin/env bash
# The linters: layout, a short list of clang-tidy checks, and the layering of the rooms. Silent when all is well.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh build test lint

mapfile -t sources < <(git ls-files '*.cpp' '*.h')
clang-format --dry-run -Werror "${sources[@]}"
scripts/check_layers.py
scripts/check_translation.sh

# clang-tidy reads the unity sources: what the files of a room share is then read once, not for each.
cmake --preset lint >/dev/null
python3 -c '
import json
units = {entry["file"] for entry in json.load(open("build/lint/compile_commands.json"))}
print("\n".join(sorted(unit for unit in units if "/tests/" not in unit and "/.rcc/" not in unit)))
' | xargs -P "$(nproc)" -n 1 clang-tidy -p build/lint --quiet --extra-arg=-Wno-unknown-warning-option \
  2> >(grep -vE 'warnings? generated' >&2 || true)

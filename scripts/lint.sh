#!/usr/bin/env bash
# The linters: layout, a short list of clang-tidy checks, and the layering of the rooms. Silent when all is well.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh build test lint

mapfile -t sources < <(git ls-files '*.cpp' '*.h')
clang-format --dry-run -Werror "${sources[@]}"
scripts/check_layers.py

cmake --preset lint >/dev/null
mapfile -t units < <(git ls-files 'src/*.cpp' 'bench/*.cpp')
printf '%s\n' "${units[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy -p build/lint --quiet --extra-arg=-Wno-unknown-warning-option 2> >(grep -v 'warnings generated' >&2 || true)

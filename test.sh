#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test. Safe to run again at once.
set -euo pipefail
cd "$(dirname "$0")"
scripts/packages.sh build test
scripts/build.sh release
ctest --preset release --progress "$@"

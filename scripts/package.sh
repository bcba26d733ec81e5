#!/usr/bin/env bash
# Builds the Debian packages and prints their paths.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh build package >&2
scripts/build.sh package
cd build/package
rm -f ./*.deb
cpack -G DEB >cpack.log || { cat cpack.log >&2; exit 1; }
printf '%s\n' "$PWD"/*.deb

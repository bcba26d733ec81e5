#!/usr/bin/env bash
# Draws the pictures of the documentation anew: docs/screenshots/light, dark and german.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh build test
scripts/build.sh dev screenshots orvalo-gateway language_de
build/dev/bin/screenshots docs/screenshots/light 2>/dev/null
build/dev/bin/screenshots docs/screenshots/dark dark 2>/dev/null
build/dev/bin/screenshots docs/screenshots/german whole build/dev/translations/de/Language.rcc 2>/dev/null

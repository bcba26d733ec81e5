#!/usr/bin/env bash
# Lists the texts missing in or foreign to the languages of translations/. Silent when all is well.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh "${1:-dev}" orvalo-translator
for language in translations/*/; do "build/${1:-dev}/bin/orvalo-translator" check "$language"; done

#!/usr/bin/env bash
# Kills orvaloctl and orvalo-gateway, and cuts the client's power, while they send; prints how many recipients were lost,
# doubled, in doubt or wrongly "Failed" afterwards, and ends with 1 when there was any. docs/reliability.md has the figures.
# Usage: drill.sh [--seed N] [--kills N] [--cuts N] [--recipients N]
#        (unless given: 1000 kills, 200 power cuts and a million recipients, half an hour)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh build test
scripts/build.sh release drill
exec build/release/bin/drill "$@"

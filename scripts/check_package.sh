#!/usr/bin/env bash
# Builds the Debian packages and looks them over: lintian's errors, how the programs are hardened, and how far the units
# are restricted. Silent when all is well.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh build package lint
mapfile -t packages < <(scripts/package.sh)
[ ${#packages[@]} -eq 4 ] || { echo "These are not four packages: ${packages[*]}" >&2; exit 1; }

log=$(mktemp)
folder=$(mktemp -d)
trap 'rm -rf "$log" "$folder"' EXIT
fails() { echo "$1" >&2; cat "$log" >&2; exit 1; }

lintian --allow-root --fail-on error "${packages[@]}" >"$log" 2>&1 || fails "lintian found errors:"

for package in "${packages[@]}"; do dpkg-deb -x "$package" "$folder"; done
for program in "$folder"/usr/bin/*; do
  head -c 4 "$program" | grep -q ELF || continue
  readelf -hdnsW "$program" >"$log"
  grep -q 'Type: *DYN' "$log" || fails "$program is at a fixed address"
  grep -Eq 'BIND_NOW|Flags:.*NOW' "$log" || fails "$program binds late"
  grep -q '__stack_chk_fail' "$log" || fails "$program has no stack protection"
  grep -Eq '__[a-z]+_chk' "$log" || fails "$program checks no library calls"
done

for unit in "$folder"/usr/share/orvalo/gateway/*.service; do
  systemd-analyze security --offline=true --threshold=29 --no-pager "$unit" >"$log" 2>&1 || fails "$unit is too open:"
done

#!/usr/bin/env bash
# Looks for faults with libFuzzer: every target, each for as many seconds as one likes, from its seeds in
# tests/fuzz/corpus. What is found on the way is kept in build/fuzz/corpus, an input that fails in build/fuzz/found.
# Prints a line a target; ends with 1 when any failed. Usage: fuzz.sh [SECONDS [TARGET...]]     (default: 20 seconds, all)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-20}
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(sed -nE 's/^orvalo_fuzz\((\w+) .*/\1/p' tests/fuzz/CMakeLists.txt)
scripts/packages.sh build test lint
scripts/build.sh asan "${targets[@]/%/_fuzz}"

run() {
  local target=$1 found=build/fuzz/found log=build/fuzz/$1.log
  mkdir -p "build/fuzz/corpus/$target" "$found"
  [ -d "tests/fuzz/corpus/$target" ] || { echo "$target: there are no seeds in tests/fuzz/corpus/$target" >&2; return 1; }
  if ! "build/asan/bin/${target}_fuzz" -max_total_time="$2" -max_len=16384 -timeout=10 -rss_limit_mb=2048 \
       -print_final_stats=1 -artifact_prefix="$found/$target-" \
       "build/fuzz/corpus/$target" "tests/fuzz/corpus/$target" >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    echo "$target failed: the input is in $found" >&2
    return 1
  fi
  echo "$target: $(sed -nE 's/^stat::number_of_executed_units: //p' "$log") inputs, none failed"
}
export -f run
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'run {} '"$seconds"

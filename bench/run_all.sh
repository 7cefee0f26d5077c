#!/usr/bin/env bash
# Runs every benchmark program once, one after the other, so that ratios
# come from one run on one machine state.
set -euo pipefail
dir=$1
for b in "$dir"/*_bench; do
  echo "=== $(basename "$b")"
  "$b" --benchmark_min_time=0.2 "${@:2}"
done

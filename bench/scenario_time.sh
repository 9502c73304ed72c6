#!/usr/bin/env bash
# Wall time of one scenario run (default: bench/startup.scn), median of 5 runs.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
sim=${KAVELIN_SIM:-$root/build/tools/kavelin-sim/kavelin-sim}
scenario=${1:-$root/bench/startup.scn}
times=()
for _ in 1 2 3 4 5; do
  start=$(date +%s%N)
  "$sim" run "$scenario" >/dev/null
  end=$(date +%s%N)
  times+=($(((end - start) / 1000000)))
done
sorted=$(printf '%s\n' "${times[@]}" | sort -n | tr '\n' ' ')
median=$(printf '%s\n' "${times[@]}" | sort -n | sed -n 3p)
echo "runs (ms): $sorted"
echo "median wall time of $(basename "$scenario"): ${median} ms (goal < 300 ms)"

#!/usr/bin/env bash
# Wall time of scenario runs, median of 5: a one-process scenario
# (bench/one_process.scn) and a two-process one (bench/startup.scn), each the
# way the device runs now and the way it ran before, in the same sitting:
# before, the device's folder lived on the disk (/tmp) and the device looked
# every 10 ms whether its hosts had ended (KAVELIN_SIM_POLL_EXIT=1).
# bench/scenario_time.sh [SCENARIO...] measures those instead; RUNS=N takes
# the median of N runs.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
sim=${KAVELIN_SIM:-$root/build/tools/kavelin-sim/kavelin-sim}
runs=${RUNS:-5}
scenarios=("$@")
[[ ${#scenarios[@]} -eq 0 ]] && scenarios=("$root/bench/one_process.scn" "$root/bench/startup.scn")

median() {  # SCENARIO: prints the median wall time in ms of $runs runs
  local times=()
  for ((i = 0; i < runs; ++i)); do
    local start end
    start=$(date +%s%N)
    "$sim" run "$1" >/dev/null
    end=$(date +%s%N)
    times+=($(((end - start) / 1000000)))
  done
  printf '%s\n' "${times[@]}" | sort -n | sed -n "$(((runs + 1) / 2))p"
}

for scenario in "${scenarios[@]}"; do
  name=$(basename "$scenario")
  # Interleaved, so that a busy moment of the machine weighs on both.
  now=$(median "$scenario")
  old=$(KAVELIN_SIM_FOLDER=/tmp KAVELIN_SIM_POLL_EXIT=1 median "$scenario")
  disk=$(KAVELIN_SIM_FOLDER=/tmp median "$scenario")
  speedup=$(awk -v a="$old" -v b="$now" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }')
  echo "median wall time of $name: ${now} ms; before (folder on /tmp, polling): ${old} ms" \
    "(${speedup}x); folder on /tmp alone: ${disk} ms"
done

#!/usr/bin/env bash
# Wall time of scenario runs, median of 5: a one-process scenario
# (bench/one_process.scn) and a two-process one (bench/startup.scn), each
# with the device's folder where it goes by default (a memory file system
# where the machine has one) and on the disk (/tmp), in the same sitting.
# bench/scenario_time.sh [SCENARIO...] measures those instead.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
sim=${KAVELIN_SIM:-$root/build/tools/kavelin-sim/kavelin-sim}
scenarios=("$@")
[[ ${#scenarios[@]} -eq 0 ]] && scenarios=("$root/bench/one_process.scn" "$root/bench/startup.scn")

median() {  # SCENARIO: prints the median wall time in ms of 5 runs
  local times=()
  for _ in 1 2 3 4 5; do
    local start end
    start=$(date +%s%N)
    "$sim" run "$1" >/dev/null
    end=$(date +%s%N)
    times+=($(((end - start) / 1000000)))
  done
  printf '%s\n' "${times[@]}" | sort -n | sed -n 3p
}

for scenario in "${scenarios[@]}"; do
  name=$(basename "$scenario")
  fast=$(median "$scenario")
  disk=$(KAVELIN_SIM_FOLDER=/tmp median "$scenario")
  echo "median wall time of $name: ${fast} ms (device folder on /tmp: ${disk} ms)"
done

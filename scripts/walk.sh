#!/usr/bin/env bash
# Runs COUNT random walks (default 200) of at least 30 steps each, from SEED
# (default 1), on both cores: walks, steps, failures and elapsed time. Each
# failing walk is shrunk to a scenario printed here and written to
# $TMPDIR/kavelin-walks (or WALK_OUT). Takes the walker, hosts and library
# from the plain tree, or from the tree WALK_BUILD names (a long run should
# not share a tree that is rebuilt meanwhile); builds it first when the
# walker is missing. Exit 0 when every walk held.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
count=${1:-200}
seed=${2:-1}
build=${WALK_BUILD:-$root/build}
out=${WALK_OUT:-${TMPDIR:-/tmp}/kavelin-walks}
walker=$build/sim/walk/kavelin-walk
if [[ ! -x $walker ]]; then
  bash "$root/scripts/build.sh" "$build" || exit 1
fi
jobs=2
logs=$(mktemp -d)
started=$(date +%s.%N)
for ((i = 0; i < jobs; ++i)); do
  "$walker" --count "$count" --seed "$seed" --shard "$i/$jobs" --out "$out" >"$logs/$i.log" 2>&1 &
done
wait
elapsed=$(echo "$(date +%s.%N) - $started" | bc)
walks=0 steps=0 failures=0 refused=0 bad=0
for ((i = 0; i < jobs; ++i)); do
  grep -v '^walks ' "$logs/$i.log"
  line=$(grep '^walks ' "$logs/$i.log" | tail -1)
  if [[ -z $line ]]; then
    echo "walk.sh: shard $i ended without its summary"
    bad=1
    continue
  fi
  read -r _ w _ s _ r _ f _ <<<"$line"
  walks=$((walks + w)) steps=$((steps + s)) refused=$((refused + r)) failures=$((failures + f))
done
rm -rf "$logs"
printf 'walks: %d  steps: %d (%d refused by the device)  failures: %d  elapsed: %.1f s\n' \
  "$walks" "$steps" "$refused" "$failures" "$elapsed"
[[ $failures -eq 0 && $bad -eq 0 ]]

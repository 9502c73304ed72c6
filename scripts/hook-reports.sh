#!/usr/bin/env bash
# Rewrites the expected install reports in tests/hooks/ from what the built
# kavelin-sim prints: every process on every system, and SpringBoard with the
# Pellum extension. Review the diff before committing it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
sim="${1:-$root/build/tools/kavelin-sim/kavelin-sim}"
for version in 8.4 9.1 9.3 10.1 10.3 11.1; do
  for process in SpringBoard Preferences Camera InCallService; do
    "$sim" hooks "$process" --device "iphone ios $version touchid" >"$root/tests/hooks/$process-$version.txt"
  done
  "$sim" hooks SpringBoard --device "iphone ios $version touchid" --extension Pellum \
    >"$root/tests/hooks/SpringBoard-$version-Pellum.txt"
done

#!/usr/bin/env bash
# Rewrites the reference pictures of the scenarios that compare the screen
# with one ('expect looks NAME': NAME.png beside the scenario file), from
# the built kavelin-sim. Run it when a change of looks is intended, then look
# at the pictures and review the diff before committing them.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
sim="$root/build/tools/kavelin-sim/kavelin-sim"
[[ -x "$sim" ]] || { echo "update-looks: build first (bash scripts/build.sh build)" >&2; exit 1; }
mapfile -t scenarios < <(grep -l '^expect looks ' "$root"/tests/scenarios/*.scn)
"$sim" run --rewrite-looks "${scenarios[@]}" >/dev/null
git -C "$root" status --short -- tests/scenarios/pictures

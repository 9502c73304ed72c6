#!/usr/bin/env bash
# Sets up this machine, builds, and runs kavelin-sim's tour of a simulated device.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/setup.sh"
bash "$root/scripts/build.sh" "$root/build"
exec "$root/build/tools/kavelin-sim/kavelin-sim" "$@"

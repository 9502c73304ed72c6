#!/usr/bin/env bash
# Configures and builds one tree: scripts/build.sh DIR [cmake options...]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
dir=$1
shift
generator=()
command -v ninja >/dev/null && generator=(-G Ninja)
if [[ ! -f "$dir/CMakeCache.txt" ]]; then
  cmake -S "$root" -B "$dir" "${generator[@]}" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    "$@" >"$dir.configure.log" 2>&1 || { cat "$dir.configure.log" >&2; exit 1; }
else
  cmake -S "$root" -B "$dir" "$@" >"$dir.configure.log" 2>&1 || { cat "$dir.configure.log" >&2; exit 1; }
fi
# The build's own status decides (a filter after it must not hide a failure);
# progress lines are left out of what is shown.
status=0
cmake --build "$dir" --parallel 2 >"$dir.build.log" 2>&1 || status=$?
grep -vE '^\[[0-9]+/[0-9]+\] ' "$dir.build.log" || true
exit "$status"

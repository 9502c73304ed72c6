#!/usr/bin/env bash
# Configures and builds one tree: scripts/build.sh DIR [cmake options...]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
dir=$1
shift
generator=()
command -v ninja >/dev/null && generator=(-G Ninja)
# A compiler cache, where the machine has one, lets several checkouts of the
# tree share their objects: paths are hashed relative to the checkout.
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1
fi
if [[ ! -f "$dir/CMakeCache.txt" ]]; then
  cmake -S "$root" -B "$dir" "${generator[@]}" "${launcher[@]}" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    "$@" >"$dir.configure.log" 2>&1 || { cat "$dir.configure.log" >&2; exit 1; }
else
  cmake -S "$root" -B "$dir" "${launcher[@]}" "$@" >"$dir.configure.log" 2>&1 || { cat "$dir.configure.log" >&2; exit 1; }
fi
# The build's own status decides (a filter after it must not hide a failure);
# progress lines are left out of what is shown.
status=0
cmake --build "$dir" --parallel 2 >"$dir.build.log" 2>&1 || status=$?
grep -vE '^\[[0-9]+/[0-9]+\] ' "$dir.build.log" || true
exit "$status"

#!/usr/bin/env bash
# Runs every libFuzzer target for SECONDS each (default 60):
#   scripts/fuzz.sh [SECONDS] [TARGET...]
# Builds the sanitizer tree with the fuzzers first when needed, keeps each
# target's growing corpus in build-sanitize/fuzz/corpus-NAME (the repository's
# seeds in fuzz/corpus/NAME are read, never written), and ends with one line
# per target: executions, coverage (cov: edges, ft: features), corpus size
# and crashes. A crash leaves its input in build-sanitize/fuzz/runs/ and
# makes the script exit 1.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
shift || true
tree="$root/build-sanitize"

# Each binary of the sanitizer tree names its own leak suppressions
# (tests/support/sanitizer_options.cpp), as under scripts/test.sh.
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:detect_odr_violation=0:fast_unwind_on_malloc=0
export LSAN_OPTIONS=print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

echo "== building the fuzzers in $(basename "$tree")"
bash "$root/scripts/build.sh" "$tree" -DKAVELIN_SANITIZE=ON -DKAVELIN_BENCH=OFF -DKAVELIN_FUZZ=ON ||
  { echo "== the build failed"; exit 1; }
list="$tree/fuzz/targets.txt"
[[ -f "$list" ]] || { echo "== no fuzz targets in $tree (is KAVELIN_FUZZ on?)"; exit 1; }

runs="$tree/fuzz/runs"
mkdir -p "$runs"
summary=()
crashed=0
while IFS='|' read -r name binary max_len options seeds; do
  [[ -n "$name" ]] || continue
  if [[ $# -gt 0 && " $* " != *" $name "* ]]; then continue; fi
  corpus="$tree/fuzz/corpus-$name"
  mkdir -p "$corpus"
  log="$runs/$name.log"
  echo "== fuzzing $name for ${seconds}s (log: $log)"
  rm -f "$runs/$name-"*
  # shellcheck disable=SC2086  # options are words
  "$binary" -max_total_time="$seconds" -max_len="$max_len" -print_final_stats=1 $options \
    -artifact_prefix="$runs/$name-" "$corpus" "$seeds" >"$log" 2>&1
  status=$?
  # libFuzzer names its artifacts NAME-crash-, -leak-, -timeout- or -oom- and a hash.
  artifacts=$(grep -oE "Test unit written to [^ ]+" "$log" | sed 's/Test unit written to //' | tr '\n' ' ')
  execs=$(grep -oE 'stat::number_of_executed_units: [0-9]+' "$log" | tail -1 | grep -oE '[0-9]+$')
  line=$(grep -E '^#[0-9]+.*cov: [0-9]+' "$log" | tail -1)
  cov=$(grep -oE 'cov: [0-9]+' <<<"$line" | grep -oE '[0-9]+')
  ft=$(grep -oE 'ft: [0-9]+' <<<"$line" | grep -oE '[0-9]+')
  units=$(find "$corpus" -type f | wc -l)
  crashes=0
  if [[ $status -ne 0 || -n "$artifacts" ]]; then
    crashes=1
    crashed=1
    grep -E 'ERROR: |runtime error|deadly signal|SUMMARY' "$log" | head -5
  fi
  summary+=("$(printf '%-13s executions %9s   cov %5s   ft %6s   corpus %5s   crashes %s %s' \
    "$name" "${execs:-?}" "${cov:-?}" "${ft:-?}" "$units" "$crashes" "$artifacts")")
done <"$list"

echo "== fuzzing, ${seconds}s per target"
printf '%s\n' "${summary[@]}"
exit "$crashed"

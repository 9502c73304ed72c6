#!/usr/bin/env bash
# Sets up this machine, then builds and runs every test twice: a plain build,
# and a build under AddressSanitizer and UndefinedBehaviorSanitizer (with the
# fuzz targets' bounded runs), after checking every C and C++ file is as
# clang-format writes it. Ends with one line: "tests: N passed, M failed".
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/setup.sh" || exit 1

# Each binary of the sanitizer tree names its own suppressions
# (tests/support/sanitizer_options.cpp): none are given here.
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:detect_odr_violation=0:fast_unwind_on_malloc=0
export LSAN_OPTIONS=print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

passed=0
failed=0
run_tree() {  # DIR [cmake options...]
  local dir=$1
  shift
  echo "== building $(basename "$dir")"
  if ! bash "$root/scripts/build.sh" "$dir" "$@"; then
    echo "== build of $(basename "$dir") failed"
    failed=$((failed + 1))
    return
  fi
  echo "== testing $(basename "$dir")"
  local log="$dir.ctest.log"
  (cd "$dir" && ctest -j2 --timeout 120 --output-on-failure) >"$log" 2>&1
  grep -E '\*\*\*|Failed|tests passed' "$log" || true
  local summary total bad
  summary=$(grep -E 'tests passed, [0-9]+ tests failed out of [0-9]+' "$log" | tail -1)
  if [[ -z "$summary" ]]; then
    echo "== ctest in $(basename "$dir") ran no test; see $log"
    failed=$((failed + 1))
    return
  fi
  bad=$(sed -E 's/.* ([0-9]+) tests failed out of ([0-9]+).*/\1/' <<<"$summary")
  total=$(sed -E 's/.* ([0-9]+) tests failed out of ([0-9]+).*/\2/' <<<"$summary")
  passed=$((passed + total - bad))
  failed=$((failed + bad))
  if [[ "$bad" -ne 0 ]]; then
    sed -n '/The following tests FAILED/,$p' "$log"
    grep -B5 -A30 -E 'Failure|ERROR: AddressSanitizer|runtime error|LeakSanitizer' "$log" | head -200
  fi
}

# The code's layout first: an unformatted file counts as one failure.
if ! bash "$root/scripts/format-check.sh"; then
  failed=$((failed + 1))
fi

run_tree "$root/build"
run_tree "$root/build-sanitize" -DKAVELIN_SANITIZE=ON -DKAVELIN_BENCH=OFF -DKAVELIN_FUZZ=ON

echo "tests: $passed passed, $failed failed"
[[ $failed -eq 0 ]]

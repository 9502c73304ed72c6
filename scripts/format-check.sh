#!/usr/bin/env bash
# Fails, naming each file, when a C or C++ file of the repository is not as
# clang-format (the root's .clang-format) would write it. Run
# `scripts/format-check.sh --fix` to rewrite them in place.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
files=$(git ls-files '*.c' '*.cpp' '*.h')
if [[ "${1:-}" == --fix ]]; then
  echo "$files" | xargs clang-format -i
  exit 0
fi
bad=0
for f in $files; do
  if ! clang-format --dry-run --Werror "$f" >/dev/null 2>&1; then
    echo "format: $f is not as clang-format writes it"
    bad=$((bad + 1))
  fi
done
if [[ $bad -gt 0 ]]; then
  echo "format: $bad file(s) to reformat (scripts/format-check.sh --fix)"
  exit 1
fi
echo "format: $(echo "$files" | wc -l) files as clang-format writes them"

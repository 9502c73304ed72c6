#!/usr/bin/env bash
# Compiles every file of the library for the device's architectures, syntax
# only: arm64 (iOS 11), armv7 (iOS 9) and the x86_64 iOS simulator. No Apple
# SDK can be had here, so the Apple frameworks come from the project's own
# declaration shim (scripts/device-shim/include) and the C and C++ library
# headers from Debian's cross packages for each architecture. Any error or
# warning fails. Ends with "device-check: N compiled, M failed".
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/setup.sh" || exit 1

resource=$(clang -print-resource-dir)/include
shim=$root/scripts/device-shim/include
# target  headers-root  triple-dir
targets=(
  "arm64-apple-ios11.0 /usr/aarch64-linux-gnu/include /usr/aarch64-linux-gnu/include/c++/12 /usr/aarch64-linux-gnu/include/c++/12/aarch64-linux-gnu"
  "armv7-apple-ios9.0 /usr/arm-linux-gnueabihf/include /usr/arm-linux-gnueabihf/include/c++/12 /usr/arm-linux-gnueabihf/include/c++/12/arm-linux-gnueabihf"
  "x86_64-apple-ios11.0-simulator /usr/include /usr/include/c++/12 /usr/include/x86_64-linux-gnu/c++/12 /usr/include/x86_64-linux-gnu"
)

mapfile -t files < <(cd "$root" && find src -name '*.cpp' | sort)
compiled=0
failed=0
for t in "${targets[@]}"; do
  read -r target libc cxx cxxarch extra <<<"$t"
  includes=(-isystem "$cxx" -isystem "$cxxarch" -isystem "$resource" -isystem "$shim" -isystem "$libc")
  [[ -n "${extra:-}" ]] && includes+=(-isystem "$extra")
  # Debian's armhf headers pick their hard-float half by this macro.
  [[ $target == armv7* ]] && includes+=(-D__ARM_PCS_VFP=1)
  for f in "${files[@]}"; do
    # glibc's headers stand in for the SDK's libc: its GNU declarations on,
    # and its __nonnull attribute kept from clashing with Apple's keyword.
    if out=$(clang++ -target "$target" -fsyntax-only -std=c++20 -fblocks -nostdinc -nostdinc++ \
      -D_GNU_SOURCE -U__nonnull '-D__nonnull(params)=' "${includes[@]}" -I"$root/src" \
      -Wall -Wextra -Werror "$root/$f" 2>&1); then
      compiled=$((compiled + 1))
    else
      failed=$((failed + 1))
      echo "== $target $f"
      echo "$out" | grep -E 'error|warning' | head -5
    fi
  done
done
echo "device-check: $compiled compiled, $failed failed"
[[ $failed -eq 0 ]]

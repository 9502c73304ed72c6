#!/usr/bin/env bash
# Installs, from Debian's packages, everything the build and the tests need.
# Idempotent: prints nothing when all is there; says what it installs otherwise,
# and stops with a clear message when a package cannot be had.
set -euo pipefail

packages=(
  clang                # the compiler (clang++ with -fblocks)
  libclang-rt-14-dev   # AddressSanitizer / UndefinedBehaviorSanitizer / libFuzzer runtimes
  cmake
  ninja-build
  libobjc-12-dev       # GCC's Objective-C runtime: headers and library
  libgnustep-base-dev  # GNUstep Base: the real Foundation of the simulated device
  libblocksruntime-dev # the blocks runtime (Block_copy, _NSConcreteStackBlock)
  libffi-dev           # closures of the simulated device's "hold" action
  libgtest-dev
  libgmock-dev
  libbenchmark-dev
  libcairo2-dev        # cairo: kavelin-sim draws the simulated screen to PNG
  libfreetype-dev      # FreeType: the text on those pictures
  fonts-inter          # the one font the pictures use, pinned so reference pictures stay stable
  libstdc++-12-dev-arm64-cross  # C and C++ headers of arm64 and armv7, for the device
  libstdc++-12-dev-armhf-cross  # compile check (scripts/device-check.sh)
  clang-format         # the code's one layout, checked by scripts/format-check.sh
)

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${db:Status-Status}' "$p" 2>/dev/null || true)
  [[ "$status" == installed ]] || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "setup: installing ${missing[*]}"
if [[ $(id -u) -ne 0 ]]; then
  echo "setup: not root; install these Debian packages first: ${missing[*]}" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
if ! apt-get update -qq >/tmp/kavelin-setup.log 2>&1; then
  echo "setup: apt-get update failed; see /tmp/kavelin-setup.log" >&2
  exit 1
fi
if ! apt-get install -y -qq --no-install-recommends "${missing[@]}" >>/tmp/kavelin-setup.log 2>&1; then
  echo "setup: could not install ${missing[*]}; see /tmp/kavelin-setup.log" >&2
  exit 1
fi
echo "setup: done"

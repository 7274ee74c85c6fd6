#!/usr/bin/env bash
# Installs the Debian packages the build and tests need, only those absent.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  zlib1g-dev                            # the one runtime dependency
  libgtest-dev libgmock-dev googletest  # tests; sources rebuild it for i386
  gcc-multilib g++-multilib lib32z1-dev # the i386 configuration
  clang libclang-rt-14-dev              # fuzzing and ThreadSanitizer
  gzip zip unzip 7zip libarchive-tools  # test archives are made by real tools
  libcli11-dev nlohmann-json3-dev       # the tuskel tool: options and JSON
  time                                  # peak memory in the tool tests
  gcc-mingw-w64-i686 gcc-mingw-w64-x86-64  # self-extractor stubs, built at test time
  doxygen                               # the API reference (docs target)
)
[ "${TUSKEL_WITH_BENCH:-0}" = 1 ] && packages+=(libbenchmark-dev)
command -v python3 >/dev/null || packages+=(python3)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  sudo_cmd=()
  [ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

#!/usr/bin/env bash
# Builds the example host (examples/host) against an installed libtuskel
# three ways: flags by hand, pkg-config and CMake's find_package. Runs each
# build on a GZIP file made here (text and incompressible bytes, so the
# deflate stream has both block kinds) and on the bundled ZIP sample,
# compares the bytes with gzip's and unzip's, and checks that the installed
# library is the one loaded. The host header must also stand alone as plain
# C++98.
#
#   check_host.sh BUILD_DIR CXX [FLAGS...]  installs BUILD_DIR into a temporary prefix first
#   check_host.sh system CXX [FLAGS...]     uses what is installed in the system (packages)
set -euo pipefail
where=$1 cxx=$2
shift 2
flags=("$@")
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
example=$source_dir/examples/host
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake_args=()
run_env=()
if [ "$where" = system ]; then
  prefix=/usr
else
  prefix=$work/prefix
  cmake --install "$where" --prefix "$prefix" >/dev/null
  export PKG_CONFIG_LIBDIR  # ours only, never the system's
  PKG_CONFIG_LIBDIR=$(dirname "$(find "$prefix" -name tuskel.pc)")
  cmake_args=(-DCMAKE_PREFIX_PATH="$prefix")
fi
libdir=$(pkg-config --variable=libdir tuskel)
[ "$where" = system ] || run_env=(LD_LIBRARY_PATH="$libdir")
library=$(readlink -f "$libdir/libtuskel.so.0")

{ seq 20000; head -c 70000 /dev/urandom; seq 3000; } >"$work/data"
gzip -c "$work/data" >"$work/data.gz"
zip=$source_dir/samples/hello.zip

fail() { echo "FAILED ($1): $2"; exit 1; }

check() { # check <how> <host binary> [env...]
  local how=$1 host=$2
  shift 2
  env "$@" "$host" -v "$work/data.gz" >"$work/out" 2>"$work/log" || fail "$how" "exit $? on data.gz: $(cat "$work/log")"
  cmp -s "$work/data" "$work/out" || fail "$how" "data.gz unpacked wrong"
  # The logger joined the three pieces of each message into one line.
  grep -qx "\[DBG\]\[EntryProcessor:26\] find entry\[data\], usize\[$(stat -c %s "$work/data")\]" "$work/log" ||
    fail "$how" "no debug line for the entry: $(cat "$work/log")"
  env "$@" "$host" "$zip" >"$work/out" 2>"$work/log" || fail "$how" "exit $? on hello.zip: $(cat "$work/log")"
  unzip -p "$zip" | cmp -s - "$work/out" || fail "$how" "hello.zip unpacked wrong"
  local status=0
  env "$@" "$host" "$work/data" >/dev/null 2>&1 || status=$?
  [ "$status" = 3 ] || fail "$how" "exit $status, not 3, on input that is no archive"
  local libs
  libs=$(env "$@" ldd "$host")  # whole, not piped: grep -q would cut ldd short
  local loaded
  loaded=$(awk '$1 == "libtuskel.so.0" { print $3 }' <<<"$libs")
  [ -n "$loaded" ] && [ "$(readlink -f "$loaded")" = "$library" ] ||
    fail "$how" "loads ${loaded:-no libtuskel.so.0}, not $library"
  echo "ok: $how"
}

echo '#include <tuskel/CommonDecompressor.h>' |
  "$cxx" "${flags[@]}" -std=c++98 -Wall -Wextra -Werror -pedantic-errors -fsyntax-only \
    -I"$prefix/include/tuskel" -x c++ - || fail c++98 "the host header is not plain C++98"

strict=(-std=c++11 -Wall -Wextra -Werror -pedantic-errors)
rpath=()
[ "$where" = system ] || rpath=(-Wl,-rpath,"$libdir")
"$cxx" "${flags[@]}" "${strict[@]}" -I"$prefix/include/tuskel" "$example/unpack.cpp" -o "$work/unpack-flags" \
  -L"$libdir" -ltuskel "${rpath[@]}"
check flags "$work/unpack-flags"

# shellcheck disable=SC2046
"$cxx" "${flags[@]}" "${strict[@]}" $(pkg-config --cflags tuskel) "$example/unpack.cpp" \
  -o "$work/unpack-pkgconfig" $(pkg-config --libs tuskel)
check pkg-config "$work/unpack-pkgconfig" "${run_env[@]}"

cmake -G Ninja -S "$example" -B "$work/cmake" "${cmake_args[@]}" -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_CXX_FLAGS="${flags[*]} ${strict[*]}" >"$work/cmake.log" || fail find_package "$(cat "$work/cmake.log")"
found=$(sed -n 's/^tuskel_DIR:PATH=//p' "$work/cmake/CMakeCache.txt")
[ "$(readlink -f "$found")" = "$(readlink -f "$libdir/cmake/tuskel")" ] || fail find_package "found $found"
cmake --build "$work/cmake" >/dev/null
check find_package "$work/cmake/unpack"

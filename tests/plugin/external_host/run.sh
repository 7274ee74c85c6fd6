#!/usr/bin/env bash
# Installs a build into a temporary prefix, then builds a small host from
# only the installed header and library three ways (flags by hand,
# pkg-config, find_package) and checks that each unpacks a gzip made here.
# The host uses the plain C++98 host doubles beside this directory.
#
#   run.sh BUILD_DIR CXX [COMPILER FLAGS...]     e.g. run.sh build/i386 g++ -m32
set -euo pipefail
build=$1 cxx=$2
shift 2
flags=("$@")
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null
pc=$(find "$prefix" -name tuskel.pc)
libdir=$(dirname "$(dirname "$pc")")

# Text and incompressible bytes, so the deflate stream has both block kinds.
{ seq 20000; head -c 70000 /dev/urandom; seq 3000; } >"$work/data"
gzip -c "$work/data" >"$work/data.gz"

check() { # check <how> <host binary> [env...]
  local how=$1 host=$2
  shift 2
  env "$@" "$host" "$work/data.gz" "$work/out.$how" || { echo "FAILED ($how): host run"; exit 1; }
  cmp "$work/data" "$work/out.$how" || { echo "FAILED ($how): output differs"; exit 1; }
  local libs
  libs=$(env "$@" ldd "$host")  # whole, not piped: grep -q would cut ldd short
  grep -qF "=> $libdir/libtuskel.so.0 " <<<"$libs" ||
    { echo "FAILED ($how): not linked against the installed library"; echo "$libs"; exit 1; }
  echo "ok: $how"
}

strict=(-Wall -Wextra -Werror -pedantic-errors)
"$cxx" "${flags[@]}" -std=c++98 "${strict[@]}" -I"$prefix/include/tuskel" "$here/host.cpp" \
  -o "$work/host-flags" -L"$libdir" -ltuskel -Wl,-rpath,"$libdir"
check flags "$work/host-flags"

export PKG_CONFIG_LIBDIR=$libdir/pkgconfig  # ours only, never the system's
# shellcheck disable=SC2046
"$cxx" "${flags[@]}" "${strict[@]}" $(pkg-config --cflags tuskel) "$here/host.cpp" \
  -o "$work/host-pkgconfig" $(pkg-config --libs tuskel)
check pkg-config "$work/host-pkgconfig" LD_LIBRARY_PATH="$libdir"

cmake -G Ninja -S "$here" -B "$work/cmake-host" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_CXX_FLAGS="${flags[*]} ${strict[*]}" >/dev/null
cmake --build "$work/cmake-host" >/dev/null
check find_package "$work/cmake-host/host"

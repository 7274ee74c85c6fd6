#!/usr/bin/env bash
# Makes the Debian packages of a build tree with cpack, checks their files,
# control fields and dependencies with dpkg-deb, installs them with dpkg,
# runs the tool and builds and runs the example host against the installed
# files, and removes the packages again (in a trap, so also when a step
# fails). Skips (77) unless root, and when a package or one of its files is
# on the machine already: the machine is left as it was found.
#
#   check_debs.sh BUILD_DIR VERSION LIBDIR CXX     e.g. ... build/native 0.1.0 lib/x86_64-linux-gnu g++
set -euo pipefail
build=$1 version=$2 libdir=/usr/$3 cxx=$4
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
packages=(libtuskel0 libtuskel-dev tuskel)
arch=$(dpkg --print-architecture)

skip() { echo "skipped: $*"; exit 77; }
fail() { echo "FAILED: $*"; exit 1; }

[ "$(id -u)" = 0 ] || skip "installing packages needs root"
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${db:Status-Status}' "$p" 2>/dev/null || true)
  [ -z "$status" ] || [ "$status" = not-installed ] || skip "$p is on this machine already ($status)"
done

work=$(mktemp -d)
installed=0
cleanup() {
  if [ "$installed" = 1 ]; then dpkg --purge "${packages[@]}" >/dev/null || echo "FAILED: dpkg --purge"; fi
  rm -rf "$work"
}
trap cleanup EXIT

cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/debs" >"$work/cpack.log" 2>&1 ||
  fail "cpack: $(cat "$work/cpack.log")"
deb() { ls "$work/debs/$1_${version}-"*"_$arch.deb"; }
field() { dpkg-deb -f "$(deb "$1")" "$2"; }
# Files and links of a package as "path" or "path -> target", directories left out.
files() { dpkg-deb -c "$(deb "$1")" | awk '$1 !~ /^d/ { sub(/^\./, "", $6); print $6 ($7 ? " " $7 " " $8 : "") }' | sort; }

# Contents, against what each package must hold and nothing else.
so=libtuskel.so.$version
expect_lib=$(printf '%s\n' "$libdir/libtuskel.so.0 -> $so" "$libdir/$so" | sort)
headers=$(cd "$source_dir" && for root in modules/common-stl/include core/tuskel/include plugin/include; do
  (cd "$root" && find . -name '*.h' | sed "s|^\./|/usr/include/tuskel/|"); done)
expect_dev=$(printf '%s\n' "$headers" "$libdir/libtuskel.so -> libtuskel.so.0" "$libdir/pkgconfig/tuskel.pc" \
  "$libdir/cmake/tuskel/tuskelConfig.cmake" "$libdir/cmake/tuskel/tuskelConfigVersion.cmake" \
  "$libdir/cmake/tuskel/tuskelTargets.cmake" "$libdir/cmake/tuskel/tuskelTargets-CONFIG.cmake" | sort)
expect_tool=$(printf '%s\n' /usr/bin/tuskel /usr/share/man/man1/tuskel.1)
diff <(echo "$expect_lib") <(files libtuskel0) || fail "libtuskel0 holds other files"
diff <(echo "$expect_dev") <(files libtuskel-dev | sed 's/tuskelTargets-[a-z]*\.cmake$/tuskelTargets-CONFIG.cmake/') ||
  fail "libtuskel-dev holds other files"
diff <(echo "$expect_tool") <(files tuskel) || fail "tuskel holds other files"

# Control fields and dependencies.
debversion=$(field libtuskel0 Version)
[[ $debversion == "$version"-* ]] || fail "version $debversion"
check_field() { # check_field <package> <field> <extended regular expression>
  local value
  value=$(field "$1" "$2")
  grep -Eq "$3" <<<"$value" || fail "$1: $2 is '$value', expected /$3/"
}
for p in "${packages[@]}"; do
  check_field "$p" Version "^${debversion//./\\.}\$"
  check_field "$p" Architecture "^$arch\$"
  check_field "$p" Maintainer '^.+ <.+@.+>$'
  check_field "$p" Description '^[a-zA-Z].{10,79}$'
done
check_field libtuskel0 Section '^libs$'
check_field libtuskel-dev Section '^libdevel$'
check_field tuskel Section '^utils$'
for needed in 'zlib1g \(>= ' 'libc6 \(>= ' 'libstdc\+\+6 \(>= '; do check_field libtuskel0 Depends "$needed"; done
exact="libtuskel0 \\(= ${debversion//./\\.}\\)"
check_field libtuskel-dev Depends "^$exact\$"
check_field tuskel Depends "^$exact, .*libstdc\+\+6 \(>= "
dpkg-deb -e "$(deb libtuskel0)" "$work/control"
[ "$(cat "$work/control/shlibs")" = "libtuskel 0 libtuskel0 (>= $debversion)" ] || fail "shlibs: $(cat "$work/control/shlibs")"
grep -qx $'\tldconfig' "$work/control/postinst" || fail "postinst runs no ldconfig"
dpkg-deb -x "$(deb libtuskel0)" "$work/root"
readelf -d "$work/root$libdir/$so" | grep -q 'Library soname: \[libtuskel.so.0\]' || fail "soname"

# Nothing of the packages may be there yet: dpkg would take such files over
# and the purge remove them.
all=$(cat <(files libtuskel0) <(files libtuskel-dev) <(files tuskel) | sed 's/ -> .*//')
while read -r f; do [ ! -e "$f" ] && [ ! -L "$f" ] || skip "$f is on this machine already"; done <<<"$all"

installed=1
dpkg -i "$(deb libtuskel0)" "$(deb libtuskel-dev)" "$(deb tuskel)" >"$work/dpkg.log" || fail "dpkg -i: $(cat "$work/dpkg.log")"
library=$(readlink -f "$libdir/libtuskel.so.0")
[ "$(readlink -f "$(pkg-config --variable=pcfiledir tuskel)")" = "$(readlink -f "$libdir/pkgconfig")" ] ||
  fail "pkg-config finds another tuskel.pc"
grep -q "libtuskel.so.0 .*=> .*libtuskel.so.0$" <<<"$(ldconfig -p)" || fail "ldconfig does not know the library"
loaded=$(ldd /usr/bin/tuskel | awk '$1 == "libtuskel.so.0" { print $3 }')
[ -n "$loaded" ] && [ "$(readlink -f "$loaded")" = "$library" ] || fail "the tool loads ${loaded:-no library}"
/usr/bin/tuskel test "$source_dir/samples/hello.zip" >/dev/null || fail "tuskel test on the sample"
"$source_dir/tests/examples/check_host.sh" system "$cxx"

dpkg --purge tuskel libtuskel-dev libtuskel0 >"$work/dpkg.log" || fail "dpkg --purge: $(cat "$work/dpkg.log")"
installed=0
while read -r f; do [ ! -e "$f" ] && [ ! -L "$f" ] || fail "$f left behind"; done <<<"$all"
! grep -q libtuskel <<<"$(ldconfig -p)" || fail "ldconfig still lists the library"
echo "ok: packages built, checked, installed, used and removed"

#!/usr/bin/env bash
# Builds the benchmarks (optimised, native) and runs them, or only those
# named: scripts/bench.sh [program ...] [-- benchmark flags]
set -euo pipefail
cd "$(dirname "$0")/.."
TUSKEL_WITH_BENCH=1 scripts/deps.sh
dir=build/bench
cmake -G Ninja -S . -B "$dir" -DCMAKE_BUILD_TYPE=Release -DTUSKEL_BUILD_BENCH=ON -DTUSKEL_BUILD_TESTS=OFF >/dev/null
cmake --build "$dir" -j "$(nproc)"
programs=() flags=()
while [ $# -gt 0 ]; do
  if [ "$1" = -- ]; then shift; flags=("$@"); break; fi
  programs+=("$1"); shift
done
if [ ${#programs[@]} -eq 0 ]; then
  mapfile -t programs < <(find "$dir/bench" -maxdepth 1 -type f -executable -printf '%f\n' | sort)
fi
for p in "${programs[@]}"; do
  echo "=== $p ==="
  "$dir/bench/$p" "${flags[@]}"
done

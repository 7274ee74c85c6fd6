#!/usr/bin/env bash
# Line coverage of the parsers by the committed corpus, with clang's
# source-based coverage: every harness runs once over its corpus (and the
# seeds fuzz/run.sh makes), and llvm-cov reports the files that read input.
#
#   fuzz/coverage.sh [builddir]      (default build/coverage)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
dir=${1:-$root/build/coverage}
flags="-fprofile-instr-generate -fcoverage-mapping"
cmake -G Ninja -S . -B "$dir" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" -DTUSKEL_SANITIZE=fuzzer-no-link \
  -DTUSKEL_FUZZ_SANITIZERS=fuzzer -DTUSKEL_BUILD_FUZZ=ON -DTUSKEL_BUILD_TESTS=OFF -DTUSKEL_BUILD_TOOLS=OFF >/dev/null
cmake --build "$dir" >/dev/null
# The seeds, as the CI runs make them.
LLVM_PROFILE_FILE=/dev/null fuzz/run.sh "$dir" 1 >/dev/null 2>&1 || true
profiles=$dir/profiles
rm -rf "$profiles"; mkdir -p "$profiles"
objects=()
for fuzzer in $(find "$dir/fuzz" -maxdepth 1 -type f -executable -name '*_fuzzer' | sort); do
  name=$(basename "$fuzzer")
  inputs=("$dir/fuzz-work/seeds")
  [ -d "$dir/fuzz-work/seeds-$name" ] && inputs=("$dir/fuzz-work/seeds-$name")
  [ -d "fuzz/corpus/$name" ] && inputs+=("fuzz/corpus/$name")
  LLVM_PROFILE_FILE="$profiles/$name.profraw" "$fuzzer" -runs=0 "${inputs[@]}" >/dev/null 2>&1
  objects+=(-object "$fuzzer")
done
llvm-profdata merge -sparse "$profiles"/*.profraw -o "$profiles/all.profdata"
parsers=(core/tuskel/src/unarchiver/{GzipInfo,GzipUnarchiver,ZipInfo,ZipCentralDir,ZipEndCentralDir,ZipEntryInfo,ZipUnarchiver,ZipExe,ZipExeUnarchiver,DeflateDecompressor}.cpp
         core/tuskel/src/filetype/{FileTypeIdent,FileTypeSignatures}.cpp)
llvm-cov report "${objects[@]:1}" -instr-profile="$profiles/all.profdata" "${parsers[@]/#/$root/}"
echo "annotated sources: llvm-cov show ${objects[*]:1} -instr-profile=$profiles/all.profdata -format=html -output-dir=$dir/html"

#!/usr/bin/env bash
# Seeds for zipexe_fuzzer: the self-extractors the tests make (PE stubs from
# the MinGW cross compilers when they are installed, crafted DOS and NE
# images always), each with a small archive made by zip.
#
#   zipexe_fuzzer.sh <outdir> <archive-seed-dir>
set -euo pipefail
out=$(cd "$1" && pwd)
make_exes=$(cd "$(dirname "$0")/../../tests/core/tuskel/unarchiver" && pwd)/make_exes.py
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$work" && python3 "$make_exes" --small)
cp "$work"/*.exe "$out"/

#!/usr/bin/env bash
# The library's main job in one command: installs what is missing, builds
# the tuskel tool and unpacks the bundled samples (samples/hello.txt.gz and
# samples/hello.zip, made by samples/make-samples.sh) to standard output,
# with the library's log on standard error.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
dir=build/demo
cmake -G Ninja -S . -B "$dir" -DCMAKE_BUILD_TYPE=Release -DTUSKEL_BUILD_TESTS=OFF >/dev/null
cmake --build "$dir" --target tuskel_tool -j "$(nproc)" >/dev/null
echo "\$ tuskel decompress -v samples/hello.txt.gz" >&2
"$dir/tools/tuskel" decompress -v samples/hello.txt.gz
echo "\$ tuskel decompress -v samples/hello.zip" >&2
"$dir/tools/tuskel" decompress -v samples/hello.zip

#!/usr/bin/env bash
# The main job in one command: installs what is missing, builds the tuskel
# tool and shows it at work on the bundled samples (made by
# samples/make-samples.sh): a listing with file types, a CRC check, the
# scanner's walk into the archives inside nested.zip, the bytes of an entry,
# and the host-interface path with the library's log.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
dir=build/demo
cmake -G Ninja -S . -B "$dir" -DCMAKE_BUILD_TYPE=Release -DTUSKEL_BUILD_TESTS=OFF >/dev/null
cmake --build "$dir" --target tuskel_tool -j "$(nproc)" >/dev/null
tuskel=$dir/tools/tuskel
show() { echo "\$ tuskel $*" >&2; "$tuskel" "$@"; }
show list samples/hello.zip
show test samples/hello.zip
show scan samples/nested.zip
show cat samples/hello.zip docs/notes.txt
show decompress -v samples/hello.txt.gz >/dev/null  # entries to stdout; log and result to stderr

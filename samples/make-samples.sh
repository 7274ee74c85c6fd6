#!/usr/bin/env bash
# Rebuilds the bundled samples. The gzip member is written by Python's gzip
# module with a fixed name and time stamp, so the bytes do not change from
# run to run.
set -euo pipefail
cd "$(dirname "$0")"
python3 - <<'PY'
import gzip

lines = ["tuskel sample, line %d: the quick brown fox jumps over the lazy dog\n" % i for i in range(1, 201)]
text = "".join(lines).encode("ascii")
with open("hello.txt.gz", "wb") as raw:
    with gzip.GzipFile(filename="hello.txt", mode="wb", fileobj=raw, mtime=0, compresslevel=9) as gz:
        gz.write(text)
PY

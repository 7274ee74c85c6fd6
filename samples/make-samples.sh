#!/usr/bin/env bash
# Rebuilds the bundled samples. The gzip member is written by Python's gzip
# module with a fixed name and time stamp; the ZIP archive by Info-ZIP's zip
# from files with a fixed time stamp, without extra fields (-X) and in UTC,
# so the bytes do not change from run to run. nested.zip holds both, for the
# scanner's walk into archives inside archives.
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
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree/docs"
gzip -dc hello.txt.gz > "$tree/hello.txt"
printf 'A second entry: ZIP archives hold many.\n' > "$tree/docs/notes.txt"
: > "$tree/docs/empty.txt"
find "$tree" -exec touch -d '2020-01-01 00:00:00 UTC' {} +
rm -f hello.zip
(cd "$tree" && TZ=UTC zip -q -X -9 "$OLDPWD/hello.zip" hello.txt docs docs/notes.txt docs/empty.txt)
cp hello.txt.gz hello.zip "$tree/"
printf 'Archives inside this one are opened by tuskel scan.\n' > "$tree/readme.txt"
touch -d '2020-01-01 00:00:00 UTC' "$tree/hello.txt.gz" "$tree/hello.zip" "$tree/readme.txt"
rm -f nested.zip
(cd "$tree" && TZ=UTC zip -q -X -9 "$OLDPWD/nested.zip" readme.txt hello.zip hello.txt.gz)

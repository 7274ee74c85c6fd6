#!/usr/bin/env bash
# Seeds for filetype_fuzzer: a signature of each kind under a matching, an
# unknown and no name, some with content types; and the archive seeds under
# their own names. Each input is: name length, content type length, name,
# content type, content.
#
#   filetype_fuzzer.sh <outdir> <archive-seed-dir>
set -euo pipefail
python3 - "$1" "$2" <<'PY'
import os, sys
out, archives = sys.argv[1], sys.argv[2]
def seed(tag, name, ctype, content):
    with open(os.path.join(out, tag), "wb") as f:
        f.write(bytes([len(name), len(ctype)]) + name + ctype + content)
samples = {
    "html": b"<!DOCTYPE   html><html><body>x</body></html>", "text": b"plain words\r\n" * 20,
    "gif": b"GIF89a\0\1\2", "png": b"\x89PNG\r\n\x1a\n\0", "wav": b"RIFF\0\0\0\0WAVEfmt ",
    "avi": b"RIFF\x12\xaf\0\0AVI LIST", "mpg": b"\0\0\1\xb3\x11\xaf\0", "mov": b"\0\0\0\x20moov\0\0",
    "pdf": b"%PDF-1.4\n", "doc": b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1", "zip": b"PK\3\4\x14\0",
    "tar": b"name".ljust(257, b"\0") + b"ustar\x0000", "cab": b"MSCF\0\0\0\0\1",
    "zoo": b"ZOO 2.10 Archive.\x1a\0\0\xdc\xa7\xc4\xfd\0", "szdd": b"SZDD\x88\xf0\x27\x33A",
}
hints = [(b"", b""), (b"x.bin", b""), (b"", b"application"), (b"", b"video/flc"), (b"", b"audid")]
for kind, content in samples.items():
    seed(kind, b"file." + kind.encode(), b"", content)
    for i, (name, ctype) in enumerate(hints):
        seed("%s-%d" % (kind, i), name, ctype, content)
for archive in sorted(os.listdir(archives)):
    data = open(os.path.join(archives, archive), "rb").read()[:4096]
    seed("archive-" + archive, archive.encode(), b"application/octet-stream", data)
PY

#!/usr/bin/env python3
"""Makes GZIP files in the current directory, and gzips.list naming them.

By gzip: named.gz (the original name kept), plain.gz (-n, no name),
empty.gz (an empty file) and big.gz (-9, 100 kB of text and noise). By
Python's gzip module: python.gz. Written field by field with zlib's raw
deflate, so that every optional header field appears: fields.gz (extra
field, name, comment and header CRC) and stored.gz (method 0, which only
this reader accepts).
"""
import gzip
import os
import random
import struct
import zlib

text = b"".join(b"line %d of a GZIP member\n" % i for i in range(120))
noise = random.Random(11).randbytes(50000)
for name, data in (("text", text), ("empty", b""), ("big", text * 20 + noise)):
    with open(name, "wb") as f:
        f.write(data)
assert os.system("gzip -c text >named.gz && gzip -n -c text >plain.gz && gzip -c empty >empty.gz"
                 " && gzip -9 -n -c big >big.gz") == 0
with open("python.gz", "wb") as f:
    with gzip.GzipFile(filename="python.txt", mode="wb", fileobj=f, mtime=1) as g:
        g.write(text)


def member(method, flags, body, data, extra=b"", name=b"", comment=b""):
    header = struct.pack("<HBBIBB", 0x8B1F, method, flags, 7, 0, 3)
    if flags & 4:
        header += struct.pack("<H", len(extra)) + extra
    if flags & 8:
        header += name + b"\0"
    if flags & 16:
        header += comment + b"\0"
    if flags & 2:
        header += struct.pack("<H", zlib.crc32(header) & 0xFFFF)
    return header + body + struct.pack("<II", zlib.crc32(data), len(data))


deflate = zlib.compressobj(6, zlib.DEFLATED, -15)
with open("fields.gz", "wb") as f:
    f.write(member(8, 2 | 4 | 8 | 16, deflate.compress(text) + deflate.flush(), text, b"XY\4\0abcd", b"f.txt", b"hi"))
with open("stored.gz", "wb") as f:
    f.write(member(0, 8, text[:700], text[:700], name=b"stored.txt"))
for name in ("text", "empty", "big"):
    os.remove(name)
with open("gzips.list", "w") as f:
    print("named.gz plain.gz empty.gz big.gz python.gz fields.gz stored.gz", file=f)

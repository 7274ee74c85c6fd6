#!/usr/bin/env python3
"""Makes the archives the ZIP tests read, in the current directory.

By Info-ZIP's zip, from a small tree with a directory, an empty file and an
incompressible one: zip.zip (deflated), zip0.zip (stored) and pipe.zip
(written to a pipe, so every entry carries a data descriptor); pipe-small.zip
the same without random.bin.

By Python's zipfile: good.zip and planted.zip (entries a.txt to d.txt, c
stored; good's b has a date, an extra field and a comment, planted's b hides
central records in its data), long.zip (names of 511 and 512 bytes) and
empties.zip (five empty files).

<archive>.list holds zipfile's view of each, one entry a line: name, CRC,
compressed size, size, DOS date and time, local header offset, flags, method,
and where the entry's data starts (behind the local header's name and extra
field).
"""
import glob
import os
import random
import struct
import zipfile

os.makedirs("root/sub")
os.makedirs("root/emptydir")
for name, data in (("hello.txt", b"hello, world\n"), ("empty.txt", b""), ("sub/text.txt", b"a" * 100000),
                   ("random.bin", random.Random(7).randbytes(70000))):
    with open("root/" + name, "wb") as f:
        f.write(data)
for top, dirs, files in os.walk("root"):  # fixed times: the same bytes on every run
    for name in dirs + files:
        os.utime(os.path.join(top, name), (1600000000, 1600000000))
assert os.system("cd root && zip -qr ../zip.zip . && zip -qr0 ../zip0.zip . && zip -qr - . | cat >../pipe.zip"
                 " && zip -qr - hello.txt empty.txt emptydir sub | cat >../pipe-small.zip") == 0

text = b"".join(b"line %d of a python entry\n" % i for i in range(3000))
b = zipfile.ZipInfo("b.txt", (2001, 2, 3, 4, 5, 6))
b.extra, b.comment, b.compress_type = b"\x99\x99\x04\x00abcd", b"entry comment", zipfile.ZIP_DEFLATED
# planted's b, stored: 160 bytes no reader takes for a record, then three
# central records whose local header offset is 0.
record = struct.pack("<IHHHHIIIIHHHHHII", 0x02014B50, *[0] * 8, 1, *[0] * 6) + b"x"
for name, b, data in (("good.zip", b, text[:2000]), ("planted.zip", zipfile.ZipInfo("b.txt"), bytes(160) + 3 * record)):
    with zipfile.ZipFile(name, "w", zipfile.ZIP_DEFLATED) as z:
        z.writestr("a.txt", text[:3000])
        z.writestr(b, data)
        z.writestr("c.txt", text[:1000], zipfile.ZIP_STORED)
        z.writestr("d.txt", text)
with zipfile.ZipFile("long.zip", "w") as z:
    z.writestr("n" * 511, b"x")
    z.writestr("n" * 512, b"y")
with zipfile.ZipFile("empties.zip", "w") as z:
    for i in range(5):
        z.writestr("f%d" % i, b"")


def dos(d):
    return (d[0] - 1980) << 25 | d[1] << 21 | d[2] << 16 | d[3] << 11 | d[4] << 5 | d[5] // 2


for archive in glob.glob("*.zip"):
    raw = open(archive, "rb").read()
    with open(archive + ".list", "w") as f:
        for i in zipfile.ZipFile(archive).infolist():
            name_length, extra_length = struct.unpack("<HH", raw[i.header_offset + 26:i.header_offset + 30])
            data = i.header_offset + 30 + name_length + extra_length
            print(i.filename, i.CRC, i.compress_size, i.file_size, dos(i.date_time), i.header_offset, i.flag_bits,
                  i.compress_type, data, file=f)

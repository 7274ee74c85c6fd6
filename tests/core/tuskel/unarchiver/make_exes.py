#!/usr/bin/env python3
"""Makes self-extracting executables in the current directory, each an
image with archive.zip (made by zip) appended and its offsets adjusted by
`zip -A`, and exes.list: a line per file with where its archive begins as
the detection must report it, -1 where it must not recognise the file.

PE stubs, by the MinGW cross compilers (left out with a note when they are
missing; the tests insist on them): the marker block in a "_winzip" or
"winzip" section, at .data + 0x740 or + 0x860 (behind a decoy block naming a
wrong position), elsewhere in .data, nowhere (pe-plain), and a 64-bit stub
with a "_winzip" section, which is not recognised. DOS and NE images,
crafted byte by byte: the archive right after a DOS image (or text there),
and the marker block in the last NE segment at + 0x6A4 (resource table where
the resident names are), at + 0xD0, and elsewhere.

With --small the archive holds only small files (for fuzzing seeds).
"""
import os
import random
import shutil
import struct
import subprocess
import sys

SIGNATURE = b"NMC\x01sfx\x02"
PLACEHOLDER = SIGNATURE + bytes(4) + b"\xef\xbe\xad\xde"
STUB = r"""
#ifdef SECTION
__attribute__((section(SECTION), used))
#endif
unsigned char marker[16] = {'N', 'M', 'C', 1, 's', 'f', 'x', 2, 0, 0, 0, 0, 0xEF, 0xBE, 0xAD, 0xDE};
unsigned char pad[9000] = {1};  /* .data reaches well past 0x870 */
int main(void) { return pad[0] + marker[0]; }
"""


def marker(pos):
    return SIGNATURE + bytes(4) + struct.pack("<I", pos)


def make_archive(small):
    os.makedirs("tree/sub", exist_ok=True)
    os.makedirs("tree/emptydir", exist_ok=True)
    files = {"hello.txt": b"hello from inside an executable\n", "empty.txt": b"",
             "sub/text.txt": b"".join(b"line %d\n" % i for i in range(100 if small else 20000)),
             "sub/random.bin": random.Random(3).randbytes(100 if small else 70000)}
    for name, data in files.items():
        with open("tree/" + name, "wb") as f:
            f.write(data)
    for top, dirs, names in os.walk("tree"):  # fixed times: the same bytes on every run
        for name in dirs + names:
            os.utime(os.path.join(top, name), (1600000000, 1600000000))
    subprocess.run("cd tree && zip -qr ../archive.zip .", shell=True, check=True)
    return open("archive.zip", "rb").read()


def data_section(image):
    """File offset of the .data section's raw data."""
    header = struct.unpack_from("<I", image, 0x3C)[0]
    count, optional = struct.unpack_from("<H", image, header + 6)[0], struct.unpack_from("<H", image, header + 20)[0]
    rows = (header + 24 + optional + 40 * i for i in range(count))
    return next(struct.unpack_from("<I", image, row + 20)[0] for row in rows if image[row:row + 6] == b".data\0")


def pe(compiler, section, place=None, pos=True):
    """A stub whose marker block names its end, moved to .data + place; pos=False blanks it."""
    with open("stub.c", "w") as f:
        f.write(STUB)
    subprocess.run([compiler, "-O1", "-s", "-o", "stub.exe", "stub.c"] + (['-DSECTION="%s"' % section] * bool(section)),
                   check=True)
    image = bytearray(open("stub.exe", "rb").read())
    at, data = image.find(PLACEHOLDER), data_section(image)
    if not pos:
        image[at:at + 16] = bytes(16)
    elif place is None:
        assert section or at - data not in (0x740, 0x860)  # a scan finds it
        image[at:at + 16] = marker(len(image))
    else:
        image[data + 0x100:data + 0x110] = marker(1)  # the decoy, which a scan would find first
        image[data + place:data + place + 16] = marker(len(image))
    return image


def make_pe():
    gcc32, gcc64 = "i686-w64-mingw32-gcc", "x86_64-w64-mingw32-gcc"
    if not shutil.which(gcc32) or not shutil.which(gcc64):
        print("PE stubs not built: the MinGW cross compilers are missing", file=sys.stderr)
        return []
    stubs = [("pe-_winzip.exe", pe(gcc32, "_winzip"), True), ("pe-winzip.exe", pe(gcc32, "winzip"), True),
             ("pe-datascan.exe", pe(gcc32, None), True), ("pe-data740.exe", pe(gcc32, None, 0x740), True),
             ("pe-data860.exe", pe(gcc32, None, 0x860), True), ("pe-plain.exe", pe(gcc32, None, pos=False), False),
             ("pe64-_winzip.exe", pe(gcc64, "_winzip"), False)]
    os.remove("stub.c")
    os.remove("stub.exe")
    return [(name, image, len(image) if found else -1) for name, image, found in stubs]


def dos():
    image = bytearray(1000)
    image[0:2] = b"ZM"
    struct.pack_into("<HH", image, 2, len(image) % 512, (len(image) + 511) // 512)  # last page bytes, pages
    struct.pack_into("<H", image, 0x18, 0x1C)  # relocation table: not 0x40, a plain DOS executable
    return image


def ne(place, same_tables):
    """NE header at 0x80, two segments; the last, 0x800 bytes at 0x200, holds the marker."""
    image = bytearray(0xA00)
    image[0:2] = b"MZ"
    struct.pack_into("<H", image, 0x18, 0x40)  # a new-style executable
    struct.pack_into("<I", image, 0x3C, 0x80)  # its header
    image[0x80:0x82] = b"NE"
    struct.pack_into("<H", image, 0x80 + 0x1C, 2)  # segments
    struct.pack_into("<H", image, 0x80 + 0x22, 0x40)  # segment table, from the NE header
    struct.pack_into("<HH", image, 0x80 + 0x24, 0x50, 0x50 if same_tables else 0x60)  # resources, resident names
    struct.pack_into("<H", image, 0x80 + 0x32, 4)  # alignment shift: 16-byte sectors
    struct.pack_into("<HH", image, 0x80 + 0x40, 0x10, 0x100)  # segment entries: sector, length
    struct.pack_into("<HH", image, 0x80 + 0x48, 0x20, 0x800)
    image[0x200 + place:0x200 + place + 16] = marker(len(image))
    return image


archive = make_archive("--small" in sys.argv[1:])
exes = make_pe() + [("dos.exe", dos(), 1000), ("ne-6a4.exe", ne(0x6A4, True), 0xA00),
                    ("ne-d0.exe", ne(0xD0, False), 0xA00), ("ne-scan.exe", ne(0x333, False), 0xA00)]
for name, image, pos in exes:
    with open(name, "wb") as f:
        f.write(image + archive)
    subprocess.run(["zip", "-qA", name], check=True)
with open("dos-text.exe", "wb") as f:
    f.write(dos() + b"Plain text follows the image.\n")
with open("exes.list", "w") as f:
    for name, pos in [(name, pos) for name, _, pos in exes] + [("dos-text.exe", -1)]:
        print(name, pos, file=f)

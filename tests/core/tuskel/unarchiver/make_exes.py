#!/usr/bin/env python3
"""Makes self-extracting executables in the current directory: each is an
executable image with archive.zip (made by zip) appended and the archive's
offsets adjusted by `zip -A`.

Built by the MinGW cross compilers (left out, with a note on stderr, when a
compiler is missing; the tests insist on them):
  pe-_winzip.exe, pe-winzip.exe   the marker block in a section of that name
  pe-data740.exe, pe-data860.exe  the marker block written at .data + 0x740 /
                                  + 0x860; decoy blocks naming wrong
                                  positions lie before it in .data
  pe-datascan.exe                 the marker block elsewhere in .data
  pe-plain.exe                    no marker block
  pe64-_winzip.exe                64-bit, the marker block in "_winzip"
Crafted byte by byte (no toolchain makes them):
  dos.exe                         archive right after a "ZM" DOS image
  dos-text.exe                    text right after the DOS image
  ne-6a4.exe, ne-d0.exe           marker at the last segment + 0x6A4 (the
                                  resource table where the resident names
                                  are) / + 0xD0
  ne-scan.exe                     marker elsewhere in the last segment

exes.list: a line per file, its name and where its archive begins as the
detection must report it; -1 where it must not recognise the file.

With --small the archive holds only small files (for fuzzing seeds).
"""
import os
import random
import shutil
import struct
import subprocess
import sys

SIGNATURE = b"NMC\x01sfx\x02"
PLACEHOLDER = b"\xef\xbe\xad\xde"

STUB = r"""
#ifdef SECTION
__attribute__((section(SECTION), used))
#endif
unsigned char marker[16] = {'N', 'M', 'C', 1, 's', 'f', 'x', 2, 0, 0, 0, 0, 0xEF, 0xBE, 0xAD, 0xDE};
unsigned char pad[9000] = {1};  /* .data reaches well past 0x870 */
int main(void) { return pad[0] + MARKER_BYTE; }
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
    subprocess.run("cd tree && zip -qr ../archive.zip .", shell=True, check=True)
    return open("archive.zip", "rb").read()


def append_archive(name, image, archive):
    with open(name, "wb") as f:
        f.write(image + archive)
    subprocess.run(["zip", "-qA", name], check=True)


def data_section(image):
    """File offset of the .data section's raw data."""
    header = struct.unpack_from("<I", image, 0x3C)[0]
    count, optional = struct.unpack_from("<H", image, header + 6)[0], struct.unpack_from("<H", image, header + 20)[0]
    for i in range(count):
        row = header + 24 + optional + 40 * i
        if image[row:row + 8].rstrip(b"\0") == b".data":
            return struct.unpack_from("<I", image, row + 20)[0]
    raise SystemExit("no .data section")


def pe_stub(compiler, section, with_marker=True):
    with open("stub.c", "w") as f:
        f.write(STUB)
    args = [compiler, "-O1", "-s", "-o", "stub.exe", "stub.c", "-DMARKER_BYTE=" + ("marker[0]" if with_marker else "0")]
    if section:
        args.append('-DSECTION="%s"' % section)
    subprocess.run(args, check=True)
    image = bytearray(open("stub.exe", "rb").read())
    if not with_marker:
        at = image.find(SIGNATURE)
        image[at:at + 16] = bytes(16)
    return image


def make_pe(archive, listing):
    compilers = {bits: "%s-w64-mingw32-gcc" % arch for bits, arch in ((32, "i686"), (64, "x86_64"))}
    missing = [c for c in compilers.values() if shutil.which(c) is None]
    if missing:
        print("not built, missing: " + " ".join(missing), file=sys.stderr)
        return
    for name, bits, section in (("pe-_winzip.exe", 32, "_winzip"), ("pe-winzip.exe", 32, "winzip"),
                                ("pe-datascan.exe", 32, None), ("pe64-_winzip.exe", 64, "_winzip")):
        image = pe_stub(compilers[bits], section)
        at = image.find(SIGNATURE + bytes(4) + PLACEHOLDER)
        image[at:at + 16] = marker(len(image))
        assert section or at - data_section(image) not in (0x740, 0x860)
        append_archive(name, bytes(image), archive)
        listing.append((name, len(image) if bits == 32 else -1))
    for name, place in (("pe-data740.exe", 0x740), ("pe-data860.exe", 0x860)):
        image = pe_stub(compilers[32], None)
        data = data_section(image)
        image[data + 0x100:data + 0x110] = marker(1)  # the decoy, which a scan would find first
        image[data + place:data + place + 16] = marker(len(image))
        append_archive(name, bytes(image), archive)
        listing.append((name, len(image)))
    append_archive("pe-plain.exe", bytes(pe_stub(compilers[32], None, False)), archive)
    listing.append(("pe-plain.exe", -1))
    os.remove("stub.c")
    os.remove("stub.exe")


def make_dos(archive, listing):
    image = bytearray(1000)
    image[0:2] = b"ZM"
    struct.pack_into("<HH", image, 2, len(image) % 512, (len(image) + 511) // 512)  # last page bytes, pages
    struct.pack_into("<H", image, 0x18, 0x1C)  # relocation table: not 0x40, a plain DOS executable
    append_archive("dos.exe", bytes(image), archive)
    listing.append(("dos.exe", len(image)))
    with open("dos-text.exe", "wb") as f:
        f.write(bytes(image) + b"Plain text follows the image.\n")
    listing.append(("dos-text.exe", -1))


def make_ne(archive, listing):
    """DOS header, NE header at 0x80, two segments; the last one, at 0x200
    and 0x800 bytes long, holds the marker."""
    for name, place, same_tables in (("ne-6a4.exe", 0x6A4, True), ("ne-d0.exe", 0xD0, False),
                                     ("ne-scan.exe", 0x333, False)):
        image = bytearray(0xA00)
        image[0:2] = b"MZ"
        struct.pack_into("<H", image, 0x18, 0x40)  # a new-style executable
        struct.pack_into("<I", image, 0x3C, 0x80)  # its header
        image[0x80:0x82] = b"NE"
        struct.pack_into("<H", image, 0x80 + 0x1C, 2)  # segments
        struct.pack_into("<H", image, 0x80 + 0x22, 0x40)  # segment table, from the NE header
        struct.pack_into("<HH", image, 0x80 + 0x24, 0x50, 0x50 if same_tables else 0x60)  # resources, resident names
        struct.pack_into("<H", image, 0x80 + 0x32, 4)  # alignment shift: 16-byte sectors
        struct.pack_into("<HH", image, 0x80 + 0x40, 0x10, 0x100)  # segment 1: sector, length
        struct.pack_into("<HH", image, 0x80 + 0x48, 0x20, 0x800)  # segment 2
        image[0x200 + place:0x200 + place + 16] = marker(len(image))
        append_archive(name, bytes(image), archive)
        listing.append((name, len(image)))


def main():
    archive = make_archive("--small" in sys.argv[1:])
    listing = []
    make_pe(archive, listing)
    make_dos(archive, listing)
    make_ne(archive, listing)
    with open("exes.list", "w") as f:
        for name, pos in listing:
            print(name, pos, file=f)


main()

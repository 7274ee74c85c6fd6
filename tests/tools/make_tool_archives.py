#!/usr/bin/env python3
"""Makes the archives the tool tests read, in the current directory.

From one tree (text, an empty file, an incompressible file, a UTF-8 name, an
empty directory, modes and times set): the same archive by Info-ZIP's zip
(deflated, stored, and to a pipe, with data descriptors), by Python's
zipfile (deflated, stored), by 7zz and by bsdtar; tree.txt.gz by gzip.

nested.zip holds inner.gz, the gzip of inner.zip, which holds hello.txt.

Crafted by hand, with zipfile:
  hostile.zip   names that reach out of the directory: "../", absolute,
                a link out and a file through it, a link inside and a file
                through it, a duplicate name; links out through a NUL, a
                chain of links, and a target too long; a file through a
                link whose name holds ESC
  badcrc.zip    a stored entry whose data no longer matches its CRC-32
  broken.zip    three entries, the second's local header signature broken
  names.zip     a CP437 name from an MS-DOS archive, and a control character
  encrypted.zip a plain entry and an encrypted one (zip -P)
  overlap.zip   three directory records of one entry
  desc.zip      stored, written to a pipe (data descriptors), its first
                entry a ZIP of its own
  encbomb.zip   an entry flagged encrypted, then 4 MiB of zeros deflated
                and followed by an invalid block, reached only if not cut
"""
import gzip
import io
import os
import random
import shutil
import stat
import struct
import subprocess
import warnings
import zipfile
import zlib

STAMP = 1622550896  # 2021-06-01 12:34:56 UTC, even seconds


def run(command):
    subprocess.run(command, shell=True, check=True)


def make_tree():
    os.makedirs("tree/sub/deeper")
    os.makedirs("tree/emptydir")
    files = {
        "hello.txt": b"hello, world\n",
        "empty.txt": b"",
        "sub/text.txt": b"".join(b"line %d of the text file\n" % i for i in range(5000)),
        "sub/deeper/random.bin": random.Random(7).randbytes(70000),
        "caf\u00e9.txt": b"a name in UTF-8\n",
        "run.sh": b"#!/bin/sh\necho run\n",
    }
    for name, data in files.items():
        with open("tree/" + name, "wb") as f:
            f.write(data)
    os.chmod("tree/run.sh", 0o750)
    os.chmod("tree/hello.txt", 0o640)
    for root, dirs, names in os.walk("tree"):
        for name in names + dirs:
            os.utime(os.path.join(root, name), (STAMP, STAMP))


def make_archives():
    run("cd tree && zip -qrX ../zip.zip . && zip -qrX0 ../zip0.zip . && zip -qrX - . | cat >../pipe.zip")
    run("cd tree && 7zz a -tzip -bso0 -bsp0 ../7z.zip . && bsdtar --format zip -cf ../bsdtar.zip .")
    for name, method in (("python.zip", zipfile.ZIP_DEFLATED), ("python0.zip", zipfile.ZIP_STORED)):
        with zipfile.ZipFile(name, "w", method) as z:
            for root, dirs, names in sorted(os.walk("tree")):
                for n in sorted(dirs + names):
                    path = os.path.join(root, n)
                    z.write(path, os.path.relpath(path, "tree"))
    shutil.copy("tree/sub/text.txt", "tree.txt")
    run("gzip -k tree.txt")


def make_nested():
    with zipfile.ZipFile("inner.zip", "w", zipfile.ZIP_DEFLATED) as z:
        z.writestr("hello.txt", b"hello from the inside\n")
    with open("inner.zip", "rb") as f, gzip.GzipFile("inner.gz", "wb", mtime=STAMP) as g:
        g.write(f.read())
    with zipfile.ZipFile("nested.zip", "w", zipfile.ZIP_DEFLATED) as z:
        z.write("inner.gz")
        z.writestr("readme.txt", b"not an archive\n")


def unix_entry(name, mode, kind=stat.S_IFREG):
    info = zipfile.ZipInfo(name, (2021, 6, 1, 12, 34, 56))
    info.create_system = 3
    info.external_attr = (kind | mode) << 16
    return info


def make_hostile():
    with zipfile.ZipFile("hostile.zip", "w") as z:
        z.writestr("ok.txt", b"fine\n")
        z.writestr("../evil.txt", b"up and out\n")
        z.writestr(unix_entry("/" + os.getcwd().lstrip("/") + "/outside/abs.txt", 0o644), b"absolute\n")
        z.writestr(unix_entry("out", 0o777, stat.S_IFLNK), b"../outside")
        z.writestr("out/escaped.txt", b"through a link out\n")
        z.writestr(unix_entry("in", 0o777, stat.S_IFLNK), b"sub")
        for name, target in (("nul", b"..\0"), ("a/b/up", b".."), ("a/b/x", b"up/../../.."), ("long", b"x/" * 2100),
                             ("esc\x1b", b"sub")):
            z.writestr(unix_entry(name, 0o777, stat.S_IFLNK), target)
        z.writestr("esc\x1b/f.txt", b"through a link with a control character\n")
        z.writestr("sub/kept.txt", b"in sub\n")
        z.writestr("in/through.txt", b"through a link inside\n")
        z.writestr("pre/through.txt", b"through a link already there\n")
        z.writestr("dup.txt", b"first\n")
        z.writestr("dup.txt", b"second\n")


def patch_name(archive, placeholder, raw):
    data = open(archive, "rb").read().replace(placeholder, raw)
    open(archive, "wb").write(data)


class Pipe:
    """A file that cannot seek or tell, as a pipe."""

    def __init__(self, f):
        self.write, self.flush = f.write, f.flush


def make_broken():
    with zipfile.ZipFile("badcrc.zip", "w", zipfile.ZIP_STORED) as z:
        z.writestr("good.txt", b"good data\n")
        z.writestr("bad.txt", b"BAD DATA HERE\n")
    patch_name("badcrc.zip", b"BAD DATA HERE", b"bad data here")
    with zipfile.ZipFile("broken.zip", "w", zipfile.ZIP_DEFLATED) as z:
        for name in ("first.txt", "second.txt", "third.txt"):
            z.writestr(name, (name + "\n") * 100)
    data = bytearray(open("broken.zip", "rb").read())
    second = zipfile.ZipFile("broken.zip").getinfo("second.txt").header_offset
    data[second:second + 4] = b"XXXX"
    open("broken.zip", "wb").write(bytes(data))
    with zipfile.ZipFile("names.zip", "w") as z:
        dos = zipfile.ZipInfo("cafX.txt")
        dos.create_system = 0
        z.writestr(dos, b"cp437\n")
        z.writestr("bellY.txt", b"control\n")
    patch_name("names.zip", b"cafX.txt", b"caf\x82.txt")
    patch_name("names.zip", b"bellY.txt", b"bell\x07.txt")
    run("cd tree && zip -qX ../encrypted.zip hello.txt && zip -qX -P secret ../encrypted.zip run.sh")
    inner = io.BytesIO()
    with zipfile.ZipFile(inner, "w") as z:
        z.writestr("phantom.txt", b"inside the inner ZIP only\n")
    with open("desc.zip", "wb") as f, zipfile.ZipFile(Pipe(f), "w") as z:
        z.writestr("inner.zip", inner.getvalue())
        z.writestr("real.txt", b"real\n")
    co = zlib.compressobj(9, zlib.DEFLATED, -15)
    bomb = co.compress(bytes(4 << 20)) + co.flush(zlib.Z_SYNC_FLUSH)
    raw_zip("encbomb.zip", [(b"a.txt", 0, 1, b"hello", 5), (b"bomb.bin", 8, 0, bomb + b"\xff\xff", 4 << 20)])
    raw_zip("overlap.zip", [(b"zeros", 8, 0, bomb + b"\x03\x00", 4 << 20)], [b"a", b"b", b"c"])


def raw_zip(archive, entries, listed=None):
    """Writes (name, method, flags, data, size) entries, CRC-32 0, each
    listed at its offset; with `listed`, records of those names all list
    the first entry instead."""
    body, headers = b"", []
    for name, method, flags, data, size in entries:
        headers.append((name, method, flags, data, size, len(body)))
        body += struct.pack("<IHHHHHIIIHH", 0x04034B50, 20, flags, method, 0, 0x21, 0, len(data), size,
                            len(name), 0) + name + data
    if listed is not None:
        headers = [(name,) + headers[0][1:] for name in listed]
    directory = b""
    for name, method, flags, data, size, offset in headers:
        directory += struct.pack("<IHHHHHHIIIHHHHHII", 0x02014B50, 20, 20, flags, method, 0, 0x21, 0, len(data),
                                 size, len(name), 0, 0, 0, 0, 0, offset) + name
    end = struct.pack("<IHHHHIIH", 0x06054B50, 0, 0, len(headers), len(headers), len(directory), len(body), 0)
    open(archive, "wb").write(body + directory + end)


warnings.simplefilter("ignore")  # the duplicate name is the point
os.umask(0o022)
make_tree()
make_archives()
make_nested()
make_hostile()
make_broken()

#!/usr/bin/env bash
# Runs every libFuzzer harness of a build for the given number of seconds,
# as many side by side as there are cores, starting from seeds made here by
# real tools (gzip, zip, Python) plus a few crafted headers. A harness whose
# seeds differ from the archive seeds has a script fuzz/seeds/<harness>.sh,
# called with the directory to fill and the archive seed directory; a
# committed corpus under fuzz/corpus/<harness>/ is read as well. Fails when
# any harness finds a crash, leak or timeout; the input that triggered it is
# kept under <builddir>/fuzz-findings.
#
#   fuzz/run.sh <builddir> <seconds>
set -euo pipefail
[ $# -eq 2 ] || { echo "usage: $0 <builddir> <seconds>" >&2; exit 2; }
dir=$(cd "$1" && pwd) seconds=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$dir/fuzz-work findings=$dir/fuzz-findings
rm -rf "$work" "$findings"
mkdir -p "$work/seeds" "$findings"

python3 - "$work" <<'PY'
import gzip, struct, sys, zlib
work = sys.argv[1]
seeds = work + '/seeds/'
text = b''.join(b'line %d of a GZIP seed, ' % i for i in range(200))
noise = bytes((i * 2654435761 >> 13) & 0xFF for i in range(40000))
open(work + '/text', 'wb').write(text)
open(work + '/noise', 'wb').write(noise)
with open(seeds + 'python.gz', 'wb') as f:
    with gzip.GzipFile(filename='seed.txt', mode='wb', fileobj=f, mtime=1) as g:
        g.write(text)
def member(method, flags, body, data, extra=b'', name=b'', comment=b''):
    h = struct.pack('<HBBIBB', 0x8B1F, method, flags, 7, 0, 3)
    if flags & 4: h += struct.pack('<H', len(extra)) + extra
    if flags & 8: h += name + b'\0'
    if flags & 16: h += comment + b'\0'
    if flags & 2: h += struct.pack('<H', zlib.crc32(h) & 0xFFFF)
    return h + body + struct.pack('<II', zlib.crc32(data), len(data))
def raw(data):
    c = zlib.compressobj(6, zlib.DEFLATED, -15)
    return c.compress(data) + c.flush()
full = member(8, 2 | 4 | 8 | 16, raw(text), text, b'XY\2\0ab', b'name', b'comment')
open(seeds + 'all-fields.gz', 'wb').write(full)
open(seeds + 'stored.gz', 'wb').write(member(0, 8, text, text, name=b'stored'))
open(seeds + 'reserved-flag.gz', 'wb').write(member(8, 0x20, raw(text), text))
open(seeds + 'truncated.gz', 'wb').write(full[:len(full) // 2])
open(seeds + 'two-members.gz', 'wb').write(member(8, 0, raw(b'a'), b'a') + member(8, 0, raw(b'b'), b'b'))
PY
gzip -c "$work/text" > "$work/seeds/named.gz"
gzip -n -c "$work/text" > "$work/seeds/plain.gz"
gzip -n -9 -c "$work/noise" > "$work/seeds/noise.gz"

# ZIP seeds, made the way the ZIP tests make theirs: Info-ZIP deflated,
# stored, written to a pipe (data descriptors), with an encrypted entry;
# Python to an unseekable stream, and with an entry that cannot be unpacked.
tree=$work/tree
mkdir -p "$tree/sub/deeper" "$tree/emptydir"
cp "$work/text" "$tree/text.txt"
head -c 3000 "$work/noise" > "$tree/sub/noise.bin"
: > "$tree/empty.txt"
printf x > "$tree/sub/deeper/x"
(cd "$tree" && zip -q -r "$work/seeds/zip.zip" . && zip -q -r -0 "$work/seeds/stored.zip" . &&
  zip -q -r - . | cat > "$work/seeds/pipe.zip" &&
  zip -q "$work/seeds/encrypted.zip" text.txt && zip -q -P pw "$work/seeds/encrypted.zip" sub/noise.bin &&
  zip -q "$work/seeds/encrypted.zip" sub/deeper/x)
python3 - "$work" <<'PY'
import io, sys, zipfile
work = sys.argv[1]
seeds = work + '/seeds/'
text = open(work + '/text', 'rb').read()
class Unseekable(io.RawIOBase):
    def __init__(self): self.data = bytearray()
    def writable(self): return True
    def write(self, b): self.data += b; return len(b)
for name, mode in (('stream-deflated.zip', zipfile.ZIP_DEFLATED), ('stream-stored.zip', zipfile.ZIP_STORED)):
    out = Unseekable()
    with zipfile.ZipFile(out, 'w', mode) as z:
        z.writestr('a.txt', text)
        z.writestr('b.txt', b'b')
    open(seeds + name, 'wb').write(out.data)
with zipfile.ZipFile(seeds + 'bzip2-between.zip', 'w', zipfile.ZIP_DEFLATED) as z:
    z.writestr('a.txt', text[:2000])
    z.writestr('b.txt', text[:2000], zipfile.ZIP_BZIP2)
    z.writestr('c.txt', text[:500], zipfile.ZIP_STORED)
    z.writestr('d.txt', text)
    z.comment = b'archive comment'
PY

# One harness: its own working corpus first (new units go there), then its
# seeds and any committed corpus.
run_one() { # run_one <fuzzer>
  local fuzzer=$1 name seeds corpus=()
  name=$(basename "$fuzzer")
  seeds=$work/seeds
  if [ -x "$here/seeds/$name.sh" ]; then
    seeds=$work/seeds-$name
    mkdir -p "$seeds"
    "$here/seeds/$name.sh" "$seeds" "$work/seeds" >"$work/$name.seeds.log" 2>&1 ||
      { echo "--- $name: seed script failed"; cat "$work/$name.seeds.log"; return 1; }
  fi
  [ -d "$here/corpus/$name" ] && corpus=("$here/corpus/$name")
  mkdir -p "$work/$name"
  if ! "$fuzzer" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -print_final_stats=1 \
      -artifact_prefix="$findings/$name-" "$work/$name" "$seeds" "${corpus[@]}" 2>"$work/$name.log"; then
    echo "--- $name: FAILED"; tail -60 "$work/$name.log"
    return 1
  fi
  echo "--- $name: ${seconds} s, $(grep -E '^stat::number_of_executed_units' "$work/$name.log" | awk '{print $2}') runs, $(grep -E '^stat::new_units_added' "$work/$name.log" | awk '{print $2}') new units"
}
export -f run_one
export work findings seconds here

status=0
find "$dir/fuzz" -maxdepth 1 -type f -executable -name '*_fuzzer' | sort |
  xargs -r -P "$(nproc)" -I{} bash -c 'run_one "$1"' _ {} || status=1
if compgen -G "$findings/*" >/dev/null; then
  echo "findings:"; ls -l "$findings"; status=1
fi
exit $status

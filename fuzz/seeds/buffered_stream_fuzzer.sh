#!/usr/bin/env bash
# Seeds for buffered_stream_fuzzer: small buffers over short pieces of text
# with every kind of line end, and scripts that mark, read past the mark's
# limit, reset, skip and read lines.
#   buffered_stream_fuzzer.sh <outdir> <archive-seed-dir>
set -euo pipefail
python3 - "$1" <<'PY'
import struct, sys
out = sys.argv[1]
READ, BLOCK, SKIP, MARK, RESET, LINE, AVAILABLE = range(7)
text = b'first\r\nsecond\nthird\rfourth\r\r\n\nfifth \x00 with a NUL\n' + b'long ' * 30 + b'\r\nlast'
scripts = {
    'lines': [(LINE, 0)] * 12,
    'mark-and-lines': [(MARK, 40), (LINE, 0), (LINE, 0), (RESET, 0), (LINE, 0), (AVAILABLE, 0)] * 3,
    'past-the-limit': [(MARK, 10)] + [(READ, 0)] * 11 + [(RESET, 0), (MARK, 10), (BLOCK, 10), (RESET, 0)],
    'skips': [(READ, 0), (SKIP, 20), (MARK, 200), (SKIP, 100), (RESET, 0), (BLOCK, 50), (SKIP, 255), (READ, 0)],
}
for name, script in scripts.items():
    for size, piece in ((8, 3), (1, 1), (5, 255)):
        ops = b''.join(bytes(op) for op in script)
        data = struct.pack('<BBH', size - 1, piece - 1 if piece < 255 else 255, len(text)) + text + ops
        open('%s/%s-%d-%d' % (out, name, size, piece), 'wb').write(data)
PY

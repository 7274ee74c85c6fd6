#!/usr/bin/env bash
# Seeds for buffer_store_fuzzer: one script per store (the first byte picks
# it), each 1500 bytes of a fixed generator, so that every store is driven
# from the first run. Usage: buffer_store_fuzzer.sh <outdir> <archive-seed-dir>
set -euo pipefail
python3 - "$1" <<'PY'
import random, sys
for store in range(8):
    rng = random.Random(store)
    with open('%s/store-%d' % (sys.argv[1], store), 'wb') as f:
        f.write(bytes([store]) + bytes(rng.randrange(256) for _ in range(1500)))
PY

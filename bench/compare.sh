#!/usr/bin/env bash
# Times tuskel beside its peers on archives this script makes, and draws the
# result. Every run regenerates docs/bench.svg (throughput relative to the
# fastest peer of each task), docs/bench.md (the table, with the date,
# machine and versions) and the README's block between the bench markers.
#
#   bench/compare.sh [WORKDIR]      archives are kept in WORKDIR (default
#                                   /tmp/tuskel-compare) and reused
#
# Tasks: one large entry (1 GiB of text), 20,000 small files deflated and
# the same tree stored, unpacked to /dev/null (cat), tested (CRC), and
# extracted into a fresh directory on the same file system; the large file
# as one .gz. Peers: unzip, bsdtar, 7zz, Python's zipfile/gzip, gzip, pigz.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
work=${1:-/tmp/tuskel-compare}
runs=${TUSKEL_BENCH_RUNS:-5}

need=(hyperfine unzip zip libarchive-tools 7zip pigz gzip gnuplot-nox python3 time)
missing=()
for p in "${need[@]}"; do dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'ok installed' || missing+=("$p"); done
if [ ${#missing[@]} -gt 0 ]; then
  sudo_cmd=(); [ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
TUSKEL_WITH_BENCH=1 scripts/deps.sh

cmake -G Ninja -S . -B build/compare -DCMAKE_BUILD_TYPE=Release -DTUSKEL_BUILD_TESTS=OFF -DTUSKEL_BUILD_BENCH=ON >/dev/null
cmake --build build/compare --target tuskel_tool zip_floor >/dev/null
tuskel=$root/build/compare/tools/tuskel
floor=$root/build/compare/bench/zip_floor  # plain zlib: what no zlib-based tool can beat

mkdir -p "$work"
cd "$work"
if [ ! -f ready ]; then
  echo "making archives in $work" >&2
  python3 - <<'PY'
import os, random
rng = random.Random(42)
words = [''.join(rng.choice('abcdefghijklmnopqrstuvwxyz') for _ in range(rng.randint(2, 9))) for _ in range(5000)]
def text(n):
    out, size = [], 0
    while size < n:
        line = ' '.join(rng.choice(words) for _ in range(rng.randint(4, 14))) + '\n'
        out.append(line); size += len(line)
    return ''.join(out)[:n].encode()
block = text(1 << 22)
with open('large.txt', 'wb') as f:
    for i in range(256):  # 1 GiB, each 4 MiB block shuffled differently
        f.write(block[i * 4096:] + block[:i * 4096])
for d in range(100):
    os.makedirs('tree/d%02d' % d, exist_ok=True)
    for i in range(200):
        with open('tree/d%02d/f%03d.txt' % (d, i), 'wb') as f:
            f.write(text(rng.randint(512, 4096)))
PY
  zip -q -1 large.zip large.txt
  (cd tree && zip -q -r ../small.zip . && zip -q -r -0 ../stored.zip .)
  pigz -6 -k -c large.txt > large.gz
  touch ready
fi
entries=$(unzip -Z1 small.zip | grep -vc '/$')
large_bytes=$(stat -c %s large.txt)
small_bytes=$(unzip -l small.zip | tail -1 | awk '{print $1}')

results=$work/results
rm -rf "$results"; mkdir -p "$results"
py_cat='import sys, zipfile; z = zipfile.ZipFile(sys.argv[1]); o = open("/dev/null", "wb"); [o.write(z.read(i)) for i in z.infolist() if not i.is_dir()]'
py_test='import sys, zipfile; sys.exit(zipfile.ZipFile(sys.argv[1]).testzip() is not None)'
py_extract='import sys, zipfile; zipfile.ZipFile(sys.argv[1]).extractall(sys.argv[2])'
py_gunzip='import gzip, shutil, sys; shutil.copyfileobj(gzip.open(sys.argv[1]), open("/dev/null", "wb"), 1 << 20)'

# bench <task> <name=command>...: one hyperfine run of all tools on a task.
bench() {
  local task=$1; shift
  local args=()
  for pair in "$@"; do args+=(-n "${pair%%=*}" "${pair#*=}"); done
  hyperfine -N --style basic --warmup 1 --runs "$runs" --export-json "$results/$task.json" \
    ${prepare:+--prepare "$prepare"} "${args[@]}" >&2
}

for archive in large small stored; do
  bench "cat-$archive" \
    "tuskel=$tuskel cat $archive.zip" \
    "zlib floor=$floor --write --crc --readahead $archive.zip" \
    "unzip=unzip -p $archive.zip" \
    "bsdtar=bsdtar -xOf $archive.zip" \
    "7zz=7zz x -so $archive.zip" \
    "python=python3 -c '$py_cat' $archive.zip"
done
for archive in large small; do
  bench "test-$archive" \
    "tuskel=$tuskel -q test $archive.zip" \
    "zlib floor=$floor --crc --readahead $archive.zip" \
    "unzip=unzip -tq $archive.zip" \
    "7zz=7zz t -bso0 $archive.zip" \
    "python=python3 -c '$py_test' $archive.zip"
done
prepare="rm -rf $work/out"
bench extract-small \
  "tuskel=$tuskel -q extract small.zip -d $work/out" \
  "unzip=unzip -q small.zip -d $work/out" \
  "bsdtar=sh -c 'mkdir -p $work/out && bsdtar -xf small.zip -C $work/out'" \
  "7zz=7zz x -bso0 -o$work/out small.zip" \
  "python=python3 -c '$py_extract' small.zip $work/out"
bench extract-large \
  "tuskel=$tuskel -q extract large.zip -d $work/out" \
  "unzip=unzip -q large.zip -d $work/out"
unset prepare
bench gunzip \
  "tuskel=$tuskel cat large.gz" \
  "gzip=gzip -dc large.gz" \
  "pigz=pigz -dc large.gz" \
  "python=python3 -c '$py_gunzip' large.gz"

# Peak resident memory of extracting the 1 GiB entry.
rss() { rm -rf "$work/out"; /usr/bin/time -f %M "$@" >/dev/null 2>"$results/rss"; tail -1 "$results/rss"; }
rss_tuskel=$(rss "$tuskel" -q extract large.zip -d "$work/out")
rss_unzip=$(rss unzip -q large.zip -d "$work/out")
rm -rf "$work/out"

python3 - "$results" "$root/docs" "$entries" "$large_bytes" "$small_bytes" "$rss_tuskel" "$rss_unzip" <<'PY'
import glob, json, os, platform, subprocess, sys, time
results, docs, entries, large, small, rss_t, rss_u = sys.argv[1:]
entries, large, small = int(entries), int(large), int(small)
os.makedirs(docs, exist_ok=True)
def version(cmd):
    try: return subprocess.run(cmd, shell=True, capture_output=True, text=True).stdout.strip().splitlines()[0]
    except Exception: return '?'
work = {'cat-large': (large, 'MB/s'), 'cat-small': (entries, 'entries/s'), 'cat-stored': (entries, 'entries/s'),
        'test-large': (large, 'MB/s'), 'test-small': (entries, 'entries/s'),
        'extract-small': (entries, 'entries/s'), 'extract-large': (large, 'MB/s'), 'gunzip': (large, 'MB/s')}
order = ['cat-large', 'cat-small', 'cat-stored', 'test-large', 'test-small', 'extract-large', 'extract-small', 'gunzip']
tools = ['tuskel', 'zlib floor', 'unzip', 'bsdtar', '7zz', 'python', 'gzip', 'pigz']
table, rel = [], {}
for task in order:
    data = json.load(open(os.path.join(results, task + '.json')))['results']
    amount, unit = work[task]
    rates = {}
    for r in data:
        rate = amount / r['median']
        rates[r['command']] = rate / 1e6 if unit == 'MB/s' else rate
    shown = {k: v for k, v in rates.items() if k != 'zlib floor'}
    fastest_peer = max(v for k, v in shown.items() if k != 'tuskel')
    rel[task] = {k: v / fastest_peer for k, v in shown.items()}
    row = [task, unit] + ['%.1f' % rates[t] if t in rates else '' for t in tools]
    row.append('%.2f' % (rates['tuskel'] / rates['unzip']) if 'unzip' in rates else '')
    row.append('%.2f' % (rates['zlib floor'] / rates['unzip']) if 'zlib floor' in rates and 'unzip' in rates else '')
    table.append(row)
machine = '%s, %d cores, %s' % (platform.processor() or platform.machine(), os.cpu_count(), platform.platform())
versions = '; '.join([version('unzip -v | head -1'), version('bsdtar --version'), version('7zz | sed -n 2p'),
                      'Python ' + platform.python_version(), version('gzip --version'), version('pigz --version 2>&1')])
with open(os.path.join(docs, 'bench.md'), 'w') as f:
    f.write('Measured %s on %s with hyperfine (median of the runs).\n\n' % (time.strftime('%Y-%m-%d'), machine))
    f.write('Versions: %s.\n\n' % versions)
    f.write('| task | unit | ' + ' | '.join(tools) + ' | tuskel/unzip | floor/unzip |\n')
    f.write('|---|---|' + '---|' * (len(tools) + 2) + '\n')
    for row in table: f.write('| ' + ' | '.join(row) + ' |\n')
    f.write('\n"zlib floor" is plain zlib inflating every entry and checking its CRC-32 with zlib\'s crc32, '
            'its compressed bytes copied in the 33,792-byte blocks the library\'s inflate driver reads '
            'and its output taken in the driver\'s 51,200-byte blocks: '
            'what the library\'s design costs at the least.\n')
    f.write('\nPeak memory extracting the 1 GiB entry: tuskel %s KiB, unzip %s KiB.\n' % (rss_t, rss_u))
chart = [t for t in tools if t != 'zlib floor']
with open(os.path.join(results, 'chart.dat'), 'w') as f:
    f.write('task ' + ' '.join(chart) + '\n')
    for task in order: f.write(task + ' ' + ' '.join('%.3f' % rel[task].get(t, 0) for t in chart) + '\n')
summary = open(os.path.join(docs, 'bench.md')).read()
print(summary)
# The README shows the chart with the measurement's date, machine and versions.
readme = os.path.join(os.path.dirname(docs), 'README.md')
text = open(readme).read()
begin, end = '<!-- bench: written by bench/compare.sh -->', '<!-- /bench -->'
if begin in text and end in text:
    head, rest = text.split(begin, 1)
    block = '\n![Throughput relative to the fastest peer](docs/bench.svg)\n\n' + summary.split('\n\n| task')[0] + \
            ' The table: [docs/bench.md](docs/bench.md).\n'
    open(readme, 'w').write(head + begin + block + end + rest.split(end, 1)[1])
PY
gnuplot <<GP
set terminal svg size 900,420 font "sans,11" background rgb "white"
set output "$root/docs/bench.svg"
set title "Throughput relative to the fastest peer of each task ($(date +%Y-%m-%d), $(nproc) cores)"
set style data histograms
set style histogram clustered gap 1
set style fill solid 0.9 border -1
set yrange [0:*]
set ylabel "throughput / fastest peer's"
set key outside right top
set xtics rotate by -30
plot for [i=2:8] "$results/chart.dat" using i:xtic(1) title columnheader(i)
GP
echo "wrote $root/docs/bench.svg and $root/docs/bench.md" >&2

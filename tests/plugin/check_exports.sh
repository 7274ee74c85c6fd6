#!/usr/bin/env bash
# Checks what libtuskel.so exports: everything hosts need, and nothing by
# accident. Every dynamic symbol must belong to the library's namespace or
# to one of the host-facing classes at global scope (their members,
# typeinfo and vtables); the logger's globals, zlib and the standard
# library's template instantiations must stay inside.
#
#   check_exports.sh path/to/libtuskel.so
set -euo pipefail
lib=$1
symbols=$(nm -D --defined-only "$lib" | awk 'NF >= 3 { $1 = ""; $2 = ""; sub(/^  /, ""); print }' | c++filt)

global='(CommonDecompressor|CommonBufferBase|EntryProcessor|DefaultCallBack|GzipEntryInfo|Utils)'
allowed="^((typeinfo name for|typeinfo for|vtable for|VTT for|construction vtable for|virtual thunk to|non-virtual thunk to) )?(QRN_SPACE::|$global(::|\$))"
stray=$(grep -Ev "$allowed" <<<"$symbols" || true)
if [ -n "$stray" ]; then
  echo "FAILED: exported by accident:"
  echo "$stray"
  exit 1
fi

required=(
  'CommonDecompressor::decompress(CommonBuffer*, CommonEntryProcessor*)'
  'CommonDecompressor::setLogger(int, void (*)(char const*))'
  'CommonDecompressor::setOptions(int, void*)'
  'vtable for CommonBufferBase'
  'vtable for EntryProcessor'
  'Utils::errMsg(char const*, ...)'
  'typeinfo for QRN_SPACE::Exception'
  'QRN_SPACE::FileInputStream::FileInputStream(char const*)'
  'QRN_SPACE::FileOutputStream::FileOutputStream(char const*, int)'
  'vtable for QRN_SPACE::BufferedInputStream'
  'QRN_SPACE::BufferedInputStream::fillBuffer()'
  'vtable for QRN_SPACE::BufferedOutputStream'
  'QRN_SPACE::StringOutputStream::StringOutputStream(int)'
  'QRN_SPACE::check_zipexe(QRN_SPACE::InputStream&, long&)'
  'vtable for QRN_SPACE::ZipExeUnarchiver'
  'vtable for QRN_SPACE::FileTypeProcessor'
  'typeinfo for QRN_SPACE::FileTypeProcessor::CallBack'
  'vtable for DefaultCallBack'
  'QRN_SPACE::FileTypeProcessor::call_back'
  'QRN_SPACE::FileTypeProcessor::mutex'
  'QRN_SPACE::FileTypeIdent::checkFileType(char const*)'
  'QRN_SPACE::FileTypeIdent::priorMatch(unsigned char const*, int, int, int)'
  'vtable for QRN_SPACE::FileBufferBase'
  'QRN_SPACE::SmartBufferBase::_barrier'
  'QRN_SPACE::SmartBufferBase::SmartBufferBase(long, QRN_SPACE::BufferBasePolicy)'
  'vtable for QRN_SPACE::LimitedBufferBase'
  'QRN_SPACE::PipeBufferBase::getProducerOutputStream()'
  'vtable for QRN_SPACE::PipeProducerOutputStream'
)
for name in "${required[@]}"; do
  grep -qxF "$name" <<<"$symbols" || { echo "FAILED: not exported: $name"; exit 1; }
done

# zlib is a shared dependency, not linked in.
dynamic=$(readelf -d "$lib")
if ! grep -q 'NEEDED.*libz\.so' <<<"$dynamic"; then
  echo "FAILED: libz.so is not a dynamic dependency"
  exit 1
fi
echo "ok: $(wc -l <<<"$symbols") exported symbols, all intended"

#include "io/FilterInputStream.h"
#include "io/FilterOutputStream.h"

namespace QRN_SPACE {

FilterInputStream::~FilterInputStream() = default;

int FilterInputStream::available() { return _in.available(); }

// Only the filter is closed; the owner of the wrapped stream closes that.
void FilterInputStream::close() { _closed = true; }

int FilterInputStream::read() { return _in.read(); }

int FilterInputStream::read(char* buf, int len) { return _in.read(buf, len); }

long FilterInputStream::skip(long n) { return _in.skip(n); }

FilterOutputStream::~FilterOutputStream() { _closed = true; }

void FilterOutputStream::close() { _closed = true; }

void FilterOutputStream::flush() { _out.flush(); }

void FilterOutputStream::write(char c) { _out.write(c); }

int FilterOutputStream::write(const char* buf, int len) { return _out.write(buf, len); }

}  // namespace QRN_SPACE

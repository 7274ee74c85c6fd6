#ifndef TUSKEL_UTILS_IOUTILS_H
#define TUSKEL_UTILS_IOUTILS_H

#include <string>

#include "io/InputStream.h"
#include "io/OutputStream.h"

namespace QRN_SPACE {

/// Little-endian integers to and from streams and memory, and whole-stream
/// copies.
///
/// The stream readers throw IOException "unexpected EOF" at the end;
/// everything else reports short reads only through its counts. Besides
/// that, every operation throws what its streams throw. Stateless: any
/// thread, each on its own streams. Streams and memory are the caller's.
/// @ingroup streams
class TUSKEL_API IOUtils {
public:
    /// @name Readers and writers over streams
    /// @{

    /// One byte, 0..255.
    /// @throws IOException "unexpected EOF" at the end.
    static int readUChar(InputStream& in);
    /// Two bytes, low first, 0..65535.
    /// @throws IOException "unexpected EOF" at the end.
    static int readUShort(InputStream& in);
    /// Four bytes, low first: the 32 bits carried in an int.
    /// @throws IOException "unexpected EOF" at the end.
    static int readUInt(InputStream& in);
    /// The low 8 bits of `value`.
    static void writeUChar(OutputStream& out, int value);
    /// The low 16 bits of `value`, low byte first.
    static void writeUShort(OutputStream& out, unsigned int value);
    /// The low 32 bits of `value`, low byte first.
    static void writeUInt(OutputStream& out, long value);
    /// @}

    /// @name Readers and writers over memory
    /// Inline: the record readers decode every header field through these.
    /// The caller guarantees the bytes are there.
    /// @{

    /// The byte at `p`, 0..255.
    static int readUChar(const char* p) { return static_cast<unsigned char>(p[0]); }
    /// The 16-bit value at `p`, low byte first.
    static int readUShort(const char* p) { return readUChar(p) | (readUChar(p + 1) << 8); }
    /// The 32-bit value at `p`, low byte first.
    static unsigned int readUInt(const char* p) {
        return static_cast<unsigned int>(readUShort(p)) | (static_cast<unsigned int>(readUShort(p + 2)) << 16);
    }
    /// The low 8 bits of `value` at `p`.
    static void writeUChar(char* p, int value);
    /// The low 16 bits of `value` at `p`, low byte first.
    static void writeUShort(char* p, unsigned int value);
    /// The low 32 bits of `value` at `p`, low byte first.
    static void writeUInt(char* p, long value);
    /// @}

    /// @name Values at an offset from the current position
    /// The position is restored (the stream must support mark and reset).
    /// The short skip is not checked.
    /// @{

    /// The byte `offset` bytes on.
    /// @throws IOException with strerror(errno), whatever errno then holds
    ///   (intended), when no byte arrives.
    static int getUChar(InputStream& in, unsigned int offset);
    /// The 16-bit value `offset` bytes on.
    /// @throws IOException "unexpected EOF", the position then not restored.
    static int getUShort(InputStream& in, unsigned int offset);
    /// The 32-bit value `offset` bytes on.
    /// @throws IOException "unexpected EOF", the position then not restored.
    static int getUInt(InputStream& in, unsigned int offset);
    /// @}

    /// Copies to the end in 1 KiB reads; answers the last read result (0 at
    /// a normal end).
    static int readAndWrite(InputStream& in, OutputStream& out);
    /// Copies at most `n` bytes, stopping quietly at the end of the input.
    static void readAndWrite(InputStream& in, OutputStream& out, long n);
    /// Reads until `len` bytes are in `buf` or a read answers below 1;
    /// answers the count.
    static int readFull(InputStream& in, char* buf, int len);
    /// Reads and discards to the end; answers the count consumed.
    static long readFull(InputStream& in);
    /// As readFull(InputStream&).
    static long skip(InputStream& in);
    /// Bytes up to a zero byte (consumed, not stored) or the end.
    static std::string readString(InputStream& in);
};

}  // namespace QRN_SPACE

#endif

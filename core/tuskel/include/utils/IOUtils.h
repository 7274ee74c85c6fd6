#ifndef TUSKEL_UTILS_IOUTILS_H
#define TUSKEL_UTILS_IOUTILS_H

#include <string>

#include "io/InputStream.h"
#include "io/OutputStream.h"

namespace QRN_SPACE {

// Little-endian integers to and from streams and memory, and whole-stream
// copies. The stream readers throw IOException "unexpected EOF" at the end;
// everything else reports short reads only through its counts.
class TUSKEL_API IOUtils {
public:
    static int readUChar(InputStream& in);
    static int readUShort(InputStream& in);
    // The 32 bits carried in an int.
    static int readUInt(InputStream& in);
    static void writeUChar(OutputStream& out, int value);
    static void writeUShort(OutputStream& out, unsigned int value);
    static void writeUInt(OutputStream& out, long value);

    // Inline: the record readers decode every header field through these.
    static int readUChar(const char* p) { return static_cast<unsigned char>(p[0]); }
    static int readUShort(const char* p) { return readUChar(p) | (readUChar(p + 1) << 8); }
    static unsigned int readUInt(const char* p) {
        return static_cast<unsigned int>(readUShort(p)) | (static_cast<unsigned int>(readUShort(p + 2)) << 16);
    }
    static void writeUChar(char* p, int value);
    static void writeUShort(char* p, unsigned int value);
    static void writeUInt(char* p, long value);

    // Values at an offset from the current position, which is restored
    // (the stream must support mark and reset). The short skip is not
    // checked. getUChar throws strerror(errno) when no byte arrives;
    // getUShort/getUInt throw "unexpected EOF" and then do not reset.
    static int getUChar(InputStream& in, unsigned int offset);
    static int getUShort(InputStream& in, unsigned int offset);
    static int getUInt(InputStream& in, unsigned int offset);

    // Copies to the end; answers the last read result (0 at a normal end).
    static int readAndWrite(InputStream& in, OutputStream& out);
    // Copies at most n bytes, stopping quietly at the end of the input.
    static void readAndWrite(InputStream& in, OutputStream& out, long n);
    // Reads until len bytes are in or a read answers below 1.
    static int readFull(InputStream& in, char* buf, int len);
    // Both read and discard to the end and answer the count consumed.
    static long readFull(InputStream& in);
    static long skip(InputStream& in);
    // Bytes up to a zero byte (consumed, not stored) or the end.
    static std::string readString(InputStream& in);
};

}  // namespace QRN_SPACE

#endif

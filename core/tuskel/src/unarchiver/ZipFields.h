#ifndef TUSKEL_SRC_UNARCHIVER_ZIPFIELDS_H
#define TUSKEL_SRC_UNARCHIVER_ZIPFIELDS_H

// Shared by the ZIP record readers; not part of the library's interface.

#include <memory>
#include <new>

#include "io/InputStream.h"
#include "utils/IOUtils.h"

namespace QRN_SPACE {
namespace zipfields {

// The variable part of most records fits here; longer ones go to the heap.
const int kStackBlock = 1024;

// Reads `length` bytes of variable-length fields (names, extra fields,
// comments) into dst and answers how many arrived in one block read. When
// `complete` bytes have not arrived, the rest of those is read byte by byte,
// so the end of the stream surfaces as "unexpected EOF" from the I/O
// utilities, exactly as a byte-wise read would report it.
inline int read(InputStream& in, char* dst, int length, int complete) {
    int got = length > 0 ? IOUtils::readFull(in, dst, length) : 0;
    if (got >= complete) return got;
    for (int i = got; i < complete; ++i) dst[i] = static_cast<char>(IOUtils::readUChar(in));
    return complete + IOUtils::readFull(in, dst + complete, length - complete);
}

// A scratch block for `length` bytes: the stack one, or one on the heap.
class Block {
public:
    explicit Block(int length) {
        if (length > kStackBlock) _heap.reset(new char[static_cast<size_t>(length)]);
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    char* get() { return _heap ? _heap.get() : _stack; }

private:
    char _stack[kStackBlock];
    std::unique_ptr<char[]> _heap;
};

}  // namespace zipfields
}  // namespace QRN_SPACE

#endif

#ifndef TUSKEL_SRC_UNARCHIVER_ZIPFIELDS_H
#define TUSKEL_SRC_UNARCHIVER_ZIPFIELDS_H

// Shared by the ZIP record readers; not part of the library's interface.

#include <algorithm>
#include <string>

#include "io/InputStream.h"
#include "utils/IOUtils.h"

namespace QRN_SPACE {
namespace zipfields {

// The variable part of most records fits here, on the stack.
const int kStackBlock = 1024;

// Reads the variable-length fields of a record (names, extra fields,
// comments). Their lengths are the header's claims: beyond the stack block
// the bytes go to a heap block that grows, doubling, only as they arrive,
// so a claim of 192 KiB on a short input costs what is there.
class Block {
public:
    Block() = default;
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    // Reads up to `length` bytes and answers how many arrived. When the
    // first `complete` have not, the rest of those is read byte by byte, so
    // the end of the stream surfaces as "unexpected EOF" from the I/O
    // utilities, exactly as a byte-wise read would report it.
    int read(InputStream& in, int length, int complete) {
        int got = _fill(in, 0, length);
        if (got >= complete) return got;
        for (; got < complete; ++got) *_room(got, 1) = static_cast<char>(IOUtils::readUChar(in));
        return _fill(in, complete, length);
    }
    const char* get() const { return _heap.empty() ? _stack : _heap.data(); }

private:
    // Reads from `at` towards `length` in steps as large as what is held;
    // answers the bytes held at the end.
    int _fill(InputStream& in, int at, int length) {
        while (at < length) {
            const int want = std::min(length - at, std::max(kStackBlock, at));
            const int got = IOUtils::readFull(in, _room(at, want), want);
            at += got;
            if (got < want) break;
        }
        return at;
    }
    // Room for n bytes at `at`, the `at` before it kept.
    char* _room(int at, int n) {
        if (_heap.empty() && at + n <= kStackBlock) return _stack + at;
        if (_heap.empty()) _heap.assign(_stack, static_cast<size_t>(at));
        _heap.resize(static_cast<size_t>(at + n));
        return &_heap[static_cast<size_t>(at)];
    }

    char _stack[kStackBlock];
    std::string _heap;  // in use once the bytes outgrow the stack block
};

}  // namespace zipfields
}  // namespace QRN_SPACE

#endif

// A script of reads, skips, marks, resets and line reads from the input,
// played on a BufferedInputStream over a stream that hands out awkward
// pieces, and checked against the same bytes read plainly. Layout: buffer
// size, piece size, data length (2 bytes, little-endian), the data, then two
// bytes per call (which call, its argument).
#include <algorithm>
#include <cstdint>
#include <string>

#include "io/BufferedInputStream.h"
#include "support/TestStreams.h"

#define EXPECT(condition) ((condition) ? (void)0 : __builtin_trap())

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* in, size_t size) {
    if (size < 4) return 0;
    const std::string all(reinterpret_cast<const char*>(in), size);
    const std::string data = all.substr(4, in[2] | in[3] << 8);
    const std::string script = all.substr(4 + data.size());
    tuskel_test::ChunkedInputStream pieces(data, in[1] == 255 ? 1 << 20 : 1 + in[1] % 64);
    QRN_SPACE::BufferedInputStream stream(pieces, 1 + in[0] % 64);
    const long end = static_cast<long>(data.size());
    long pos = 0, markPos = -1, markLimit = 0;  // the plain reading
    std::string got, line;
    for (size_t i = 0; i + 1 < script.size(); i += 2) {
        const int arg = static_cast<uint8_t>(script[i + 1]);
        const long left = std::max(0L, end - pos);
        const size_t at = static_cast<size_t>(std::min(pos, end));
        switch (static_cast<uint8_t>(script[i]) % 7) {
        case 0: EXPECT(stream.read() == (left > 0 ? static_cast<uint8_t>(data[pos++]) : -1)); break;
        case 1:
            got.assign(static_cast<size_t>(arg), '\0');
            got.resize(static_cast<size_t>(stream.read(&got[0], arg)));
            EXPECT(got.size() == static_cast<size_t>(std::min<long>(arg, left)) && data.compare(at, got.size(), got) == 0);
            pos += static_cast<long>(got.size());
            break;
        case 2: {
            const long skipped = stream.skip(arg);  // short only at the end
            EXPECT(skipped <= arg && (skipped == arg || pos + skipped >= end));
            pos += skipped;
            break;
        }
        case 3: stream.mark(arg), markPos = pos, markLimit = arg; break;
        case 4:
            try {
                stream.reset();
                EXPECT(markPos >= 0);
                pos = markPos;
            } catch (QRN_SPACE::IOException&) {  // the mark may go only once its limit is reached
                EXPECT(markPos < 0 || pos - markPos >= markLimit);
            }
            markPos = -1;
            break;
        case 5: {
            const bool more = stream.readLine(line);
            const size_t stop = std::min(data.find_first_of("\r\n", at), data.size());
            EXPECT(more == (left > 0) && line.size() == (more ? stop - at : 0) && data.compare(at, line.size(), line) == 0);
            if (!more) break;
            pos = static_cast<long>(stop) + (stop < data.size() ? 1 : 0);  // past the terminator
            if (stop < data.size() && data[stop] == '\r' && pos < end && data[pos] == '\n') ++pos;
            break;
        }
        default: EXPECT(stream.available() == left); break;
        }
    }
    return 0;
}

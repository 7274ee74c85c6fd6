// The buffered and string streams over a stream that hands out its bytes in
// awkward pieces, so that buffer fills end at every possible place.
#include <gtest/gtest.h>

#include <fcntl.h>

#include <climits>

#include "io/BufferedInputStream.h"
#include "io/BufferedOutputStream.h"
#include "io/FileOutputStream.h"
#include "io/StringOutputStream.h"
#include "support/Allocations.h"
#include "support/TestStreams.h"
#include "support/Thrown.h"

using namespace QRN_SPACE;
using namespace tuskel_test;

namespace {

const std::string kNoMark = "No mark was set @ io/InputStream, line426";
const std::string kClosed = "Stream is already closed @ ../../../modules/common-stl/include/io/";

std::string readBytes(InputStream& in, int n) {
    std::string out;
    for (int c; n-- > 0 && (c = in.read()) != -1;) out.push_back(static_cast<char>(c));
    return out;
}

}  // namespace

TEST(BufferedStreams, LinesEndAtCrLfOrCrLfWhereverTheBufferFillsEnd) {
    const std::string longLine(40, 'L');
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"a\r\nb\nc", {"a", "b", "c"}},  {"\n", {""}},          {"", {}},
        {"a\r\rb\r", {"a", "", "b"}},    {"\n\r", {"", ""}},    {"\r\n\r\n", {"", ""}},
        {bytes({'x', 0, 'y', '\n', '\n'}), {bytes({'x', 0, 'y'}), ""}},
        {longLine + "\r\nz", {longLine, "z"}},
    };
    for (const auto& [input, want] : cases) {
        for (int size : {1, 2, 3, 5, 64}) {
            for (int chunk : {1, 3, 1 << 20}) {
                ChunkedInputStream in(input, chunk);
                BufferedInputStream buffered(in, size);
                std::vector<std::string> lines;
                std::string line = "stale";
                while (buffered.readLine(line)) lines.push_back(line);
                EXPECT_EQ(lines, want) << input << " size " << size << " chunk " << chunk;
                EXPECT_EQ(line, "");
            }
        }
    }
}

TEST(BufferedStreams, AMarkServesOneResetWhileWithinItsLimit) {
    const std::string data = patternBytes(300);
    const struct {
        int before, size, limit, chunk, after;
        bool kept;
    } cases[] = {
        {0, 8, 100, 1 << 20, 50, true}, {0, 8, 10, 1 << 20, 10, true}, {0, 8, 10, 1 << 20, 11, false},
        {5, 8, 10, 1 << 20, 10, true},  {5, 8, 10, 1 << 20, 11, false},  // the marked bytes slide to the front
        {0, 8, 8, 3, 8, true},          {0, 8, 8, 3, 9, false},            // room left after short reads is used
        {0, 8, 4, 1 << 20, 4, true},    {0, 8, 4, 1 << 20, 9, false},
    };
    for (const auto& c : cases) {
        ChunkedInputStream in(data, c.chunk);
        BufferedInputStream buffered(in, c.size);
        readBytes(buffered, c.before);
        buffered.mark(c.limit);
        EXPECT_EQ(buffered.read(nullptr, 5), 0);  // takes nothing
        EXPECT_EQ(readBytes(buffered, c.after), data.substr(c.before, c.after));
        if (c.kept) {
            buffered.reset();
            EXPECT_EQ(thrown<IOException>([&] { buffered.reset(); }), kNoMark);  // intended: single use
            EXPECT_EQ(readBytes(buffered, 300), data.substr(c.before)) << c.after;
        } else {
            EXPECT_EQ(readBytes(buffered, 300), data.substr(c.before + c.after)) << c.after;
        }
        EXPECT_EQ(thrown<IOException>([&] { buffered.reset(); }), kNoMark);
        for (int asked : in.requests()) EXPECT_GT(asked, 0);  // a refill never asks for nothing
    }
}

// The mark buffer grows when it is full, not on every refill: a stream that
// trickles its bytes must not make it double per byte towards the limit.
TEST(BufferedStreams, AMarkAtTheStartGrowsTheBufferOnlyAsBytesArrive) {
    const std::string data = patternBytes(100);
    ChunkedInputStream in(data, 1);
    BufferedInputStream buffered(in, 8);
    buffered.mark(INT_MAX);
    largestAllocation = 0;
    EXPECT_EQ(readBytes(buffered, 100), data);
    EXPECT_LE(largestAllocation, 1024u);  // nowhere near the limit (the test stream logs its requests too)
    buffered.reset();
    EXPECT_EQ(readBytes(buffered, 101), data);
}

TEST(BufferedStreams, SkipKeepsMarkedBytesAndOtherwiseLetsTheWrappedStreamSkip) {
    const std::string data = patternBytes(2000);
    ChunkedInputStream plainIn(data, 7), markedIn(data, 7);
    BufferedInputStream plain(plainIn, 16), marked(markedIn, 16);
    EXPECT_EQ(plain.read(), static_cast<unsigned char>(data[0]));
    EXPECT_EQ(plain.skip(1500), 1500);
    EXPECT_EQ(plainIn.requests(), std::vector<int>{16});  // the skipped bytes were never read
    EXPECT_EQ(plain.available(), 499);
    char buf[600];
    EXPECT_EQ(plain.read(buf, 600), 499);  // filled until the end
    EXPECT_EQ(std::string(buf, 499), data.substr(1501));
    EXPECT_EQ(plain.read(buf, 600), 0);

    marked.mark(1000);
    EXPECT_EQ(marked.skip(900), 900);
    marked.reset();
    EXPECT_EQ(readBytes(marked, 20), data.substr(0, 20));
    marked.mark(5000);
    EXPECT_EQ(marked.skip(5000), 1980);  // read through to the end
}

TEST(BufferedStreams, OutputGoesDownstreamABufferAtATimeOrStraightThrough) {
    struct CountingFlushes : CollectingOutputStream {
        void flush() override { ++flushes; }
        int flushes = 0;
    } out;
    BufferedOutputStream buffered(out, 4);
    buffered.write('a'), buffered.write("bc", 2);
    EXPECT_EQ(out.data, "");
    buffered.write('d');  // full: flushed
    buffered.write("0123456789", 10), buffered.write("wxyz", 4);  // empty and at least the size: straight through
    EXPECT_EQ(out.writes, (std::vector<int>{4, 10, 4}));
    buffered.write("xy", 2), buffered.write("1234567", 7);  // fills, flushes, and the rest is large
    buffered.write("ABC", 3), buffered.flush(), buffered.write("D", 1), buffered.close();
    EXPECT_EQ(out.data, "abcd0123456789wxyzxy1234567ABCD");
    EXPECT_EQ(out.writes, (std::vector<int>{4, 10, 4, 4, 5, 3, 1}));
    EXPECT_EQ(out.flushes, 0);  // intended: the wrapped stream is never flushed
    EXPECT_EQ(thrown<IOException>([&] { buffered.flush(); }), kClosed + "OutputStream, line58");

    // A flush that failed leaves the buffer full: the next byte retries it
    // rather than landing past the end.
    FileOutputStream full(::open("/dev/full", O_WRONLY));
    BufferedOutputStream toFull(full, 2);
    toFull.write('a');
    for (int i = 0; i < 2; ++i) EXPECT_THROW(toFull.write('b'), IOException);
    EXPECT_EQ(toFull.write(nullptr, 3), 0);

    StringOutputStream text(4);
    text.write("ab", 2), text.write('c');
    EXPECT_EQ(text.getString(), "abc");
    text.close();
    EXPECT_EQ(text.getString(), "");
    text.write('d');  // intended: still open after close()
    EXPECT_EQ(text.write(nullptr, 3), 0);
    EXPECT_EQ(text.getString(), "d");
}

#include <gtest/gtest.h>

#include <string>

#include "io/FilterInputStream.h"
#include "io/FilterOutputStream.h"
#include "support/TestStreams.h"

using namespace QRN_SPACE;
using tuskel_test::ByteOnlyInputStream;
using tuskel_test::ChunkedInputStream;
using tuskel_test::CollectingOutputStream;

namespace {

template <class F>
std::string failure(F&& f) {
    try {
        f();
    } catch (IOException& e) {
        return e.getMessage() + " @ " + e.getErrorLocation();
    }
    return "no error";
}

const std::string kIn = "../../../modules/common-stl/include/io/InputStream, line";
const std::string kOut = "../../../modules/common-stl/include/io/OutputStream, line";

}  // namespace

TEST(InputStream, UnimplementedDefaultsThrowWithTheirLocations) {
    InputStream in;
    EXPECT_EQ(failure([&] { in.available(); }), "Unimplemented @ " + kIn + "63");
    EXPECT_EQ(failure([&] { in.close(); }), "Unimplemented @ " + kIn + "68");
    EXPECT_EQ(failure([&] { in.read(); }), "Unimplemented @ " + kIn + "73");
    EXPECT_FALSE(in.markSupported());
    in.mark(10);
    in.reset();

    OutputStream out;
    EXPECT_EQ(failure([&] { out.close(); }), "Unimplemented @ " + kOut + "66");
    EXPECT_EQ(failure([&] { out.write('x'); }), "Unimplemented @ " + kOut + "73");
    EXPECT_EQ(failure([&] { out.write("ab", 2); }), "Unimplemented @ " + kOut + "91");
    EXPECT_EQ(failure([&] { out.write("ab"); }), "Unimplemented @ " + kOut + "91");
    out.flush();
}

TEST(InputStream, BlockReadAndSkipAreBuiltOnSingleByteRead) {
    ByteOnlyInputStream empty("");
    char buf[10];
    EXPECT_EQ(empty.read(buf, 10), 0);  // 0 at the end, never -1
    EXPECT_EQ(empty.skip(10), 0);

    ByteOnlyInputStream in("abcdef");
    EXPECT_EQ(in.read(buf, 0), 0);
    EXPECT_EQ(in.read(buf, -5), 0);
    EXPECT_EQ(in.calls, 0);
    EXPECT_EQ(in.read(buf, 4), 4);
    EXPECT_EQ(std::string(buf, 4), "abcd");
    EXPECT_EQ(in.read(buf, 10), 2);
    EXPECT_EQ(in.read(buf, 10), 0);
}

TEST(InputStream, SkipReadsInChunksOfAtMost512) {
    struct Case {
        size_t available;
        long skip;
        long skipped;
        std::vector<int> requests;
    } cases[] = {
        {2000, 1300, 1300, {512, 512, 276}},
        {700, 1300, 700, {512, 512}},
        {1024, 1024, 1024, {512, 512}},
        {10, 0, 0, {}},
        {10, -3, 0, {}},
    };
    for (const Case& c : cases) {
        // Only the base class skip, reading through the counting block read.
        struct DefaultSkip : ChunkedInputStream {
            using ChunkedInputStream::ChunkedInputStream;
            long skip(long n) override { return InputStream::skip(n); }
        } in(std::string(c.available, 'x'));
        EXPECT_EQ(in.skip(c.skip), c.skipped);
        EXPECT_EQ(in.requests(), c.requests);
    }
}

TEST(OutputStream, StringWriteReachesTheBlockWrite) {
    CollectingOutputStream out;
    out.write("abc");
    out.write(static_cast<const char*>(nullptr));
    EXPECT_EQ(out.writes, (std::vector<int>{3, 0}));
    EXPECT_EQ(out.data, "abc");
}

TEST(FilterStreams, ForwardWithoutOwningOrClosingTheWrappedStream) {
    ChunkedInputStream inner("hello world");
    FilterInputStream filter(inner);
    EXPECT_EQ(filter.available(), 11);
    EXPECT_EQ(filter.read(), 'h');
    filter.close();
    char buf[4];
    EXPECT_EQ(filter.read(buf, 4), 4);  // a closed filter still reads
    EXPECT_EQ(std::string(buf, 4), "ello");
    EXPECT_EQ(filter.skip(1), 1);
    EXPECT_FALSE(filter.markSupported());
    EXPECT_EQ(inner.read(), 'w');

    CollectingOutputStream sink;
    {
        FilterOutputStream out(sink);
        out.write('a');
        out.write("bc");
        out.write("de", 1);
        out.flush();
        out.close();
    }
    sink.write('!');  // neither close() nor the destructor closed the sink
    EXPECT_EQ(sink.data, "abcd!");
}

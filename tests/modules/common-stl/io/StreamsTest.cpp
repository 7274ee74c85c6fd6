#include <gtest/gtest.h>

#include <functional>

#include "io/BufferBaseInputStream.h"
#include "io/BufferBaseOutputStream.h"
#include "io/BufferedInputStream.h"
#include "io/FilterInputStream.h"
#include "io/FilterOutputStream.h"
#include "support/TestStreams.h"
#include "support/Thrown.h"

using namespace QRN_SPACE;
using namespace tuskel_test;

TEST(Streams, UnimplementedAndClosedCallsThrowTheirTexts) {
    const std::string in = " @ ../../../modules/common-stl/include/io/InputStream, line";
    const std::string out = " @ ../../../modules/common-stl/include/io/OutputStream, line";
    InputStream base;
    OutputStream baseOut;
    auto buffer = memoryBuffer("abc");
    BufferBaseInputStream closed(buffer.get()), wrapped(buffer.get());
    BufferBaseOutputStream closedOut(buffer.get());
    BufferedInputStream buffered(wrapped, 2);
    closed.close(), closedOut.close(), closedOut.flush();  // flush makes no open check
    buffered.read(), buffered.close(), buffered.mark(1);   // nor does a buffered stream's mark
    char buf[2];
    std::string line;
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] { base.available(); }, "Unimplemented" + in + "63"}, {[&] { base.close(); }, "Unimplemented" + in + "68"},
        {[&] { base.read(); }, "Unimplemented" + in + "73"}, {[&] { baseOut.close(); }, "Unimplemented" + out + "66"},
        {[&] { baseOut.write('x'); }, "Unimplemented" + out + "73"},
        {[&] { baseOut.write("ab"); }, "Unimplemented" + out + "91"},
        {[&] { closedOut.write('x'); }, "Stream is already closed" + out + "58"},
        {[&] { closedOut.write("x", 1); }, "Stream is already closed" + out + "58"}};
    for (const auto& [call, want] : cases) EXPECT_EQ(thrown<IOException>(call), want);
    for (const auto& call : std::vector<std::function<void()>>{
             [&] { closed.available(); }, [&] { closed.read(); }, [&] { closed.read(buf, 2); }, [&] { closed.skip(1); },
             [&] { closed.markSupported(); }, [&] { closed.mark(1); }, [&] { closed.reset(); },
             [&] { buffered.available(); }, [&] { buffered.read(); }, [&] { buffered.skip(1); },
             [&] { buffered.reset(); }, [&] { buffered.readLine(line); }}) {
        EXPECT_EQ(thrown<IOException>(call), "Stream is already closed" + in + "55");
    }
    EXPECT_EQ(wrapped.read(), 'c');  // closing a buffered stream leaves what it wraps open
}

TEST(Streams, DefaultBlockReadAndSkipAreBuiltOnReadSkipInChunksOf512) {
    ByteOnlyInputStream plain("abcdef");
    char buf[10];
    // Nothing is read for a length below 1; at the end the answer is 0, never -1.
    EXPECT_EQ((std::vector<int>{plain.read(buf, -5), plain.calls, plain.read(buf, 10), plain.read(buf, 10)}),
              (std::vector<int>{0, 0, 6, 0}));
    for (auto [available, skip, requests] : {std::tuple{2000, 1300L, std::vector<int>{512, 512, 276}},
                                             {700, 1300L, {512, 512}}, {2000, 511L, {511}}, {2000, 512L, {512}},
                                             {2000, 513L, {512, 1}}, {10, -3L, {}}}) {
        struct DefaultSkip : ChunkedInputStream {  // only the base class skip
            using ChunkedInputStream::ChunkedInputStream;
            long skip(long n) override { return InputStream::skip(n); }
        } in(std::string(available, 'x'));
        EXPECT_EQ(in.skip(skip), std::min<long>(std::max(0L, skip), available)) << skip;
        EXPECT_EQ(in.requests(), requests) << skip;
    }
}

TEST(Streams, BufferCursorsSkipUnclampedOverwriteAndFiltersLeaveWhatTheyWrapOpen) {
    auto data = memoryBuffer("0123");
    BufferBaseInputStream in(data.get());
    EXPECT_EQ(in.skip(100), 100);  // intended: not clamped to the size
    EXPECT_EQ(in.available(), 0);
    EXPECT_EQ(in.read(), -1);
    in.reset();  // no mark yet: back to 0
    FilterInputStream filter(in);
    filter.close();
    EXPECT_EQ(filter.read(), '0');  // intended: a closed filter still reads, and what it wraps stays open

    auto buffer = memoryBuffer();
    BufferBaseOutputStream first(buffer.get()), second(buffer.get());
    FilterOutputStream(first).close();
    first.write("ab", 2), first.write('c');  // neither the filter's close() nor its destructor closed it
    second.write('X');                       // each stream overwrites from its own cursor
    EXPECT_EQ(second.write(static_cast<const char*>(nullptr), 2), 0);  // intended: moves the cursor anyway
    second.write('Z');
    EXPECT_EQ(contentOf(*buffer), "XbcZ");
    second.write("xy", -6);  // to -2: the buffer's position error passes through
    EXPECT_THROW(second.write('q'), IOException);
}

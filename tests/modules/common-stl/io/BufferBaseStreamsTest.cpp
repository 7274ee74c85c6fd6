#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>

#include "io/BufferBaseInputStream.h"
#include "io/BufferBaseOutputStream.h"
#include "support/TestStreams.h"

using namespace QRN_SPACE;
using tuskel_test::StringBuffer;

namespace {

std::string ioError(const std::function<void()>& f) {
    try {
        f();
    } catch (IOException& e) {
        return e.getMessage() + " @ " + e.getErrorLocation();
    }
    return "no error";
}

}  // namespace

TEST(BufferBaseInputStream, ReadsUntilTheEndWithoutGoingPastIt) {
    StringBuffer empty;
    BufferBaseInputStream none(&empty);
    char buf[8];
    EXPECT_EQ(none.read(), -1);
    EXPECT_EQ(none.read(buf, 8), 0);
    EXPECT_EQ(none.available(), 0);

    StringBuffer data(tuskel_test::bytes({0x01, 0xFF, 0x03}));
    BufferBaseInputStream in(&data);
    EXPECT_EQ(in.read(), 0x01);
    EXPECT_EQ(in.read(), 0xFF);  // a high byte is not the end
    EXPECT_EQ(in.available(), 1);
    EXPECT_EQ(in.read(buf, 8), 1);
    EXPECT_EQ(in.read(), -1);
    EXPECT_EQ(in.read(), -1);  // the cursor stays at the end
    EXPECT_EQ(in.available(), 0);
}

TEST(BufferBaseInputStream, SkipIsNotClampedAndMarkResetRewind) {
    StringBuffer data("0123456789");
    BufferBaseInputStream in(&data);
    EXPECT_EQ(in.skip(-1), 0);
    EXPECT_EQ(in.skip(100), 100);
    EXPECT_EQ(in.available(), 0);
    EXPECT_EQ(in.read(), -1);
    in.reset();  // no mark yet: back to 0
    EXPECT_EQ(in.read(), '0');

    in.skip(2);
    in.mark(0);  // the limit is ignored
    char three[3];
    ASSERT_EQ(in.read(three, 3), 3);
    in.reset();
    char again[3];
    ASSERT_EQ(in.read(again, 3), 3);
    EXPECT_EQ(std::string(three, 3), "345");
    EXPECT_EQ(std::string(again, 3), "345");
    EXPECT_TRUE(in.markSupported());

    EXPECT_EQ(in.skip(LONG_MAX), LONG_MAX);  // saturates, never wraps negative
    EXPECT_EQ(in.skip(LONG_MAX), LONG_MAX);
    EXPECT_EQ(in.read(), -1);
}

TEST(BufferBaseOutputStream, OverwritesFromItsOwnCursor) {
    StringBuffer buffer;
    BufferBaseOutputStream first(&buffer);
    EXPECT_EQ(first.write("ab", 2), 2);
    first.write('c');
    EXPECT_EQ(buffer.data(), "abc");

    BufferBaseOutputStream second(&buffer);
    second.write('X');
    EXPECT_EQ(buffer.data(), "Xbc");

    // The cursor moves by the requested length even when nothing is written.
    EXPECT_EQ(second.write(static_cast<const char*>(nullptr), 2), 0);
    second.write('Z');
    EXPECT_EQ(buffer.data(), "XbcZ");
    second.flush();
}

TEST(BufferBaseStreams, EverythingButCloseFailsOnceClosed) {
    StringBuffer buffer("abc");
    BufferBaseInputStream in(&buffer);
    in.close();
    in.close();
    const std::string inClosed =
        "Stream is already closed @ ../../../modules/common-stl/include/io/InputStream, line55";
    char buf[2];
    std::vector<std::function<void()>> inOps = {
        [&] { in.available(); }, [&] { in.read(); },    [&] { in.read(buf, 2); }, [&] { in.skip(1); },
        [&] { in.markSupported(); }, [&] { in.mark(1); }, [&] { in.reset(); },
    };
    for (auto& op : inOps) EXPECT_EQ(ioError(op), inClosed);

    BufferBaseOutputStream out(&buffer);
    out.close();
    out.flush();  // no open check
    const std::string outClosed =
        "Stream is already closed @ ../../../modules/common-stl/include/io/OutputStream, line58";
    EXPECT_EQ(ioError([&] { out.write('x'); }), outClosed);
    EXPECT_EQ(ioError([&] { out.write("x", 1); }), outClosed);
    EXPECT_EQ(ioError([&] { out.write("x"); }), outClosed);
    EXPECT_EQ(buffer.data(), "abc");
}

TEST(BufferBaseStreams, BufferGuardErrorsPassThroughWithoutMovingTheCursor) {
    const std::string broken = "Broken BufferBase @ modules/common-stl/include/io/BufferBase, line96";
    const std::string outOfBound = "Index out of bound @ modules/common-stl/include/io/BufferBase, line102";

    StringBuffer buffer("abc");
    BufferBaseOutputStream out(&buffer);
    EXPECT_EQ(ioError([&] { out.write("xy", -3); }), "no error");  // moves the cursor to -3
    EXPECT_EQ(ioError([&] { out.write('q'); }), outOfBound);
    EXPECT_EQ(ioError([&] { buffer.read(-1); }), outOfBound);

    BufferBaseInputStream in(&buffer);
    buffer.breakIt();
    EXPECT_EQ(ioError([&] { in.read(); }), broken);
    EXPECT_EQ(ioError([&] { buffer.append('x'); }), broken);
    EXPECT_EQ(buffer.getSize(), 3);
}

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>

#include "HostDoubles.h"
#include "support/LogCapture.h"
#include "support/TestStreams.h"
#include "tuskel/CommonBufferBase.h"

using tuskel_test::bytes;
using tuskel_test::EndSeekZeroHostBuffer;
using tuskel_test::LogCapture;
using tuskel_test::MemoryHostBuffer;

namespace {

std::string errorLine(int line, const std::string& text) {
    return "[ERR][CommonBufferBase:" + std::to_string(line) + "] " + text + "\n";
}

}  // namespace

TEST(CommonBufferBase, ReadsSeekTheHostFirst) {
    LogCapture log(3);
    MemoryHostBuffer host(bytes({0x10, 0x20, 0xFF, 0x40}));
    CommonBufferBase adapter(&host, 0);
    EXPECT_EQ(adapter.read(2), 255);  // a byte 0xFF is not the end
    EXPECT_EQ(adapter.read(0), 0x10);
    EXPECT_EQ(adapter.read(4), -1);   // the host's short read: no log
    char buf[8] = {};
    EXPECT_EQ(adapter.read(1, buf, 8), 3);
    EXPECT_EQ(std::string(buf, 3), bytes({0x20, 0xFF, 0x40}));
    host.maxRead = 2;  // a short host read reaches the caller unchanged
    EXPECT_EQ(adapter.read(0, buf, 8), 2);
    EXPECT_EQ(adapter.read(9, buf, 8), 0);
    EXPECT_EQ(log.text(), "");
}

TEST(CommonBufferBase, AFailedSeekStopsTheOperation) {
    LogCapture log(3);
    MemoryHostBuffer host("abc");
    host.failSeekAt = 1;
    CommonBufferBase adapter(&host, 0);
    char buf[4];
    EXPECT_EQ(adapter.read(1), -1);
    EXPECT_EQ(adapter.read(1, buf, 4), -1);
    adapter.write(1, 'x');
    EXPECT_EQ(adapter.write(1, "xy", 2), -1);
    EXPECT_EQ(host.data, "abc");
    // The block write logs without the line feed: intended.
    EXPECT_EQ(log.text(), errorLine(19, "seek fail\n") + errorLine(36, "seek fail\n") +
                              errorLine(51, "seek fail\n") + errorLine(66, "seek fail"));
}

TEST(CommonBufferBase, WritesStopAtTheLimit) {
    struct Case {
        long limit, off;
        int len;  // 0: the one-byte write
        bool written;
    } cases[] = {
        {10, 9, 0, true},    {10, 10, 0, false},  {0, 1000, 0, true},
        {10, 7, 2, true},    {10, 7, 3, true},    {10, 7, 4, false},
        {0, 1000, 3, true},  {10, LONG_MAX, 5, false}, {10, LONG_MAX, 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("limit " + std::to_string(c.limit) + " off " + std::to_string(c.off) + " len " +
                     std::to_string(c.len));
        LogCapture log(3);
        MemoryHostBuffer host;
        CommonBufferBase adapter(&host, c.limit);
        std::string payload = c.len == 0 ? "x" : std::string(c.len, 'y');
        if (c.len == 0) {
            adapter.write(c.off, 'x');
        } else {
            EXPECT_EQ(adapter.write(c.off, payload.data(), c.len), c.written ? c.len : -1);
        }
        if (c.written) {
            ASSERT_EQ(host.data.size(), c.off + payload.size());
            EXPECT_EQ(host.data.substr(c.off), payload);
            EXPECT_EQ(log.text(), "");
        } else {
            EXPECT_EQ(host.calls, 0);
            EXPECT_EQ(log.text(), errorLine(c.len == 0 ? 46 : 61, "off bigger than the buffer size\n"));
        }
    }
}

TEST(CommonBufferBase, UnsupportedOperationsOnlyLog) {
    struct Case {
        std::function<int(CommonBufferBase&)> call;
        int result;  // 0 for the operations that answer nothing
        int line;
        const char* text;
    } cases[] = {
        {[](CommonBufferBase& b) { b.insert(0, 'x'); return 0; }, 0, 74, "insert function is null"},
        {[](CommonBufferBase& b) { return b.insert(0, "xy", 2); }, -1, 79, "insert function is null"},
        {[](CommonBufferBase& b) { b.cut(0); return 0; }, 0, 85, "cut function is null"},
        {[](CommonBufferBase& b) { return b.cut(0, 2); }, -1, 90, "cut function is null"},
        // The text names another operation; kept as it always read.
        {[](CommonBufferBase& b) { b.truncate(1); return 0; }, 0, 116, "read(off,buf,len):seek fail"},
    };
    for (const Case& c : cases) {
        LogCapture log(3);
        MemoryHostBuffer host("abc");
        CommonBufferBase adapter(&host, 0);
        EXPECT_EQ(c.call(adapter), c.result);
        EXPECT_EQ(log.text(), errorLine(c.line, c.text));
        EXPECT_EQ(host.calls, 0);
        EXPECT_EQ(host.data, "abc");
    }
}

TEST(CommonBufferBase, AppendNeedsTheSeekToTheEndToAnswerZero) {
    LogCapture log(3);
    {
        // Over a host whose seek answers the new position, only an empty
        // buffer can be appended to: intended.
        MemoryHostBuffer host;
        CommonBufferBase adapter(&host, 1);
        adapter.append('a');
        adapter.append('b');
        EXPECT_EQ(adapter.append("cd", 2), -1);
        EXPECT_EQ(host.data, "a");
        EXPECT_EQ(log.text(), errorLine(98, "append(c):seek fail") + errorLine(108, "append(buf,len):seek fail"));
    }
    log.clear();
    {
        // A host answering 0 appends at its end, and append ignores the limit.
        EndSeekZeroHostBuffer host("xyz");
        CommonBufferBase adapter(&host, 1);
        adapter.append('a');
        EXPECT_EQ(adapter.append("bcd", 3), 3);
        EXPECT_EQ(host.data, "xyzabcd");
        EXPECT_EQ(log.text(), "");
    }
}

TEST(CommonBufferBase, DestructionLeavesTheHostAlone) {
    MemoryHostBuffer host("abc");
    {
        CommonBufferBase adapter(&host, 0);
        EXPECT_STREQ(adapter.QRN_SPACE::RNObject::toString(), "16CommonBufferBase");
        EXPECT_EQ(adapter.getType(), 0);
    }
    EXPECT_EQ(host.calls, 0);
    EXPECT_EQ(host.data, "abc");
}

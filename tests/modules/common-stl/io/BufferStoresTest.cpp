// Every store against the model of the buffer rules under seeded scripts
// (the fuzzer runs the same scripts), then what the smart, limited and pipe
// buffers add on their own.
#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <functional>

#include "io/ContinuousMemBufferBase.h"
#include "io/FilteredBufferBase.h"
#include "io/PipeBufferBase.h"
#include "io/SmartBufferBase.h"
#include "support/BufferScript.h"
#include "support/TestFiles.h"
#include "support/TestStreams.h"
#include "support/Thrown.h"

using namespace QRN_SPACE;
using namespace tuskel_test;

namespace {

const std::string kBroken = "Broken BufferBase @ modules/common-stl/include/io/BufferBase, line96";

// Where a buffer keeps its bytes, as a user can tell.
std::string storeOf(BufferBase& buffer, const std::string& dir) {
    if (!buffer.isValid()) return "none";
    const int fd = buffer.getFileDescriptor();
    if (fd == -1) return buffer.getMemAddress() != nullptr ? "block" : "pages";
    char path[4096] = {};
    const ssize_t n = readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), path, sizeof path - 1);
    return n > 0 && std::string(path).rfind(dir + "/", 0) == 0 ? "named file" : "file";
}

}  // namespace

TEST(BufferStores, ScriptsMatchTheModelOnEveryStore) {
    const int types[] = {4, 0, 1, 2, 2, 5, 6, 7};
    for (Store store : kStores) {
        SCOPED_TRACE(storeName(store));
        // The edges of the contract: no-ops, the position check, and ends
        // past LONG_MAX refused without a change.
        StoreUnderTest edges(store);
        BufferBase& b = *edges.buffer;
        char buf[4] = {};
        EXPECT_EQ(b.getType(), types[int(store)]);
        EXPECT_EQ((std::vector<int>{b.read(0, buf, 4), b.write(0, nullptr, 4), b.write(0, buf, -1),
                                    b.insert(0, nullptr, 4), b.read(0, nullptr, 4), b.append("abc", 3), b.cut(0, 0)}),
                  (std::vector<int>{0, 0, 0, 0, 0, 3, 0}));
        EXPECT_EQ(thrown<IOException>([&] { b.read(-1, buf, 1); }),
                  "Index out of bound @ modules/common-stl/include/io/BufferBase, line102");
        EXPECT_THROW(b.write(LONG_MAX - 1, "xyz", 3), Exception);
        EXPECT_THROW(b.insert(LONG_MAX, "xyz", 3), Exception);
        EXPECT_EQ(readAll(b), "abc");

        for (unsigned seed = 1; seed <= 6; ++seed) {
            SeededChoices choices(seed);
            EXPECT_EQ(runBufferScript(store, choices, 200), "") << "seed " << seed;
        }
    }
}

TEST(SmartBufferBase, MovesToAFileAtTheFirstCheckPastTheBarrier) {
    const long barrier = SmartBufferBase::_barrier;
    ASSERT_EQ(barrier, 1048576);
    const std::string data = patternBytes(size_t(barrier + 1));
    // The last byte comes by each adding call in turn.
    const std::function<void(BufferBase&, long)> last[] = {
        [&](BufferBase& b, long at) { b.write(at, data[size_t(at)]); },
        [&](BufferBase& b, long at) { b.insert(at, data[size_t(at)]); },
        [&](BufferBase& b, long at) { b.append(data[size_t(at)]); },
        [&](BufferBase& b, long at) { b.append(&data[size_t(at)], 1); }};
    for (long size : {barrier - 1, barrier, barrier + 1}) {
        for (const auto& add : last) {
            SmartBufferBase buffer;
            buffer.write(0, data.data(), int(size - 1));
            add(buffer, size - 1);
            EXPECT_EQ(buffer.getFileDescriptor(), -1) << size;  // the crossing call is taken in memory
            buffer.append('x');
            EXPECT_EQ(buffer.getFileDescriptor() != -1, size > barrier) << size;
            EXPECT_EQ(buffer.getType(), BufferBase::TYPE_SMART);
            EXPECT_EQ(readAll(buffer), data.substr(0, size_t(size)) + "x");
        }
    }
    // Intended: the block append and the single-byte cut skip the check,
    // the block cut makes it.
    SmartBufferBase over;
    over.write(0, data.data(), int(data.size()));
    over.append("y", 1);
    over.cut(0);
    EXPECT_EQ(over.getFileDescriptor(), -1);
    over.cut(0, 1);
    EXPECT_NE(over.getFileDescriptor(), -1);
    SmartBufferBase discarded;
    discarded.discardUsedBuffer();
    discarded.write(0, data.data(), int(data.size()));
    discarded.write(0, 'x');
    EXPECT_EQ(discarded.getFileDescriptor(), -1);  // consumed content never moves
}

TEST(SmartBufferBase, PoliciesPickTheStoreAndOnlyTheFilePolicyUsesTheBasePath) {
    SmartSettings restore;
    TempDir dir;
    SmartBufferBase::_basePath = dir.path();
    const long big = SmartBufferBase::_barrier + 1;
    const std::tuple<long, int, std::string> cases[] = {
        {0, POLICY_MEM, "pages"},   {big, POLICY_MEM, "pages"},
        {0, POLICY_MEM_SMART, "pages"}, {big, POLICY_MEM_SMART, "file"},  // intended: anonymous
        {0, POLICY_CONTINUOUS_MEM, "block"}, {big, POLICY_CONTINUOUS_MEM_SMART, "file"},
        {0, POLICY_FILE, "named file"}, {0, 9, "none"}};
    for (const auto& [initialSize, policy, store] : cases) {
        SmartBufferBase buffer(initialSize, BufferBasePolicy(policy));
        if (buffer.isValid()) buffer.append('x');
        EXPECT_EQ(storeOf(buffer, dir.path()), store) << initialSize << " / " << policy;
    }
    SmartBufferBase none(BufferBasePolicy(9));
    EXPECT_EQ(thrown<IOException>([&] { none.read(0); }), kBroken);
    EXPECT_EQ(none.getSize(), 0);
}

TEST(LimitedBufferBase, TheCrossingOperationCompletesThenEveryCallThrows) {
    const std::string at = "BufferBase exceeded size limit @ modules/common-stl/include/io/BufferBase, line";
    ContinuousMemBufferBase inner(0);
    LimitedBufferBase limited(&inner, 10);
    EXPECT_EQ(limited.append("0123456789", 10), 10);  // the limit itself is allowed
    EXPECT_EQ(thrown<BufferBaseOverSizeException>([&] { limited.insert(3, 'x'); }), at + "719");
    EXPECT_EQ(contentOf(inner), "012x3456789");  // the crossing byte was stored
    char buf[1];
    const std::function<void()> later[] = {[&] { limited.read(0); }, [&] { limited.read(0, buf, 1); },
                                           [&] { limited.cut(0); },  [&] { limited.truncate(0); },
                                           [&] { limited.getSize(); }, [&] { limited.append('y'); }};
    for (const auto& call : later) EXPECT_EQ(thrown<BufferBaseOverSizeException>(call), at + "714");
    EXPECT_EQ(contentOf(inner), "012x3456789");  // spent: nothing reached the buffer

    LimitedBufferBase over(&inner, 5), unlimited(&inner, 0);
    EXPECT_EQ(thrown<BufferBaseOverSizeException>([&] { over.read(0); }), at + "719");  // checked before too
    EXPECT_EQ(unlimited.append(std::string(100000, 'z').data(), 100000), 100000);
}

TEST(PipeBuffer, AnIgnoredProducerDropsWritesAndTheCursorFollowsTheCountWritten) {
    ContinuousMemBufferBase store(0);
    PipeBufferBase pipe(&store);
    PipeProducerOutputStream* producer = pipe.getProducerOutputStream();
    EXPECT_EQ(pipe.getProducerOutputStream(), producer);
    EXPECT_EQ(producer->write(nullptr, 3), 0);  // intended: the cursor stays, as nothing was written
    producer->write("ab");
    producer->ignoreProducer();
    EXPECT_EQ(producer->write("cde"), 3);
    producer->write('f');
    EXPECT_EQ(contentOf(store), "ab");
    producer->close();
    producer->close();  // a second close does nothing
    EXPECT_EQ(thrown<IOException>([&] { producer->write('g'); }),
              "Stream is already closed @ ../../../modules/common-stl/include/io/OutputStream, line58");
    EXPECT_EQ(pipe.read(2), -1);  // closed: the end answers at once
}

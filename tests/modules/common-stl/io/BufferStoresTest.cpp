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
        SCOPED_TRACE(int(store));
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

// The scripts above pin most of the barrier rules against the model; here
// the default barrier, the single-byte cut the scripts rarely reach past
// it, and consumed content, which never moves.
TEST(SmartBufferBase, MovesToAFileAtTheFirstCheckPastTheDefaultBarrier) {
    ASSERT_EQ(SmartBufferBase::_barrier, 1048576);
    const std::string data = patternBytes(1048578);
    SmartBufferBase at, over, discarded;
    at.append(data.data(), 1048576);
    over.append(data.data(), 1048578);  // block appends do not check
    over.cut(0);                        // intended: nor does the single-byte cut
    const bool movedByCut = over.getFileDescriptor() != -1;
    discarded.discardUsedBuffer();
    discarded.append(data.data(), 1048578);
    for (BufferBase* b : {&at, &over, &discarded}) b->write(0, 'x');
    EXPECT_EQ((std::vector<bool>{movedByCut, at.getFileDescriptor() != -1, over.getFileDescriptor() != -1,
                                 discarded.getFileDescriptor() != -1}),
              (std::vector<bool>{false, false, true, false}));
    EXPECT_EQ(readAll(over), "x" + data.substr(2));
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

    LimitedBufferBase over(&inner, 5);
    EXPECT_EQ(thrown<BufferBaseOverSizeException>([&] { over.read(0); }), at + "719");  // checked before too
}

TEST(PipeBuffer, AnIgnoredProducerDropsWritesAndTheCursorFollowsTheCountWritten) {
    ContinuousMemBufferBase store(0);
    PipeBufferBase pipe(&store);
    PipeProducerOutputStream* producer = pipe.getProducerOutputStream();
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

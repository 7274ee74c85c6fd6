// The library inside a host that calls it from many threads at once
// (ThreadSanitizer runs this executable). The registry, the codecs and the
// file type tables keep no per-call state of their own, the logger's state
// is atomic, and smart buffers lock for themselves, so threads that share
// nothing but the process need no lock of their own.
#include <thread>

#include "UnarchiverTesting.h"
#include "filetype/FileTypeIdent.h"
#include "io/SmartBufferBase.h"
#include "plugin/HostDoubles.h"
#include "support/BufferScript.h"
#include "support/LogCapture.h"
#include "unarchiver/FileTypeProcessor.h"

using namespace unarchiver_test;
using namespace tuskel_test;

namespace {

const long kBarrier = 4096;  // small, so that the smart buffers move to files

// What the host side of one thread makes of the inputs, reading them in
// pieces of `piece` bytes: each result and entry count, then per entry its
// CRC, its type, a file type processor's answer and whether a smart buffer it
// went through moved to a file and gave it back whole.
std::string unpackAll(const std::vector<std::string>& inputs, int piece) {
    std::string made;
    for (const std::string& archive : inputs) {
        MemoryHostBuffer input(archive, piece);
        RecordingEntryProcessor host;
        const int result = CommonDecompressor().decompress(&input, &host);
        made += join(result, host.contents().size());
        for (const std::string& entry : host.contents()) {
            SmartBufferBase smart(POLICY_MEM_SMART);
            for (size_t at = 0; at < entry.size(); at += 1000) {
                smart.write(long(at), entry.data() + at, int(std::min<size_t>(1000, entry.size() - at)));
            }
            made += join(zlibCrc(entry), FileTypeIdent::checkFileType(&smart, "", ""), FileTypeProcessor().check(&smart),
                         smart.getFileDescriptor() >= 0, contentOf(smart) == entry);
        }
    }
    return made;
}

}  // namespace

// Entries around the inflate driver's 51,200-byte output block, of noise, a
// PNG and text, each packed by gzip and all together by zip, reach the host
// whole from every thread, each reading in pieces of its own size. An empty
// entry is never offered.
TEST(ConcurrentUse, ThreadsDecompressIdentifyAndSpillToFilesAtOnce) {
    std::vector<std::string> contents;
    for (size_t size : {0, 1, 51199, 51200, 51201, 300000}) contents.push_back(patternBytes(size, unsigned(size)));
    contents[4].replace(0, 8, "\x89PNG\r\n\x1a\n");
    contents[5] = std::string(299999, 'T') + "\n";
    TempDir dir;
    std::vector<std::string> inputs = {"not an archive"};
    std::string want = join(3, 0), zipped;
    std::vector<int> types;
    for (size_t k = 0; k < contents.size(); ++k) {
        const std::string name = dir.file("e" + std::to_string(k)), &c = contents[k];
        writeFile(name, c);
        inputs.push_back(commandOutput(std::string(k % 2 ? "gzip -9c " : "gzip -1c ") + shellQuote(name)));
        types.push_back(FileTypeIdent::checkFileType(memoryBuffer(c).get(), "", ""));
        const std::string entry = c.empty() ? "" : join(zlibCrc(c), types[k], 1, long(c.size()) > kBarrier, true);
        want += join(0, !c.empty()) + entry;
        zipped += entry;
    }
    ASSERT_EQ(runCommand("cd " + shellQuote(dir.path()) + " && zip -q a.zip e*"), 0);
    inputs.push_back(readFile(dir.file("a.zip")));
    want += join(0, contents.size() - 1) + zipped;
    EXPECT_EQ(join(types[4], types[5]), join(+FileTypeIdent::TYPE_PNG, +FileTypeIdent::TYPE_TXT));  // kinds differ

    SmartSettings restore;  // process-wide settings go before the threads
    SmartBufferBase::_barrier = kBarrier;
    LogCapture log(3);
    const int pieces[] = {1 << 30, 1, 7, 33791};
    std::vector<std::string> made(4);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) threads.emplace_back([&, t] { made[t] = unpackAll(inputs, pieces[t]); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(made, std::vector<std::string>(4, want));
}

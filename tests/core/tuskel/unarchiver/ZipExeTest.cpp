#include <algorithm>
#include <cstring>

#include "UnarchiverTesting.h"
#include "io/BufferBaseInputStream.h"
#include "io/BufferedInputStream.h"
#include "plugin/HostDoubles.h"
#include "support/Allocations.h"
#include "support/TestFiles.h"
#include "unarchiver/ZipConstants.h"
#include "unarchiver/ZipExeUnarchiver.h"
#include "utils/IOUtils.h"

using namespace unarchiver_test;
using tuskel_test::shellQuote;

namespace {

// The executables make_exes.py makes, once per run.
std::string exePath(const std::string& name) { return madeBy(TUSKEL_MAKE_EXES, name); }

std::string exe(const std::string& name) { return tuskel_test::readFile(exePath(name)); }

// check_zipexe's answer as "pos", or "-" (the position it leaves must not matter then), and where the stream is left.
std::string detected(const std::string& data, int chunk = 7) {
    ChunkedInputStream in(data, chunk);
    long pos = -1;
    bool found = check_zipexe(in, pos);
    return join(found ? std::to_string(pos) : "-", in.position());
}

// A 32-bit PE image of `size` bytes, "PE" at 0x40, whose header counts `count` sections and lists these.
struct Section { const char* name; uint32_t raw, size; };
std::string pe(size_t size, std::vector<Section> sections, int count = -1) {
    std::string image(size, '\0');
    image.replace(0, 2, "MZ");
    IOUtils::writeUShort(&image[0x18], 0x40);  // a new-style executable
    IOUtils::writeUInt(&image[0x3C], 0x40);
    image.replace(0x40, 2, "PE");
    IOUtils::writeUShort(&image[0x40 + ZipConstants::OffsetOfNumberSections],
                         static_cast<unsigned>(count < 0 ? static_cast<int>(sections.size()) : count));
    for (size_t i = 0; i < sections.size(); ++i) {
        char* row = &image[0x40 + ZipConstants::OffsetOfSectionTable + ZipConstants::SizePerSectionTable * i];
        std::memcpy(row, sections[i].name, std::strlen(sections[i].name));
        IOUtils::writeUInt(row + 16, sections[i].size);
        IOUtils::writeUInt(row + 20, sections[i].raw);
    }
    return image;
}

// `image` with a marker naming `pos` at `at`, of which only the first `signature` bytes are the real ones.
std::string marked(std::string image, size_t at, uint32_t pos, size_t signature = 8) {
    image.replace(at, signature, reinterpret_cast<const char*>(ZipConstants::SIG_ZIPEXE), signature);
    IOUtils::writeUInt(&image[at + 12], pos);
    return image;
}

}  // namespace

TEST(ZipExe, SelfExtractorsOfRealToolsUnpackLikeUnzip) {
    int built = 0;
    std::istringstream list(exe("exes.list"));  // each name and where its archive begins (-1: no self-extractor)
    for (std::pair<std::string, long> e; list >> e.first >> e.second;) {
        SCOPED_TRACE(e.first);
        const std::string path = shellQuote(exePath(e.first)), data = exe(e.first);
        built += e.first.compare(0, 2, "pe") == 0;
        // Found or not, the stream is back at its first byte.
        std::string where = join(e.second < 0 ? "-" : std::to_string(e.second), 0);
        EXPECT_EQ(detected(data) + detected(data, 1 << 30), where + where);
        // Not reached through the format registry.
        tuskel_test::MemoryHostBuffer input(data);
        tuskel_test::RecordingEntryProcessor host;
        EXPECT_EQ(CommonDecompressor().decompress(&input, &host), 3);

        Recorder streamed, buffered;
        ChunkedInputStream in(data, 7);
        auto buffer = tuskel_test::memoryBuffer(data);
        std::string failed = thrown([&] { ZipExeUnarchiver(&in, streamed, nullptr).start(); }, false) + "|" +
                             thrown([&] { ZipExeUnarchiver(buffer.get(), buffered, nullptr).start(); }, false);
        if (e.second < 0) {
            EXPECT_EQ(failed, "not zip exe format|not zip exe format");
            continue;
        }
        EXPECT_EQ(failed, "no error|no error");
        std::string names = tuskel_test::commandOutput("unzip -Z1 " + path);
        std::replace(names.begin(), names.end(), '\n', ' ');
        for (Recorder* r : {&streamed, &buffered}) {
            std::string unpacked;
            for (const auto& out : r->outs) unpacked += out->data;
            EXPECT_EQ(r->names(), names + "$ ");
            EXPECT_TRUE(unpacked == tuskel_test::commandOutput("unzip -p " + path));
        }
    }
    EXPECT_EQ(built, 7);  // the MinGW cross compilers are there
}

TEST(ZipExe, HostileHeadersAnswerFalseOrTheRightPositionAndAllocateNoMoreThanTheInput) {
    const uint32_t raw = 0x400, size = 70000, at = 0x1234;
    const std::string data = pe(raw + size + 64, {{".text", 0x200, 0x100}, {".data", raw, size}});
    // Sections are read from the last: "_winzip" comes after ".rdata".
    const std::string winzip = pe(raw + size + 64, {{"_winzip", raw, size}, {".rdata", 0x200, 0x100}});
    const std::string ne = exe("ne-6a4.exe"), neScan = exe("ne-scan.exe"), fixed = marked(data, raw + 0x740, at);
    const std::string found = std::to_string(at);
    struct Case { std::string data, pos; } cases[] = {
        {fixed, found},
        {marked(marked(data, raw + 0x860, at), raw + 100, 1), found},  // the fixed places come first
        {data, "-"},
        // Around the 65,535-byte blocks, which overlap by 16, and the section's end.
        {marked(data, raw + 65518, at), found},
        {marked(data, raw + 65519, at), found},
        {marked(data, raw + 65520, at), found},
        {marked(data, raw + size - 17, at), found},
        {marked(data, raw + size - 16, at), "-"},
        // "_winzip" compares 4 bytes, its blocks overlap by 4: the word may lie behind a block, or the section.
        {marked(winzip, raw + 65530, at, 4), found},
        {marked(winzip, raw + 65531, at, 4), found},
        {marked(winzip, raw + size - 5, at, 4), found},
        {marked(winzip, raw + size - 4, at, 4), "-"},
        // Raw sizes of 0 and 4 GiB; a raw pointer whose sum with 0x740 wraps 32 bits to the marker.
        {marked(pe(raw + size, {{".data", raw, 0}}), raw + 0x740, at), "-"},
        {marked(pe(raw + size, {{".data", raw, 0xFFFFFFFF}}), raw + 5000, at), found},
        {marked(pe(raw + 0x900, {{".data", raw, 0xFFFFFFFF}}), raw + 5, at), "-"},  // the block arrives short
        {marked(pe(raw + size, {{".data", 0xFFFFFFF0, size}}), 0x730, at), "-"},
        // Section counts and header offsets past the end.
        {pe(raw, {}, 256), "-"},
        {pe(0x2000, {}, 257), "-"},
        {patched(fixed, 0x3C, 0xFFFFFFF0, 4), "-"},
        // The executable cut one byte before the marker's end.
        {fixed.substr(0, raw + 0x740 + 15), "-"},
        {fixed.substr(0, raw + 0x740 + 16), found},
        // NE: no segments (the 8 bytes before the table are read), an undefined shift, a sector past the end, a
        // segment too short to scan; DOS: no pages, so the image would end before it starts.
        {patched(ne, 0x80 + 0x1C, 0), "-"},
        {patched(ne, 0x80 + 0x32, 48), "-"},
        {patched(ne, 0x80 + 0x48, 0xFFFF), "-"},
        {patched(neScan, 0x80 + 0x4A, 15), "-"},
        {patched(exe("dos.exe"), 4, 0), "-"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        EXPECT_EQ(detected(c.data), join(c.pos, 0));
        auto buffer = tuskel_test::memoryBuffer(c.data);
        BufferBaseInputStream in(buffer.get());
        long pos = -1;
        tuskel_test::largestAllocation = 0;
        EXPECT_EQ(check_zipexe(in, pos), c.pos != "-");
        EXPECT_LE(tuskel_test::largestAllocation, c.data.size());
    }
    // 257 sections: refused before any section header is read.
    ChunkedInputStream in(pe(0x2000, {}, 257));
    long pos = 0;
    check_zipexe(in, pos);
    EXPECT_EQ(in.requests(), std::vector<int>({64, 64}));
    // A header offset that no long holds on i386 is refused without using up
    // the one reset of a buffered stream's mark, which the check needs last.
    auto far = tuskel_test::memoryBuffer(patched(fixed, 0x3C, 0x80000000u, 4));
    BufferBaseInputStream farStream(far.get());
    BufferedInputStream buffered(farStream);
    EXPECT_FALSE(check_zipexe(buffered, pos));
    EXPECT_EQ(buffered.read(), 'M');
}

#include <random>

#include "UnarchiverTesting.h"
#include "unarchiver/Crc.h"
#include "unarchiver/DeflateDecompressor.h"
#include "unarchiver/GzipConstants.h"
#include "unarchiver/GzipUnarchiver.h"
#include "utils/IOUtils.h"

using namespace unarchiver_test;
using tuskel_test::bytes;
typedef GzipConstants G;

namespace {

// Half compressible text, half noise: the deflate stream has both kinds of block.
std::string sample(size_t n) {
    std::string s = tuskel_test::patternBytes(n, 7);
    for (size_t i = 0; i < n / 2; ++i) s[i] = "the quick brown fox "[i % 20];
    return s;
}

Bytef* z(const char* text) { return reinterpret_cast<Bytef*>(const_cast<char*>(text)); }

}  // namespace

TEST(ArchiveModel, DefaultsRefuseAndTheDefaultProcessorSkips) {
    ChunkedInputStream in("");
    tuskel_test::CollectingOutputStream out;
    EXPECT_EQ(thrown<CompressionException>([&] { Decompressor().decompress(in, out); }),
              "Unimplemented @ ../../core/tuskel/include/unarchiver/Tuskel, line296");
    // The default processor keeps each info until the next one: an
    // unarchiver records a data descriptor into it after the data.
    ArchiveEntryProcessor processor;
    int action = 2;
    ArchiveEntryInfo* first = new ArchiveEntryInfo();
    EXPECT_EQ(processor.processEntry(first, action), nullptr);
    first->usize = 42;
    EXPECT_EQ(processor.processEntry(new ArchiveEntryInfo(), action = 1), nullptr);
    EXPECT_EQ(action, A::ACTION_SKIP);
}  // the leak checker proves both infos were released

TEST(GzipUnarchiver, ActsOnEveryActionCodeAndStopsAfterTheFirstMember) {
    std::string data = tuskel_test::patternBytes(140000, 3);
    for (size_t i = 0; i < 70000; ++i) data[i] = "GZIP member text, "[i % 18];
    gz_header h{};  // zlib writes every optional field
    h.time = 987654321, h.name = z("crafted.txt"), h.comment = z("a comment"), h.hcrc = 1;
    h.extra = z("AB\4\0wxyz"), h.extra_len = 8;
    std::string crafted = zlibDeflate(data, 31, 0, false, &h), plain = zlibDeflate(data, 31), badCrc = plain;
    badCrc[badCrc.size() - 8] ^= 0x55;  // intended: recorded, never compared with the data
    size_t n = plain.size();
    std::string stored = bytes({0x1F, 0x8B, 0, G::FNAME, 0, 0, 0, 0, 0, 3, 's', 0}) + data + plain.substr(n - 8);
    // The size offered (intended: 0, the trailer is read only after the body), then name, comment, MTIME, extra
    // field, CRC-32 and size as recorded.
    auto fields = [](const std::string& name, const std::string& tail) { return join(0, name, "", 0, "") + tail; };
    std::string t = join(zlibCrc(data), data.size()), none = join(0, 0), copy = plain.substr(10) + plain;
    std::string all = join(0, "crafted.txt", "a comment", 987654321, std::string("AB\4\0wxyz", 8)) + t;
    std::string behind = join(IOUtils::readUInt(&plain[10]), IOUtils::readUInt(&plain[14]));  // deflate data
    // Two members each time: what is written, what is thrown and the calls the processor sees, the fields, where
    // the input is left.
    struct Case { std::string file; int action; bool stream; std::string written, events, fields; size_t after; };
    Case cases[] = {
        {crafted, 2, true, data, "no error beFCf", all, crafted.size()},
        {plain, 2, true, data, "no error beFCf", fields("", t), n},
        {badCrc, 2, true, data, "no error beFCf", fields("", join(zlibCrc(data) ^ 0x55, data.size())), n},
        {plain, 1, true, copy, "no error beFCf", fields("", t), 2 * n},  // a raw copy takes everything
        {stored, 2, true, stored.substr(12) + stored, "no error beFCf", fields("s", t), 2 * stored.size()},
        {stored, 1, true, stored.substr(12) + stored, "no error beFCf", fields("s", t), 2 * stored.size()},
        {plain, 0, true, "", "no error beFCf", fields("", none), 2 * n},
        {plain, 7, true, "", "no error beFCf", fields("", none), 2 * n},  // unknown codes skip
        // Without a stream the "trailer" is read from behind the header.
        {plain, 2, false, "", "no error bef", fields("", behind), 18},
        {plain, -1, true, "", "Archiving aborted be", fields("", none), 10},
    };
    for (int chunk : {1, 7, 33791, 1 << 30}) {  // short reads move the copy's trailer window
        for (const Case& c : cases) {
            SCOPED_TRACE(c.fields + " action " + std::to_string(c.action) + " chunk " + std::to_string(chunk));
            ChunkedInputStream in(c.file + c.file, chunk);
            Recorder r;
            int usizeOffered = -1;
            r.decide = [&](ArchiveEntryInfo& e, int& action) { usizeOffered = e.usize, action = c.action; };
            r.giveStream = c.stream;
            std::string failed = thrown([&] { GzipUnarchiver(&in, r, nullptr).start(); }, false);
            EXPECT_EQ(failed + " " + r.events, c.events);
            EXPECT_TRUE(r.outs.at(0)->data == c.written);
            EXPECT_EQ(in.position(), c.after);
            const GzipInfo& g = static_cast<::GzipEntryInfo&>(*r.entries.at(0)).gzipInfo();
            EXPECT_EQ(join(usizeOffered, r.entries[0]->name, g.comment, r.entries[0]->time,
                           std::string(g.extra.get(), g.extraLength), g.crc32, g.isize), c.fields);
        }
    }
}

TEST(GzipUnarchiver, BrokenHeadersAndMembers) {
    auto head = [](int magic, int method, int flags) { return bytes({0x1F, magic, method, flags, 1, 2, 3, 4, 0, 3}); };
    // checkFormat's answer, what start() throws, the calls the processor sees.
    struct Case { std::string data; bool isGzip; const char *failure, *events; } cases[] = {
        {head(0x8B, 8, 0x20), false, "non-gzip format", "b"},
        {head(0x8B, 7, 0), false, "non-gzip format", "b"},
        {head(0x8C, 8, 0), false, "non-gzip format", "b"},
        {head(0x8B, 8, 0).substr(0, 5), false, "non-gzip format", "b"},
        // The entry is deleted, never handed over.
        {head(0x8B, 8, 0x1F), true, "unexpected EOF", "b"},
        {head(0x8B, 8, G::FNAME) + "name", true, "unexpected EOF", "b"},
        {head(0x8B, 8, G::FNAME) + bytes({'n', 0, 0xFF}), true, "inflate: error -3: invalid block type", "be"},
        // A short extra field passes unnoticed; the missing body is what fails.
        {head(0x8B, 8, G::FEXTRA) + bytes({100, 0}) + "abc", true, "inflate: error -5: ", "be"},
    };
    for (const Case& c : cases) {
        ChunkedInputStream in(c.data, 3);
        EXPECT_EQ(GzipUnarchiver::checkFormat(in), c.isGzip) << testing::PrintToString(c.data);
        EXPECT_EQ(in.position(), 0u);
        Recorder r;
        EXPECT_EQ(thrown([&] { GzipUnarchiver(&in, r, nullptr).start(); }, false), c.failure);
        EXPECT_EQ(r.events, c.events);
    }
}

TEST(Iso3309Crc, MatchesZlibAtRandomSplitPoints) {
    Iso3309Crc check;
    EXPECT_EQ(check.crc(), 0u);
    std::mt19937 rng(12345);
    for (size_t size : {0u, 1u, 7u, 8u, 9u, 255u, 4096u, 100003u}) {
        std::string data = tuskel_test::patternBytes(size, static_cast<unsigned>(size));
        for (int round = 0; round < 20; ++round) {
            Iso3309Crc& crc = check.reset();
            for (size_t pos = 0, n; pos < size; pos += n) {
                n = std::uniform_int_distribution<size_t>(0, std::min<size_t>(size - pos, 37))(rng);
                n == 1 && round % 2 ? crc.add(data[pos]) : crc.add(data.data() + pos, static_cast<unsigned>(n));
            }
            // A null block adds nothing.
            ASSERT_EQ(crc.add(nullptr, 100), zlibCrc(data)) << "size " << size << " round " << round;
        }
    }
}

// Sizes around the 51,200-byte output block, and letters that zlib may
// finish after a read that returned nothing (the last block fills just
// before the final symbols, already in its bit buffer).
TEST(DeflateDecompressor, StopsExactlyAfterTheDataAndWritesWholeBlocks) {
    std::vector<std::pair<std::string, std::string>> inputs;
    for (size_t n : {0u, 51199u, 51200u, 51201u, 300000u}) inputs.emplace_back(sample(n), zlibDeflate(sample(n), -15));
    for (unsigned seed = 1; seed <= 40; ++seed) {
        std::string letters = tuskel_test::patternBytes(51201, seed);
        for (char& c : letters) c = static_cast<char>('a' + static_cast<unsigned char>(c) % 10);
        inputs.emplace_back(letters, zlibDeflate(letters, -15, Z_FIXED));
    }
    for (const auto& input : inputs) {
        std::vector<int> blocks(input.first.size() / 51200, 51200);
        if (input.first.size() % 51200 != 0) blocks.push_back(static_cast<int>(input.first.size() % 51200));
        for (int chunk : {1, 7, 33791, 1 << 30}) {
            for (const char* tail : {"TRAILER!", ""}) {
                SCOPED_TRACE("size " + std::to_string(input.first.size()) + " chunk " + std::to_string(chunk) + tail);
                ChunkedInputStream in(input.second + tail, chunk);
                tuskel_test::CollectingOutputStream out;
                DeflateDecompressor(true, nullptr).decompress(in, 0, out);
                EXPECT_TRUE(out.data == input.first);
                EXPECT_EQ(out.writes, blocks);
                EXPECT_EQ(in.position(), input.second.size());
                EXPECT_EQ(in.requests(), std::vector<int>(in.requests().size(), 33792));
            }
        }
    }
}

TEST(DeflateDecompressor, FailsWithZlibsTextOrSkipsWhenTheProcessorSaysSo) {
    // Noise: each 33,792-byte read inflates to less than a 51,200-byte block.
    std::string plain = tuskel_test::patternBytes(200000, 9), packed = zlibDeflate(plain, -15);
    tuskel_test::CollectingOutputStream out;
    tuskel_test::ByteOnlyInputStream noMark(packed);
    ChunkedInputStream truncated(packed.substr(0, packed.size() / 2)), dictionary(zlibDeflate(plain, 15, 0, true));
    auto inflate = [&](InputStream& in, bool nowrap) {
        return thrown<CompressionException>([&] { DeflateDecompressor(nowrap, nullptr).decompress(in, 0, out); }, false);
    };
    // zlib gives no text for a plain lack of input; what came before stays written.
    EXPECT_EQ(inflate(truncated, true), "inflate: error -5: ");
    EXPECT_TRUE(out.data == plain.substr(0, out.data.size()) && !out.data.empty());
    EXPECT_EQ(inflate(dictionary, false), "inflate: need dictionary");
    EXPECT_EQ(inflate(noMark, true), "mark() not supported by input stream");
    EXPECT_EQ(noMark.calls, 0);
    // The getAction() call that first answers "skip", the archive's compressed
    // size, and where the input must stand afterwards.
    long size = static_cast<long>(packed.size());
    struct Case { int from; long stated, position; } cases[] = {
        {0, size, size}, {0, 0, 0}, {0, -5, 0}, {1, size, size}, {1, 100, 33792},  // the last: read past the stated end
    };
    for (const Case& c : cases) {
        SkippingProcessor processor;
        processor.from = c.from;
        ChunkedInputStream in(packed + "more");
        tuskel_test::CollectingOutputStream skipped;
        DeflateDecompressor(true, &processor).decompress(in, c.stated, skipped);
        EXPECT_EQ(static_cast<long>(in.position()), c.position) << c.from << "/" << c.stated;
        EXPECT_TRUE(skipped.writes.empty());  // intended: the pending partial block is dropped
    }
}

#include "UnarchiverTesting.h"
#include "unarchiver/ArchiveId.h"
#include "unarchiver/Crc.h"
#include "unarchiver/DeflateDecompressor.h"
#include "unarchiver/GzipConstants.h"
#include "unarchiver/GzipUnarchiver.h"
#include "util/Log.h"
#include "utils/IOUtils.h"

using namespace unarchiver_test;
using tuskel_test::bytes;
typedef GzipConstants G;

namespace {

// A format whose test reads a byte, then does what the current case asks.
struct ThrowingFormat : Unarchiver {
    static std::function<void()> fail;
    ThrowingFormat(InputStream*, ArchiveEntryProcessor&, DecompressProcessor*) {}
    ThrowingFormat(BufferBase*, ArchiveEntryProcessor&, DecompressProcessor*) {}
    static bool checkFormat(InputStream& in) { return in.read(), fail(), true; }
};
std::function<void()> ThrowingFormat::fail;

GzipInfo& header(Recorder& r) { return static_cast<::GzipEntryInfo&>(*r.entries.at(0)).gzipInfo(); }

Bytef* z(const char* text) { return reinterpret_cast<Bytef*>(const_cast<char*>(text)); }

}  // namespace

TEST(ArchiveModel, DefaultsAndTheOrderOfEntries) {
    ArchiveEntryInfo a, b;
    a.order = -2, b.order = 3, b.name = "a";
    EXPECT_TRUE(a < b && !(b < a));  // signed order, nothing else
    b.order = -2;
    EXPECT_FALSE(a < b || b < a);
    ChunkedInputStream in("");
    tuskel_test::CollectingOutputStream out;
    EXPECT_EQ(failure<ArchivingException>([&] { Unarchiver().start(); }), "Unimplemented");
    try {
        Decompressor().decompress(in, out);
        ADD_FAILURE();
    } catch (CompressionException& e) {
        EXPECT_EQ(e.getMessage() + " " + e.getErrorLocation(), "Unimplemented ../../core/tuskel/include/unarchiver/Tuskel, line296");
    }
    std::unique_ptr<Decompressor> d(Decompressor::newByAlgorithm(1));
    EXPECT_STREQ(dynamic_cast<DeflateDecompressor&>(*d).getAlgorithmName(), "inflate");
    EXPECT_TRUE(!Decompressor::newByAlgorithm(0) && !Decompressor::newByAlgorithm(2));
    // The default processor skips, and keeps each info until the next one:
    // an unarchiver records a data descriptor into it after the data.
    ArchiveEntryProcessor processor;
    int action = 2;
    ArchiveEntryInfo* first = new ArchiveEntryInfo();
    EXPECT_EQ(processor.processEntry(first, action), nullptr);
    first->usize = 42;
    EXPECT_EQ(processor.processEntry(new ArchiveEntryInfo(), action = 1), nullptr);
    EXPECT_EQ(action, A::ACTION_SKIP);
}  // the leak checker proves both infos were released

TEST(ArchiveFactory, GzipComesFirstAndAFailingFormatTestFallsThrough) {
    SimpleArchiveId<ThrowingFormat> extra;  // for this test, after GZIP and ZIP
    ArchiveFactory::factory->push_back(&extra);
    ThrowingFormat::fail = [] {};
    // Starts with the GZIP magic yet would also suit the later format.
    ChunkedInputStream gz(bytes({0x1F, 0x8B, 8, 0, 0, 0, 0, 0, 0, 3}) + "PK\3\4");
    ArchiveId* found = ArchiveFactory::identify(gz);
    EXPECT_EQ(found, (*ArchiveFactory::factory)[0]);
    EXPECT_EQ(gz.position(), 0u);
    std::unique_ptr<Crc> crc(found->crc()), other(found->crc());
    EXPECT_EQ(dynamic_cast<Iso3309Crc&>(*crc).add("a", 1), zlibCrc("a"));
    EXPECT_EQ(other->crc(), 0u);  // a fresh object each time
    // Only the two format failures are absorbed.
    std::pair<std::function<void()>, ArchiveId*> cases[] = {
        {[] {}, &extra},
        {[] { throw IOException("short"); }, &ARCHIVEID_NONE},
        {[] { throw ArchivingException("bad"); }, &ARCHIVEID_NONE},
    };
    ChunkedInputStream in("abcdefghijkl");  // neither GZIP nor ZIP
    for (const auto& c : cases) {
        ThrowingFormat::fail = c.first;
        EXPECT_EQ(ArchiveFactory::identify(in), c.second);
    }
    ThrowingFormat::fail = [] { throw CompressionException("other"); };
    EXPECT_EQ(failure([&] { ArchiveFactory::identify(in); }), "other");
    ArchiveFactory::factory->pop_back();
    EXPECT_FALSE(ARCHIVEID_NONE.accept(gz) || ARCHIVEID_UNKNOWN.accept(gz) || ARCHIVEID_NONE.crc());
}

TEST(GzipUnarchiver, ActsOnEveryActionCodeAndStopsAfterTheFirstMember) {
    std::string data = tuskel_test::patternBytes(140000, 3);
    for (size_t i = 0; i < 70000; ++i) data[i] = "GZIP member text, "[i % 18];
    gz_header h{};  // zlib writes every optional field
    h.time = 987654321, h.name = z("crafted.txt"), h.comment = z("a comment"), h.extra = z("AB\4\0wxyz"), h.extra_len = 8;
    h.hcrc = 1;
    std::string crafted = zlibDeflate(data, 31, 0, false, &h), plain = zlibDeflate(data, 31), badCrc = plain;
    badCrc[badCrc.size() - 8] ^= 0x55;  // intended: recorded, never compared with the data
    std::string stored = bytes({0x1F, 0x8B, 0, G::FNAME, 0, 0, 0, 0, 0, 3, 's', 0}) + data + plain.substr(plain.size() - 8);
    // What is written, the calls the processor sees, the entry's name.
    struct Case { std::string file; int action; bool stream; std::string written, events, name; } cases[] = {
        {crafted, 2, true, data, "beFCf", "crafted.txt"},
        {plain, 2, true, data, "beFCf", ""},
        {badCrc, 2, true, data, "beFCf", ""},
        {plain, 1, true, plain.substr(G::GZIPHDR), "beFCf", ""},  // raw copy, trailer included
        {stored, 2, true, stored.substr(G::GZIPHDR + 2), "beFCf", "s"},
        {stored, 1, true, stored.substr(G::GZIPHDR + 2), "beFCf", "s"},
        {plain, 0, true, "", "beFCf", ""},
        {plain, 7, true, "", "beFCf", ""},  // unknown codes skip
        {plain, 2, false, "", "bef", ""},
        {plain, -1, true, "", "be", ""},
    };
    for (int chunk : {1, 7, 33791, 1 << 30}) {  // short reads move the copy's trailer window
        for (const Case& c : cases) {
            SCOPED_TRACE(c.name + " action " + std::to_string(c.action) + " chunk " + std::to_string(chunk));
            bool deflated = c.file[2] == 8, copied = c.action == 1 || (c.action == 2 && !deflated);
            std::string input = copied ? c.file : c.file + c.file;  // a second member is never offered
            ChunkedInputStream in(input, chunk);
            ASSERT_TRUE(GzipUnarchiver::checkFormat(in));
            Recorder r;
            int usizeOffered = -1;
            r.decide = [&](ArchiveEntryInfo& e) { return usizeOffered = e.usize, c.action; };
            r.giveStream = c.stream;
            std::string failed = failure([&] { GzipUnarchiver(&in, r, nullptr).start(); });
            EXPECT_EQ(failed, c.action == -1 ? "Archiving aborted" : "no error");
            ASSERT_EQ(r.events, c.events);
            EXPECT_TRUE(r.outs[0]->data == c.written);
            EXPECT_EQ(usizeOffered, 0);  // intended: the trailer is read only after the body
            EXPECT_EQ(r.entries[0]->algorithm, deflated ? A::ALGORITHM_DEFLATE : A::ALGORITHM_STORED);
            GzipInfo& g = header(r);
            std::string fields = r.entries[0]->name + "|" + g.comment + "|" + std::to_string(r.entries[0]->time);
            EXPECT_EQ(fields + "|" + std::string(g.extra.get(), g.extraLength),
                      c.file == crafted ? std::string("crafted.txt|a comment|987654321|AB\4\0wxyz", 40) : c.name + "||0|");
            if (c.action == 0 || c.action == 7 || (c.action == 2 && c.stream)) {
                EXPECT_EQ(in.position(), copied || c.action != 2 ? input.size() : c.file.size());
            }
            if (c.action == 1 || (c.action == 2 && c.stream)) {
                EXPECT_EQ(g.crc32, IOUtils::readUInt(&c.file[c.file.size() - 8]));
                EXPECT_EQ(g.isize, data.size());
            }
        }
    }
}

TEST(GzipUnarchiver, BrokenHeadersAndMembers) {
    auto header = [](int magic, int method, int flags) { return bytes({0x1F, magic, method, flags, 1, 2, 3, 4, 0, 3}); };
    // checkFormat's answer, what start() throws, the calls the processor sees.
    struct Case { std::string data; bool isGzip; const char *failure, *events; } cases[] = {
        {header(0x8B, 0, 0), true, "no error", "beFCf"},  // stored, empty
        {header(0x8B, 8, 0x20), false, "non-gzip format", "b"},
        {header(0x8B, 7, 0), false, "non-gzip format", "b"},
        {header(0x8C, 8, 0), false, "non-gzip format", "b"},
        {header(0x8B, 8, 0).substr(0, 5), false, "non-gzip format", "b"},
        // The entry is deleted, never handed over.
        {header(0x8B, 8, 0x1F), true, "unexpected EOF", "b"},
        {header(0x8B, 8, G::FNAME) + "name", true, "unexpected EOF", "b"},
        {header(0x8B, 8, G::FNAME) + bytes({'n', 0, 0xFF}), true, "inflate: error -3: invalid block type", "be"},
        // A short extra field passes unnoticed; the missing body is what fails.
        {header(0x8B, 8, G::FEXTRA) + bytes({100, 0}) + "abc", true, "inflate: error -5: ", "be"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.data));
        ChunkedInputStream in(c.data, 3);
        EXPECT_EQ(GzipUnarchiver::checkFormat(in), c.isGzip);
        EXPECT_EQ(Utils::check_gzip(in), c.data[1] == '\x8B');  // the magic only
        EXPECT_EQ(in.position(), 0u);
        Recorder r;
        EXPECT_EQ(failure([&] { GzipUnarchiver(&in, r, nullptr).start(); }), c.failure);
        EXPECT_EQ(r.events, c.events);
    }
}

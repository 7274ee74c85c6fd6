#include <gtest/gtest.h>
#include <zlib.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/TestFiles.h"
#include "support/TestStreams.h"
#include "unarchiver/GzipConstants.h"
#include "unarchiver/GzipUnarchiver.h"
#include "util/Log.h"

using namespace QRN_SPACE;
using tuskel_test::bytes;
using tuskel_test::ChunkedInputStream;
using tuskel_test::CollectingOutputStream;
using tuskel_test::readFile;
using tuskel_test::shellQuote;

namespace {

// Writes GZIP files the way other producers do: Python's gzip module, and
// hand-built members with every optional field or the stored method.
const char* const kCraftScript = R"PY(
import gzip, struct, sys, zlib
d = sys.argv[1]
data = open(d + '/data', 'rb').read()
with open(d + '/python.gz', 'wb') as f:
    with gzip.GzipFile(filename='from-python.txt', mode='wb', fileobj=f, mtime=1234567890) as g:
        g.write(data)
def member(method, flags, body, extra=b'', name=b'', comment=b''):
    h = struct.pack('<HBBIBB', 0x8B1F, method, flags, 987654321, 2, 3)
    if flags & 4: h += struct.pack('<H', len(extra)) + extra
    if flags & 8: h += name + b'\0'
    if flags & 16: h += comment + b'\0'
    if flags & 2: h += struct.pack('<H', zlib.crc32(h) & 0xFFFF)
    return h + body + struct.pack('<II', zlib.crc32(data), len(data))
c = zlib.compressobj(9, zlib.DEFLATED, -15)
open(d + '/crafted.gz', 'wb').write(member(8, 2 | 4 | 8 | 16, c.compress(data) + c.flush(), b'AB\4\0wxyz', b'crafted.txt', b'a comment'))
open(d + '/stored.gz', 'wb').write(member(0, 8, data, name=b'stored.bin'))
)PY";

class GzipFiles : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        dir = new tuskel_test::TempDir();
        data = tuskel_test::patternBytes(140000, 3);
        for (size_t i = 0; i < 70000; ++i) data[i] = "GZIP member text, "[i % 18];
        tuskel_test::writeFile(path("data"), data);
        tuskel_test::writeFile(path("craft.py"), kCraftScript);
        std::string d = shellQuote(dir->path());
        ASSERT_EQ(tuskel_test::runCommand("cd " + d + " && gzip -c data > named.gz && gzip -n -c data > plain.gz"
                                          " && python3 craft.py ."), 0);
    }
    static void TearDownTestSuite() { delete dir; }
    static std::string path(const std::string& name) { return dir->file(name); }

    static tuskel_test::TempDir* dir;
    static std::string data;
};
tuskel_test::TempDir* GzipFiles::dir = nullptr;
std::string GzipFiles::data;

// Keeps every entry it is given and answers a fixed action; logs the calls
// it sees (b)egin, (e)ntry, (F)lush, (C)lose, (f)inish.
class Recorder : public ArchiveEntryProcessor {
public:
    explicit Recorder(int action, bool giveStream = true) : _action(action), _giveStream(giveStream) {}
    void beginUnarchiving() override { events += "b"; }
    OutputStream* processEntry(ArchiveEntryInfo* info, int& action) override {
        events += "e";
        entries.emplace_back(info);
        usizeSeen = info->usize;
        action = _action;
        return _giveStream ? &out : nullptr;
    }
    void endUnarchiving() override { events += "f"; }
    GzipInfo& header() { return static_cast<GzipEntryInfo&>(*entries.at(0)).gzipInfo(); }

    struct Probe : CollectingOutputStream {
        explicit Probe(std::string& log) : log(log) {}
        void flush() override { log += "F"; }
        void close() override { log += "C"; }
        std::string& log;
    };
    std::string events;
    Probe out{events};
    std::vector<std::unique_ptr<ArchiveEntryInfo>> entries;
    int usizeSeen = -1;

private:
    int _action;
    bool _giveStream;
};

template <class E>
std::string failure(const std::function<void()>& f) {
    try {
        f();
    } catch (E& e) {
        return e.getMessage();
    }
    return "no error";
}

unsigned int crcOf(const std::string& s) {
    return static_cast<unsigned int>(crc32(0L, reinterpret_cast<const Bytef*>(s.data()), static_cast<uInt>(s.size())));
}

}  // namespace

TEST_F(GzipFiles, UnpacksWhatRealToolsMakeAndStopsAfterTheTrailer) {
    struct Case {
        const char* file;
        const char* name;
    } cases[] = {{"named.gz", "data"}, {"plain.gz", ""}, {"python.gz", "from-python.txt"}, {"crafted.gz", "crafted.txt"}};
    for (const Case& c : cases) {
        std::string file = readFile(path(c.file));
        std::string reference = tuskel_test::commandOutput("gzip -dc " + shellQuote(path(c.file)));
        ASSERT_EQ(reference, data) << c.file;
        for (int chunk : {1, 7, 33791, 1 << 30}) {
            SCOPED_TRACE(std::string(c.file) + " chunk " + std::to_string(chunk));
            ChunkedInputStream in(file + file, chunk);  // a second member is never offered
            ASSERT_TRUE(GzipUnarchiver::checkFormat(in));
            Recorder recorder(ArchiveConstants::ACTION_DECOMPRESS);
            GzipUnarchiver(&in, recorder, nullptr).start();
            EXPECT_EQ(recorder.events, "beFCf");
            EXPECT_TRUE(recorder.out.data == reference);
            EXPECT_EQ(in.position(), file.size());
            ASSERT_EQ(recorder.entries.size(), 1u);
            EXPECT_EQ(recorder.entries[0]->name, c.name);
            EXPECT_EQ(recorder.entries[0]->algorithm, ArchiveConstants::ALGORITHM_DEFLATE);
            EXPECT_EQ(recorder.usizeSeen, 0);  // the trailer is read only after the body
            EXPECT_EQ(recorder.header().isize, data.size());
            EXPECT_EQ(recorder.header().crc32, crcOf(data));
        }
    }
    ChunkedInputStream in(readFile(path("crafted.gz")));
    Recorder recorder(ArchiveConstants::ACTION_SKIP);
    GzipUnarchiver(&in, recorder, nullptr).start();
    GzipInfo& h = recorder.header();
    EXPECT_EQ(recorder.entries[0]->time, 987654321u);
    EXPECT_EQ(std::string(h.extra.get(), h.extraLength), bytes({'A', 'B', 4, 0, 'w', 'x', 'y', 'z'}));
    EXPECT_EQ(h.comment, "a comment");
    EXPECT_EQ(h.caculateCrc16(), crcOf(readFile(path("crafted.gz")).substr(0, 10 + 2 + 8 + 12 + 10)) & 0xFFFF);
}

TEST_F(GzipFiles, ActsOnEveryActionCode) {
    std::string deflated = readFile(path("plain.gz"));
    std::string stored = readFile(path("stored.gz"));
    std::string rawDeflated = deflated.substr(GzipConstants::GZIPHDR);
    std::string rawStored = stored.substr(GzipConstants::GZIPHDR + sizeof "stored.bin");
    struct Case {
        const std::string* file;
        int action;
        bool giveStream;
        std::string written;
        const char* events;
    } cases[] = {
        {&deflated, 2, true, data, "beFCf"},
        {&deflated, 1, true, rawDeflated, "beFCf"},  // raw copy, trailer included
        {&stored, 2, true, rawStored, "beFCf"},
        {&stored, 1, true, rawStored, "beFCf"},
        {&deflated, 0, true, "", "beFCf"},
        {&deflated, 7, true, "", "beFCf"},  // unknown codes skip
        {&deflated, 2, false, "", "bef"},
        {&deflated, -1, true, "", "be"},
    };
    for (int chunk : {5, 1 << 30}) {  // short reads move the copy's trailer window
        for (const Case& c : cases) {
            SCOPED_TRACE("action " + std::to_string(c.action) + (c.file == &stored ? " stored" : " deflated"));
            ChunkedInputStream in(*c.file, chunk);
            Recorder recorder(c.action, c.giveStream);
            GzipUnarchiver unarchiver(&in, recorder, nullptr);
            if (c.action == -1) {
                EXPECT_EQ(failure<ArchivingException>([&] { unarchiver.start(); }), "Archiving aborted");
            } else {
                unarchiver.start();
            }
            EXPECT_EQ(recorder.events, c.events);
            EXPECT_TRUE(recorder.out.data == c.written);
            if (c.action == 0 || c.action == 7) {
                EXPECT_EQ(in.position(), c.file->size());
            }
            if (c.action == 1 || (c.action == 2 && c.giveStream)) {
                EXPECT_EQ(recorder.header().crc32, crcOf(data));
                EXPECT_EQ(recorder.header().isize, data.size());
            }
        }
    }
    std::string badCrc = deflated;
    badCrc[badCrc.size() - 8] ^= 0x55;  // not verified, only recorded
    ChunkedInputStream in(badCrc);
    Recorder checked(ArchiveConstants::ACTION_DECOMPRESS);
    GzipUnarchiver(&in, checked, nullptr).start();
    EXPECT_EQ(checked.header().crc32, crcOf(data) ^ 0x55);

    tuskel_test::StringBuffer buffer(deflated);
    Recorder recorder(ArchiveConstants::ACTION_DECOMPRESS);
    GzipUnarchiver(&buffer, recorder, nullptr).start();
    EXPECT_TRUE(recorder.out.data == data);
}

TEST(GzipHeader, RejectsWhatIsNotGzipAndKeepsThePosition) {
    struct Case {
        std::string header;
        bool isGzip;
    } cases[] = {
        {bytes({0x1F, 0x8B, 8, 0, 1, 2, 3, 4, 0, 3}), true},
        {bytes({0x1F, 0x8B, 0, 0, 1, 2, 3, 4, 0, 3}), true},  // stored
        {bytes({0x1F, 0x8B, 8, 0x1F, 1, 2, 3, 4, 0, 3}), true},
        {bytes({0x1F, 0x8B, 8, 0x20, 1, 2, 3, 4, 0, 3}), false},
        {bytes({0x1F, 0x8B, 7, 0, 1, 2, 3, 4, 0, 3}), false},
        {bytes({0x1F, 0x8C, 8, 0, 1, 2, 3, 4, 0, 3}), false},
        {bytes({0x1F, 0x8B, 8, 0, 1}), false},
    };
    for (const Case& c : cases) {
        ChunkedInputStream in(c.header, 3);
        EXPECT_EQ(GzipUnarchiver::checkFormat(in), c.isGzip) << testing::PrintToString(c.header);
        EXPECT_EQ(in.position(), 0u);
        if (c.isGzip) continue;
        Recorder recorder(ArchiveConstants::ACTION_DECOMPRESS);
        EXPECT_EQ(failure<ArchivingException>([&] { GzipUnarchiver(&in, recorder, nullptr).start(); }),
                  "non-gzip format");
        EXPECT_EQ(recorder.events, "b");
    }
}

TEST(GzipHeader, FailuresInsideTheMember) {
    std::string fixed = bytes({0x1F, 0x8B, 8, GzipConstants::FNAME, 0, 0, 0, 0, 0, 3});
    ChunkedInputStream unterminated(fixed + "name");  // the entry info is never handed over
    Recorder recorder(ArchiveConstants::ACTION_DECOMPRESS);
    EXPECT_EQ(failure<IOException>([&] { GzipUnarchiver(&unterminated, recorder, nullptr).start(); }), "unexpected EOF");
    EXPECT_EQ(recorder.events, "b");

    ChunkedInputStream corrupt(fixed + std::string("n\0", 2) + "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(failure<CompressionException>([&] { GzipUnarchiver(&corrupt, recorder, nullptr).start(); }),
              "inflate: error -3: invalid block type");
    EXPECT_EQ(recorder.entries.size(), 1u);

    // A short extra field passes unnoticed; the missing body is what fails.
    ChunkedInputStream shortExtra(bytes({0x1F, 0x8B, 8, GzipConstants::FEXTRA, 0, 0, 0, 0, 0, 3, 100, 0}) + "abc");
    EXPECT_EQ(failure<CompressionException>([&] { GzipUnarchiver(&shortExtra, recorder, nullptr).start(); }),
              "inflate: error -5: ");
}

TEST(GzipHeader, CheckGzipLooksAtTheMagicOnly) {
    ChunkedInputStream gz(bytes({0x1F, 0x8B, 0xFF})), zip("PK\3\4"), tiny("\x1F");
    EXPECT_TRUE(Utils::check_gzip(gz));
    EXPECT_FALSE(Utils::check_gzip(zip));
    EXPECT_EQ(gz.position() + zip.position(), 0u);
    EXPECT_THROW(Utils::check_gzip(tiny), IOException);
}

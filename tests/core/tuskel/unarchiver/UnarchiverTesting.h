#ifndef TUSKEL_TEST_UNARCHIVERTESTING_H
#define TUSKEL_TEST_UNARCHIVERTESTING_H

// Shared by the unarchiver tests: zlib as the reference codec, tool-made
// archives, and processors that record what they are offered.

#include <gtest/gtest.h>
#include <zlib.h>

#include <map>
#include <sstream>

#include "support/TestFiles.h"
#include "support/TestStreams.h"
#include "support/Thrown.h"
#include "unarchiver/Tuskel.h"
#include "utils/IOUtils.h"

namespace unarchiver_test {

using namespace QRN_SPACE;
using tuskel_test::ChunkedInputStream;
typedef ArchiveConstants A;

using tuskel_test::thrown;

// Its arguments as text, each followed by a blank.
template <class... T>
std::string join(const T&... values) {
    std::ostringstream s;
    ((s << values << ' '), ...);
    return s.str();
}

// Where `script` (Python) made `name`: each script runs once per test run and set of arguments, in a
// directory of its own.
inline std::string madeBy(const std::string& script, const std::string& name, const std::string& arguments = "") {
    static std::map<std::string, std::unique_ptr<tuskel_test::TempDir>> dirs;
    std::unique_ptr<tuskel_test::TempDir>& dir = dirs[script + " " + arguments];
    if (!dir) {
        dir.reset(new tuskel_test::TempDir());
        using tuskel_test::shellQuote;
        std::string command = "cd " + shellQuote(dir->path()) + " && python3 " + shellQuote(script) + " " + arguments;
        EXPECT_EQ(tuskel_test::runCommand(command), 0);
    }
    return dir->file(name);
}

// `data` with a little-endian field of `width` bytes (2 or 4) at `at` set to `value`.
inline std::string patched(std::string data, size_t at, long value, int width = 2) {
    width == 2 ? IOUtils::writeUShort(&data[at], static_cast<unsigned>(value)) : IOUtils::writeUInt(&data[at], value);
    return data;
}

inline unsigned zlibCrc(const std::string& s) {
    return static_cast<unsigned>(crc32(0L, reinterpret_cast<const Bytef*>(s.data()), static_cast<uInt>(s.size())));
}

// zlib's own deflate: windowBits -15 raw, 15 zlib-wrapped, 31 GZIP with `header`.
inline std::string zlibDeflate(const std::string& data, int windowBits, int strategy = Z_DEFAULT_STRATEGY,
                               bool presetDictionary = false, gz_header* header = nullptr) {
    z_stream z{};
    EXPECT_EQ(deflateInit2(&z, 6, Z_DEFLATED, windowBits, 8, strategy), Z_OK);
    if (header != nullptr) deflateSetHeader(&z, header);
    if (presetDictionary) deflateSetDictionary(&z, reinterpret_cast<const Bytef*>("the quick"), 9);
    std::string out(deflateBound(&z, data.size()) + 100, '\0');  // room for the GZIP header fields
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data())), z.avail_in = static_cast<uInt>(data.size());
    z.next_out = reinterpret_cast<Bytef*>(&out[0]), z.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&z, Z_FINISH), Z_STREAM_END);
    deflateEnd(&z);
    return out.substr(0, z.total_out);
}

// Answers 2, "skip the rest", from its `from`-th getAction() call on (by
// default never), 1 before; counts init().
struct SkippingProcessor : DecompressProcessor {
    int from = 1 << 30, calls = 0, inits = 0;
    int init() override { return ++inits, 0; }
    void setFileName(std::string&) override {}
    void setContentType(std::string&) override {}
    int check(InputStream*) override { return 0; }
    int check(BufferBase*) override { return 0; }
    int requiredLength() override { return 0; }
    int getAction() override { return calls++ >= from ? 2 : 1; }
};

// Keeps every entry it is offered (it owns them) and answers each with a
// collecting stream of its own, or with none. `decide` may set the action
// (left alone, it stays as the unarchiver passed it). `events` logs the
// calls: b)egin, e)ntry, F)lush, C)lose, f)inish.
struct Recorder : ArchiveEntryProcessor {
    struct Out : tuskel_test::CollectingOutputStream {
        explicit Out(std::string* events) : events(events) {}
        void flush() override { *events += "F"; }
        void close() override { *events += "C"; }
        std::string* events;
    };
    typedef std::function<void(ArchiveEntryInfo&, int&)> Decide;
    Decide decide = [](ArchiveEntryInfo&, int& a) { a = A::ACTION_DECOMPRESS; };
    bool giveStream = true;
    std::string events;
    std::vector<std::unique_ptr<ArchiveEntryInfo>> entries;
    std::vector<std::unique_ptr<Out>> outs;
    std::vector<std::string> contained;  // what was being handled when releaseSession() ran

    void beginUnarchiving() override { events += "b"; }
    void endUnarchiving() override { events += "f"; }
    // Runs inside the unarchiver's handler: rethrowing shows what it holds.
    void releaseSession() override { try { throw; } catch (Exception& e) { contained.push_back(e.getMessage()); } }
    OutputStream* processEntry(ArchiveEntryInfo* info, int& action) override {
        events += "e";
        entries.emplace_back(info);
        decide(*info, action);
        outs.emplace_back(new Out(&events));
        return giveStream ? outs.back().get() : nullptr;
    }
    // The names offered, in order; an empty name shows as "$".
    std::string names() const {
        std::string all;
        for (const auto& e : entries) all += (e->name.empty() ? "$" : e->name) + " ";
        return all;
    }
};

}  // namespace unarchiver_test

#endif

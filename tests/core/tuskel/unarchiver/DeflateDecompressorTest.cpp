#include <gtest/gtest.h>
#include <zlib.h>

#include <functional>
#include <string>

#include "support/TestStreams.h"
#include "unarchiver/DeflateDecompressor.h"

using namespace QRN_SPACE;
using tuskel_test::ChunkedInputStream;
using tuskel_test::CollectingOutputStream;

namespace {

// Compresses with zlib's own deflate: raw (windowBits -15) or zlib-wrapped.
std::string deflateWith(const std::string& data, int windowBits, const std::string& dictionary = "",
                        int strategy = Z_DEFAULT_STRATEGY) {
    z_stream z{};
    EXPECT_EQ(deflateInit2(&z, 6, Z_DEFLATED, windowBits, 8, strategy), Z_OK);
    if (!dictionary.empty()) {
        deflateSetDictionary(&z, reinterpret_cast<const Bytef*>(dictionary.data()), static_cast<uInt>(dictionary.size()));
    }
    std::string out(deflateBound(&z, data.size()), '\0');
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    z.avail_in = static_cast<uInt>(data.size());
    z.next_out = reinterpret_cast<Bytef*>(&out[0]);
    z.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&z, Z_FINISH), Z_STREAM_END);
    out.resize(z.total_out);
    deflateEnd(&z);
    return out;
}

std::string rawDeflate(const std::string& data) { return deflateWith(data, -15); }

// Half compressible text, half noise: the deflate stream has both kinds of block.
std::string sample(size_t n) {
    std::string s = tuskel_test::patternBytes(n, 7);
    for (size_t i = 0; i < n / 2; ++i) s[i] = "the quick brown fox "[i % 20];
    return s;
}

std::string compressionError(const std::function<void()>& f) {
    try {
        f();
    } catch (CompressionException& e) {
        return e.getMessage();
    }
    return "no error";
}

// Answers `action` from its `from`-th getAction() call on.
struct FakeProcessor : DecompressProcessor {
    int from = 0, action = 2, calls = 0;
    int init() override { return 0; }
    void setFileName(std::string&) override {}
    void setContentType(std::string&) override {}
    int check(InputStream*) override { return 0; }
    int check(BufferBase*) override { return 0; }
    int requiredLength() override { return 0; }
    int getAction() override { return calls++ >= from ? action : 1; }
};

}  // namespace

TEST(DeflateDecompressor, StopsExactlyAfterTheDataAndWritesWholeBlocks) {
    const std::string after = "TRAILER!";
    for (size_t size : {0u, 51199u, 51200u, 51201u, 300000u}) {
        std::string plain = sample(size);
        std::string packed = rawDeflate(plain);
        std::vector<int> blocks(size / 51200, 51200);
        if (size % 51200 != 0) blocks.push_back(static_cast<int>(size % 51200));
        for (int chunk : {1, 7, 33791, 1 << 30}) {
            for (const std::string& tail : {after, std::string()}) {
                ChunkedInputStream in(packed + tail, chunk);
                CollectingOutputStream out;
                DeflateDecompressor(true, nullptr).decompress(in, 0, out);
                SCOPED_TRACE("size " + std::to_string(size) + " chunk " + std::to_string(chunk));
                EXPECT_EQ(out.data, plain);
                EXPECT_EQ(out.writes, blocks);
                EXPECT_EQ(in.position(), packed.size());
                for (int request : in.requests()) EXPECT_EQ(request, 33792);
            }
        }
    }
}

// When the last output block fills just before the final symbols, zlib may
// already hold the rest of the input in its bit buffer: it then finishes
// after a read that returned nothing, and nothing is to be given back.
TEST(DeflateDecompressor, FinishesAfterAnEmptyReadAtTheEndOfInput) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        std::string letters = tuskel_test::patternBytes(51201, seed);
        for (char& c : letters) c = static_cast<char>('a' + static_cast<unsigned char>(c) % 10);
        std::string packed = deflateWith(letters, -15, "", Z_FIXED);
        ChunkedInputStream in(packed);
        CollectingOutputStream out;
        DeflateDecompressor(true, nullptr).decompress(in, 0, out);
        EXPECT_EQ(in.position(), packed.size()) << seed;
        EXPECT_EQ(out.data, letters);
    }
}

TEST(DeflateDecompressor, ZlibWrappedStreams) {
    std::string plain = sample(70000);
    ChunkedInputStream in(deflateWith(plain, 15) + "x", 1000);
    CollectingOutputStream out;
    DeflateDecompressor(false, nullptr).decompress(in, 0, out);
    EXPECT_EQ(out.data, plain);
    EXPECT_EQ(in.read(), 'x');

    ChunkedInputStream withDictionary(deflateWith(plain, 15, "the quick"));
    EXPECT_EQ(compressionError([&] { DeflateDecompressor(false, nullptr).decompress(withDictionary, 0, out); }),
              "inflate: need dictionary");
}

TEST(DeflateDecompressor, FailuresBecomeExceptionsWithZlibsText) {
    std::string packed = rawDeflate(sample(100000));
    CollectingOutputStream out;

    ChunkedInputStream truncated(packed.substr(0, packed.size() / 2));
    EXPECT_EQ(compressionError([&] { DeflateDecompressor(true, nullptr).decompress(truncated, 0, out); }),
              "inflate: error -5: ");  // zlib gives no text for a plain lack of input
    EXPECT_EQ(out.data, sample(100000).substr(0, out.data.size()));  // what came before stays written

    ChunkedInputStream corrupt(std::string(1, '\xFF') + packed);  // reserved block type 3
    EXPECT_EQ(compressionError([&] { DeflateDecompressor(true, nullptr).decompress(corrupt, 0, out); }),
              "inflate: error -3: invalid block type");

    tuskel_test::ByteOnlyInputStream noMark(packed);
    EXPECT_EQ(compressionError([&] { DeflateDecompressor(true, nullptr).decompress(noMark, 0, out); }),
              "mark() not supported by input stream");
    EXPECT_EQ(noMark.calls, 0);

    ChunkedInputStream twoStream(packed);
    EXPECT_EQ(compressionError([&] { DeflateDecompressor(true, nullptr).decompress(twoStream, out); }), "Unimplemented");

    struct FailingOutput : CollectingOutputStream {
        using OutputStream::write;
        int write(const char*, int) override { throw IOException("disk full"); }
    } failing;
    ChunkedInputStream in(packed);
    EXPECT_THROW(DeflateDecompressor(true, nullptr).decompress(in, 0, failing), IOException);
}

TEST(DeflateDecompressor, ProcessorCanSkipTheRestOfTheEntry) {
    std::string packed = rawDeflate(sample(200000));
    struct Case {
        int from;        // getAction() call that first answers "skip"
        long stated;     // the archive's compressed size
        size_t position; // where the input must stand afterwards
    } cases[] = {
        {0, static_cast<long>(packed.size()), packed.size()},
        {0, 0, 0},
        {0, -5, 0},
        {1, static_cast<long>(packed.size()), packed.size()},  // after one block read
        {1, 100, 33792},                                       // already read past the stated end
    };
    for (const Case& c : cases) {
        FakeProcessor processor;
        processor.from = c.from;
        ChunkedInputStream in(packed + "more");
        CollectingOutputStream out;
        DeflateDecompressor(true, &processor).decompress(in, c.stated, out);
        EXPECT_EQ(in.position(), c.position) << c.from << "/" << c.stated;
        for (int w : out.writes) EXPECT_EQ(w, 51200);  // the pending partial block is dropped
        EXPECT_EQ(out.writes.empty(), c.from == 0);
    }
}

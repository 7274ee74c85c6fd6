#include <random>

#include "UnarchiverTesting.h"
#include "unarchiver/Crc.h"
#include "unarchiver/DeflateDecompressor.h"

using namespace unarchiver_test;
using tuskel_test::CollectingOutputStream;

namespace {

// Half compressible text, half noise: the deflate stream has both kinds of block.
std::string sample(size_t n) {
    std::string s = tuskel_test::patternBytes(n, 7);
    for (size_t i = 0; i < n / 2; ++i) s[i] = "the quick brown fox "[i % 20];
    return s;
}

}  // namespace

TEST(Iso3309Crc, MatchesZlibAtRandomSplitPoints) {
    Iso3309Crc check;
    EXPECT_EQ(check.add("123456789", 9), 0xCBF43926u);
    EXPECT_EQ(check.add(nullptr, 100), 0xCBF43926u);  // a null block adds nothing
    EXPECT_EQ(check.reset().crc(), 0u);
    std::mt19937 rng(12345);
    for (size_t size : {0u, 1u, 7u, 8u, 9u, 255u, 4096u, 100003u}) {
        std::string data = tuskel_test::patternBytes(size, static_cast<unsigned>(size));
        for (int round = 0; round < 20; ++round) {
            Iso3309Crc crc;
            for (size_t pos = 0, n; pos < size; pos += n) {
                n = std::uniform_int_distribution<size_t>(0, std::min<size_t>(size - pos, 37))(rng);
                // The single-byte form in the mix.
                n == 1 && round % 2 ? crc.add(data[pos]) : crc.add(data.data() + pos, static_cast<unsigned>(n));
            }
            ASSERT_EQ(crc.crc(), zlibCrc(data)) << "size " << size << " round " << round;
        }
    }
}

// Sizes around the 51,200-byte output block, and letters that zlib may
// finish after a read that returned nothing (the last block fills just
// before the final symbols, already in its bit buffer).
TEST(DeflateDecompressor, StopsExactlyAfterTheDataAndWritesWholeBlocks) {
    std::vector<std::pair<std::string, std::string>> inputs;
    for (size_t size : {0u, 51199u, 51200u, 51201u, 300000u}) inputs.emplace_back(sample(size), zlibDeflate(sample(size), -15));
    for (unsigned seed = 1; seed <= 40; ++seed) {
        std::string letters = tuskel_test::patternBytes(51201, seed);
        for (char& c : letters) c = static_cast<char>('a' + static_cast<unsigned char>(c) % 10);
        inputs.emplace_back(letters, zlibDeflate(letters, -15, Z_FIXED));
    }
    for (const auto& input : inputs) {
        size_t size = input.first.size();
        std::vector<int> blocks(size / 51200, 51200);
        if (size % 51200 != 0) blocks.push_back(static_cast<int>(size % 51200));
        for (int chunk : {1, 7, 33791, 1 << 30}) {
            for (const char* tail : {"TRAILER!", ""}) {
                SCOPED_TRACE("size " + std::to_string(size) + " chunk " + std::to_string(chunk) + " " + tail);
                ChunkedInputStream in(input.second + tail, chunk);
                CollectingOutputStream out;
                DeflateDecompressor(true, nullptr).decompress(in, 0, out);
                EXPECT_TRUE(out.data == input.first);
                EXPECT_EQ(out.writes, blocks);
                EXPECT_EQ(in.position(), input.second.size());
                EXPECT_EQ(in.requests(), std::vector<int>(in.requests().size(), 33792));
            }
        }
    }
}

TEST(DeflateDecompressor, FailuresBecomeExceptionsWithZlibsText) {
    std::string plain = sample(100000), packed = zlibDeflate(plain, -15);
    CollectingOutputStream out;
    tuskel_test::ByteOnlyInputStream noMark(packed);
    ChunkedInputStream truncated(packed.substr(0, packed.size() / 2)), dictionary(zlibDeflate(plain, 15, 0, true));
    auto inflate = [&](InputStream& in, bool nowrap) {
        return failure<CompressionException>([&] { DeflateDecompressor(nowrap, nullptr).decompress(in, 0, out); });
    };
    // zlib gives no text for a plain lack of input; what came before stays written.
    EXPECT_EQ(inflate(truncated, true), "inflate: error -5: ");
    EXPECT_TRUE(out.data == plain.substr(0, out.data.size()) && !out.data.empty());
    EXPECT_EQ(inflate(dictionary, false), "inflate: need dictionary");
    EXPECT_EQ(inflate(noMark, true), "mark() not supported by input stream");
    EXPECT_EQ(noMark.calls, 0);
    EXPECT_EQ(failure<CompressionException>([&] { DeflateDecompressor(true, nullptr).decompress(noMark, out); }),
              "Unimplemented");
}

TEST(DeflateDecompressor, ProcessorCanSkipTheRestOfTheEntry) {
    std::string packed = zlibDeflate(sample(200000), -15);
    long size = static_cast<long>(packed.size());
    // getAction() call that first answers "skip", the archive's compressed
    // size, and where the input must stand afterwards.
    struct Case { int from; long stated, position; } cases[] = {
        {0, size, size}, {0, 0, 0}, {0, -5, 0}, {1, size, size}, {1, 100, 33792},  // the last: read past the stated end
    };
    for (const Case& c : cases) {
        SkippingProcessor processor;
        processor.from = c.from;
        ChunkedInputStream in(packed + "more");
        CollectingOutputStream out;
        DeflateDecompressor(true, &processor).decompress(in, c.stated, out);
        EXPECT_EQ(static_cast<long>(in.position()), c.position) << c.from << "/" << c.stated;
        // Intended: the pending partial block is dropped.
        EXPECT_EQ(out.writes, std::vector<int>(c.from == 0 ? 0 : 1, 51200));
    }
}

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>
#include <string>

#include "support/TestStreams.h"
#include "unarchiver/Crc.h"

using namespace QRN_SPACE;

namespace {

unsigned int zlibCrc(const std::string& s) {
    return static_cast<unsigned int>(crc32(0L, reinterpret_cast<const Bytef*>(s.data()), static_cast<uInt>(s.size())));
}

}  // namespace

TEST(Iso3309Crc, KnownValuesAndNoOps) {
    Iso3309Crc crc;
    EXPECT_EQ(crc.crc(), 0u);
    EXPECT_EQ(crc.add("123456789", 9), 0xCBF43926u);
    EXPECT_EQ(crc.add(nullptr, 100), 0xCBF43926u);
    EXPECT_EQ(crc.add("x", 0), 0xCBF43926u);
    EXPECT_EQ(crc.crc(), 0xCBF43926u);
    EXPECT_EQ(crc.reset().crc(), 0u);
    EXPECT_EQ(crc.add('1'), zlibCrc("1"));
}

TEST(Iso3309Crc, MatchesZlibAtRandomSplitPoints) {
    std::mt19937 rng(12345);
    for (size_t size : {0u, 1u, 7u, 8u, 9u, 255u, 4096u, 100003u}) {
        std::string data = tuskel_test::patternBytes(size, static_cast<unsigned>(size));
        for (int round = 0; round < 20; ++round) {
            Iso3309Crc crc;
            size_t pos = 0;
            while (pos < size) {
                size_t n = std::uniform_int_distribution<size_t>(0, std::min<size_t>(size - pos, 37))(rng);
                if (n == 1 && round % 2 == 1) {
                    crc.add(data[pos]);  // the single-byte form in the mix
                } else {
                    crc.add(data.data() + pos, static_cast<unsigned int>(n));
                }
                pos += n;
            }
            ASSERT_EQ(crc.crc(), zlibCrc(data)) << "size " << size << " round " << round;
        }
    }
}

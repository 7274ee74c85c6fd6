#include <array>
#include <cstdint>

#include <zlib.h>

#include "unarchiver/Crc.h"

namespace QRN_SPACE {

namespace {

const std::uint32_t kPolynomial = 0xEDB88320u;

// Entry n is n run through eight reflected shift-and-XOR steps. Evaluated by
// the compiler: the table is part of the image, never built at start-up.
constexpr std::array<std::uint32_t, 256> makeTable() {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t n = 0; n < 256; ++n) {
        std::uint32_t c = n;
        for (int bit = 0; bit < 8; ++bit) c = (c & 1u) ? (c >> 1) ^ kPolynomial : c >> 1;
        table[n] = c;
    }
    return table;
}

constexpr std::array<std::uint32_t, 256> kTable = makeTable();
static_assert(kTable[1] == 0x77073096u && kTable[255] == 0x2D02EF8Du, "CRC-32 table");

inline std::uint32_t step(std::uint32_t reg, unsigned char byte) {
    return (reg >> 8) ^ kTable[(byte ^ reg) & 0xFFu];
}

}  // namespace

Crc::~Crc() = default;

Iso3309Crc::~Iso3309Crc() = default;

unsigned int Iso3309Crc::add(char c) {
    _register = step(_register, static_cast<unsigned char>(c));
    return ~_register;
}

// zlib's CRC-32 is the same function (same polynomial, same conditioning)
// and folds several words at a time; it takes and gives the complemented
// value, which is what the register is not.
unsigned int Iso3309Crc::add(const void* p, unsigned int n) {
    if (p == nullptr) return ~_register;
    _register = ~static_cast<std::uint32_t>(crc32_z(~_register, static_cast<const Bytef*>(p), n));
    return ~_register;
}

unsigned int Iso3309Crc::crc() { return ~_register; }

Iso3309Crc& Iso3309Crc::reset() {
    _register = INITIAL;
    return *this;
}

}  // namespace QRN_SPACE

#include <array>
#include <cstdint>

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

// Slice k maps a byte to its effect on the register k bytes further on, so
// that eight bytes fold in with eight independent lookups instead of a chain
// of eight dependent ones. Slice 0 is the table itself.
using Slices = std::array<std::array<std::uint32_t, 256>, 8>;
constexpr Slices makeSlices() {
    Slices slices{};
    slices[0] = kTable;
    for (int k = 1; k < 8; ++k) {
        for (int n = 0; n < 256; ++n) {
            const std::uint32_t c = slices[k - 1][n];
            slices[k][n] = (c >> 8) ^ kTable[c & 0xFFu];
        }
    }
    return slices;
}

constexpr Slices kSlices = makeSlices();

inline std::uint32_t step(std::uint32_t reg, unsigned char byte) {
    return (reg >> 8) ^ kTable[(byte ^ reg) & 0xFFu];
}

inline std::uint32_t littleEndian(const unsigned char* b) {
    return b[0] | (b[1] << 8) | (b[2] << 16) | (static_cast<std::uint32_t>(b[3]) << 24);
}

// Eight bytes at once; the same register as eight single steps.
inline std::uint32_t step8(std::uint32_t reg, const unsigned char* b) {
    const std::uint32_t lo = reg ^ littleEndian(b);
    const std::uint32_t hi = littleEndian(b + 4);
    return kSlices[7][lo & 0xFFu] ^ kSlices[6][(lo >> 8) & 0xFFu] ^ kSlices[5][(lo >> 16) & 0xFFu] ^
           kSlices[4][lo >> 24] ^ kSlices[3][hi & 0xFFu] ^ kSlices[2][(hi >> 8) & 0xFFu] ^
           kSlices[1][(hi >> 16) & 0xFFu] ^ kSlices[0][hi >> 24];
}

}  // namespace

Crc::~Crc() = default;

Iso3309Crc::~Iso3309Crc() = default;

unsigned int Iso3309Crc::add(char c) {
    _register = step(_register, static_cast<unsigned char>(c));
    return ~_register;
}

unsigned int Iso3309Crc::add(const void* p, unsigned int n) {
    if (p == nullptr) return ~_register;
    const unsigned char* b = static_cast<const unsigned char*>(p);
    std::uint32_t reg = _register;
    for (; n >= 8; n -= 8, b += 8) reg = step8(reg, b);
    while (n-- > 0) reg = step(reg, *b++);
    _register = reg;
    return ~_register;
}

unsigned int Iso3309Crc::crc() { return ~_register; }

Iso3309Crc& Iso3309Crc::reset() {
    _register = INITIAL;
    return *this;
}

}  // namespace QRN_SPACE

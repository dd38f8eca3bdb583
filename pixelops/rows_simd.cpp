// Copies and table look-ups.
#include "pixelops/rows.h"

#include "pixelops/byte_lanes.h"

namespace pixelops {
namespace SIMD_LEVEL {
namespace {

#if defined(__AVX512VBMI__)

// Two permutations look up both halves of the table; the code's top bit chooses.
class Table {
public:
    explicit Table(const std::uint8_t* results)
        : low_{_mm512_loadu_si512(results), _mm512_loadu_si512(results + 64)},
          high_{_mm512_loadu_si512(results + 128), _mm512_loadu_si512(results + 192)} {}
    Codes operator()(Codes code) const {
        const Codes low{_mm512_permutex2var_epi8(low_[0], code.raw, low_[1])};
        const Codes high{_mm512_permutex2var_epi8(high_[0], code.raw, high_[1])};
        return hn::IfThenElse(hn::MaskFromVec(code), high, low);
    }

private:
    __m512i low_[2], high_[2];
};

#else

// Sixteen tables of 16 results each: all are asked for the code's low four bits, the high four choose one by one.
class Table {
public:
    explicit Table(const std::uint8_t* results) {
        for (std::size_t i = 0; i < 16; ++i)
            parts_[i] = hn::BitCast(Signed(), hn::LoadDup128(Bytes(), results + 16 * i));
    }
    Codes operator()(Codes code) const {
        const Signed d;
        const auto low = hn::BitCast(d, hn::And(code, hn::Set(Bytes(), 15)));
        const auto bit7 = hn::BitCast(d, code), bit6 = hn::Add(bit7, bit7), bit5 = hn::Add(bit6, bit6);
        const hn::Vec<Signed> bits[] = {hn::Add(bit5, bit5), bit5, bit6, bit7}; // each as a sign
        return hn::BitCast(Bytes(), choose<4>(parts_, low, bits));
    }

private:
    using Signed = hn::RebindToSigned<Bytes>;

    template <int kBits>
    static hn::Vec<Signed> choose(const hn::Vec<Signed>* parts, hn::Vec<Signed> low, const hn::Vec<Signed>* bits) {
        if constexpr (kBits == 0) {
            return hn::TableLookupBytes(*parts, low);
        } else {
            const auto first = choose<kBits - 1>(parts, low, bits);
            const auto second = choose<kBits - 1>(parts + (1 << (kBits - 1)), low, bits);
            return hn::IfNegativeThenElse(bits[kBits - 1], second, first);
        }
    }

    hn::Vec<Signed> parts_[16];
};

#endif

} // namespace

void copyRow(const void* from, void* to, std::size_t bytes) {
    if (from == to) return;
    if (bytes < kStreamedRow) {
        std::memcpy(to, from, bytes);
        return;
    }
    constexpr std::size_t kBlock = 64;
    const auto step = [](auto streamed, std::size_t, std::uint8_t* t, const std::uint8_t* s) {
        for (std::size_t i = 0; i < kBlock; i += kCodes) put<streamed>(hn::LoadU(Bytes(), s + i), Bytes(), t + i);
    };
    forBlocks<kBlock, 1>(static_cast<std::uint8_t*>(to), bytes, step, static_cast<const std::uint8_t*>(from));
}

void applyTable(const ByteTable& byteTable, const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) {
    const Table table(byteTable.results);
    const auto map = [&](Codes c) {
        // 255 for alpha, which so stays what it is.
        return hn::Min(hn::Or(table(c), codes({0, 0, 0, 255})), alphas(c));
    };
    forCodes(to, pixels, map, from);
}

void applyTableTo(std::uint32_t chosen, const ByteTable& byteTable, const std::uint8_t* from, std::uint8_t* to,
                  std::size_t pixels) {
    const Table table(byteTable.results);
    const auto mapped = hn::MaskFromVec(hn::BitCast(Bytes(), hn::Set(hn::Repartition<std::uint32_t, Bytes>(), chosen)));
    const auto map = [&](Codes c) {
        const Codes alpha = alphas(c);
        const Codes results = hn::Min(table(c), hn::Or(alpha, codes({0, 0, 0, 255}))); // alpha's own has no limit
        return hn::IfThenZeroElse(hn::Eq(alpha, hn::Zero(Bytes())), hn::IfThenElse(mapped, results, c));
    };
    forCodes(to, pixels, map, from);
}

} // namespace SIMD_LEVEL

SIMD_FUNCTION(copyRow);
SIMD_FUNCTION(applyTable);
SIMD_FUNCTION(applyTableTo);

} // namespace pixelops

#include "codec/block_encoder.h"

#include <bit>

#include "codec/tokenizer.h"

namespace qv {
namespace {

// The alphabet in which the literal table's lengths are written.
enum LengthSymbol : std::uint32_t {
    kOneZero = 0,
    kShortZeroRun = 1,     // 3 .. 18 zeros, run - 3 in 4 bits
    kLongZeroRun = 2,      // 20 or more zeros, run - 20 in 9 bits
    kLengthSymbolBase = 2  // a length L, at least 1, is L + 2
};

// A distance class c of 2 or more is followed by the offset's low c - 1 bits; its top bit is implied.
unsigned ExtraBits(unsigned distanceClass) noexcept {
    return distanceClass >= 2 ? distanceClass - 1 : 0;
}

std::size_t UsedSymbols(const std::vector<std::uint32_t>& lengths) noexcept {
    std::size_t used = lengths.size();
    while (used > 0 && lengths[used - 1] == 0)
        --used;
    return used;
}

// Walks the first `used` lengths and tells `emit` the symbols that write them, with their extra bits.
template <class Emit>
void ForEachLengthSymbol(const std::vector<std::uint32_t>& lengths, std::size_t used, Emit emit) {
    for (std::size_t i = 0; i < used;) {
        if (lengths[i] != 0) {
            emit(lengths[i] + kLengthSymbolBase, 0, 0);
            ++i;
            continue;
        }
        std::size_t run = 1;
        while (lengths[i + run] == 0)
            ++run;  // ends, as the last used length is not zero
        i += run;
        if (run == 1 || run == 2 || run == 19) emit(kOneZero, 0, 0);
        if (run == 2) emit(kOneZero, 0, 0);
        // A run of 19 fits neither form and is written as 1 + 18.
        if (run >= 3 && run <= 19) emit(kShortZeroRun, (run == 19 ? 18 : run) - 3, 4);
        if (run >= 20) emit(kLongZeroRun, run - 20, 9);
    }
}

}  // namespace

BlockEncoder::BlockEncoder() : body_(kMostBodyBytes + BitWriter::kSlack) {
    literals_.Reserve(kLiteralSymbols);
    distances_.Reserve(kDistanceSymbols);
    lengthCodes_.Reserve(kLiteralSymbols);
}

BlockEncoder::Block BlockEncoder::Encode(const std::uint16_t* tokens, std::size_t valueCount) noexcept {
    const std::size_t tokenCount = CountTokens(tokens, valueCount);
    literals_.Build(literalCounts_.data(), literalCounts_.size());
    distances_.Build(distanceCounts_.data(), distanceCounts_.size());

    BitWriter bits(body_.data());
    EncodeLiteralBitLengthTable(bits, literals_.Lengths());
    EncodeDistanceBitLengthTable(bits, distances_.Lengths());
    EncodeTokens(bits, tokens, valueCount);
    return {static_cast<std::uint16_t>(tokenCount), body_.data(), bits.Size()};
}

std::size_t BlockEncoder::CountTokens(const std::uint16_t* tokens, std::size_t valueCount) noexcept {
    literalCounts_.fill(0);
    distanceCounts_.fill(0);
    std::size_t count = 0;
    for (std::size_t i = 0; i < valueCount; ++i, ++count) {
        const unsigned value = tokens[i];
        ++literalCounts_[value];
        if (value > kLastLiteral) ++distanceCounts_[std::bit_width(static_cast<unsigned>(tokens[++i]))];
    }
    return count;
}

// The lengths go through a third code whose own lengths, and the number of entries, are not written. This is
// how the format stands.
void BlockEncoder::EncodeLiteralBitLengthTable(BitWriter& bits,
                                               const std::vector<std::uint32_t>& lengths) noexcept {
    std::array<std::uint32_t, kLiteralSymbols> counts{};
    const std::size_t used = UsedSymbols(lengths);
    ForEachLengthSymbol(lengths, used,
                        [&](std::uint32_t symbol, std::size_t, unsigned) { ++counts[symbol]; });
    lengthCodes_.Build(counts.data(), counts.size());
    if (lengthCodes_.IsSingleNode()) {
        // One symbol, or none: its number stands for the whole table.
        bits.Put(0, 5);
        bits.Put(static_cast<std::uint32_t>(lengthCodes_.Nodes().back().symbol), 5);
        return;
    }
    ForEachLengthSymbol(lengths, used, [&](std::uint32_t symbol, std::size_t extra, unsigned extraBits) {
        bits.Put(lengthCodes_.Patterns()[symbol], lengthCodes_.Lengths()[symbol]);
        bits.Put(extra, extraBits);
    });
}

void BlockEncoder::EncodeDistanceBitLengthTable(BitWriter& bits,
                                                const std::vector<std::uint32_t>& lengths) noexcept {
    const std::size_t used = UsedSymbols(lengths);
    bits.Put(used, 4);
    for (std::size_t i = 0; i < used; ++i) {
        const unsigned length = lengths[i];
        if (length < 7) {
            bits.Put(length, 3);
        } else {
            // 7 is 1110, 8 is 11110, and so on.
            bits.Put((1u << (length - 3)) - 2, length - 3);
        }
    }
}

void BlockEncoder::EncodeTokens(BitWriter& bits, const std::uint16_t* tokens,
                                std::size_t valueCount) noexcept {
    std::array<Code, kLiteralSymbols> literalCodes;
    for (std::size_t i = 0; i < kLiteralSymbols; ++i)
        literalCodes[i] = {literals_.Patterns()[i], literals_.Lengths()[i]};
    // A distance's code and the offset's low bits behind it are one number.
    struct DistanceCode {
        std::uint32_t pattern, length, offsetMask;
    };
    std::array<DistanceCode, kDistanceSymbols> distanceCodes;
    for (unsigned i = 0; i < kDistanceSymbols; ++i) {
        const unsigned extraBits = ExtraBits(i);
        distanceCodes[i] = {distances_.Patterns()[i] << extraBits, distances_.Lengths()[i] + extraBits,
                            (1u << extraBits) - 1};
    }

    BitWriter writer = bits;  // a local copy lives in registers
    for (std::size_t i = 0; i < valueCount; ++i) {
        const unsigned value = tokens[i];
        const Code literal = literalCodes[value];
        if (value <= kLastLiteral) {
            writer.Put(literal.pattern, literal.length);
            continue;
        }
        const unsigned offset = tokens[++i];
        const DistanceCode distance = distanceCodes[std::bit_width(offset)];
        // At most 16 + 16 + 12 bits: one write.
        writer.Put(std::uint64_t{literal.pattern} << distance.length | distance.pattern |
                       (offset & distance.offsetMask),
                   literal.length + distance.length);
    }
    bits = writer;
}

}  // namespace qv

#include "codec/block_encoder.h"

#include <bit>

namespace qv {
namespace {

// The alphabet in which the literal table's lengths are written.
enum LengthSymbol : std::uint32_t {
    kOneZero = 0,
    kShortZeroRun = 1,     // 3 .. 18 zeros, run - 3 in 4 bits
    kLongZeroRun = 2,      // 20 or more zeros, run - 20 in 9 bits
    kLengthSymbolBase = 2  // a length L, at least 1, is L + 2
};

// All buckets but that of literals.
constexpr std::size_t kMatchBuckets = kOffsetBuckets - 1;

// The class of the offsets in a bucket: how many significant bits they have.
unsigned ClassOfBucket(std::size_t bucket) noexcept {
    return static_cast<unsigned>(bucket < 128 ? std::bit_width(bucket) : std::bit_width(bucket - 128) + 7);
}

// A distance class c of 2 or more is followed by the offset's low c - 1 bits; its top bit is implied.
unsigned ExtraBits(unsigned distanceClass) noexcept {
    return distanceClass >= 2 ? distanceClass - 1 : 0;
}

bool AreFourLiterals(const Token* tokens) noexcept {
    return (tokens[0].offset & tokens[1].offset & tokens[2].offset & tokens[3].offset & Token::kNoOffset) !=
           0;
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
    literals_.Reserve(kTokenSymbols);
    distances_.Reserve(kDistanceSymbols);
    lengthCodes_.Reserve(kLengthSymbols);
}

BlockEncoder::Block BlockEncoder::Encode(const TokenList& tokens) noexcept {
    literals_.Build(tokens.SymbolCounts().data(), tokens.SymbolCounts().size());
    BuildDistances(tokens);

    BitWriter bits(body_.data());
    EncodeLiteralBitLengthTable(bits, literals_.Lengths());
    EncodeDistanceBitLengthTable(bits, distances_.Lengths());
    EncodeTokens(bits, tokens);
    return {static_cast<std::uint16_t>(tokens.Size()), body_.data(), bits.Size()};
}

void BlockEncoder::BuildDistances(const TokenList& tokens) noexcept {
    std::array<std::uint32_t, kDistanceSymbols> counts{};
    for (std::size_t bucket = 0; bucket < kMatchBuckets; ++bucket)
        counts[ClassOfBucket(bucket)] += tokens.OffsetCounts()[bucket];
    distances_.Build(counts.data(), counts.size());
}

// The lengths go through a third code whose own lengths, and the number of entries, are not written. This is
// how the format stands.
void BlockEncoder::EncodeLiteralBitLengthTable(BitWriter& bits,
                                               const std::vector<std::uint32_t>& lengths) noexcept {
    std::array<std::uint32_t, kLengthSymbols> counts{};
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

BlockEncoder::Codes BlockEncoder::MakeCodes() const noexcept {
    Codes codes;
    for (std::size_t i = 0; i < kTokenSymbols; ++i)
        codes.literals[i] = {literals_.Patterns()[i], literals_.Lengths()[i]};
    for (std::size_t bucket = 0; bucket < kMatchBuckets; ++bucket) {
        const unsigned distanceClass = ClassOfBucket(bucket);
        const unsigned extraBits = ExtraBits(distanceClass);
        codes.offsets[bucket] = {distances_.Patterns()[distanceClass] << extraBits,
                                 static_cast<std::uint16_t>(distances_.Lengths()[distanceClass] + extraBits),
                                 static_cast<std::uint16_t>((1u << extraBits) - 1)};
    }
    codes.offsets[kMatchBuckets] = {0, 0, 0};
    return codes;
}

void BlockEncoder::EncodeTokens(BitWriter& bits, const TokenList& tokens) const noexcept {
    const Codes codes = MakeCodes();
    BitWriter writer = bits;  // a local copy lives in registers
    struct Bits {
        std::uint64_t value;
        unsigned count;
    };
    // At most 16 + 16 + 12.
    const auto bitsOf = [&](Token token) -> Bits {
        const LiteralCode literal = codes.literals[token.symbol];
        const OffsetCode offset = codes.offsets[OffsetBucket(token.offset)];
        return {std::uint64_t{literal.pattern} << offset.length | offset.pattern |
                    (token.offset & offset.offsetMask),
                literal.length + offset.length};
    };
    // Two tokens are hardly ever too long for one write.
    const auto putTwo = [&](Bits a, Bits b) {
        if (a.count + b.count <= BitWriter::kMostBits) {
            writer.Put(a.value << b.count | b.value, a.count + b.count);
        } else {
            writer.Put(a.value, a.count);
            writer.Put(b.value, b.count);
        }
    };
    const auto putTwoLiterals = [&](const Token* two) {
        const LiteralCode a = codes.literals[two[0].symbol];
        const LiteralCode b = codes.literals[two[1].symbol];
        writer.Put(a.pattern << b.length | b.pattern, a.length + b.length);
    };

    const Token* token = tokens.begin();
    const Token* const end = tokens.end();
    for (; end - token >= 4; token += 4) {
        if (AreFourLiterals(token)) {
            putTwoLiterals(token);
            putTwoLiterals(token + 2);
        } else {
            putTwo(bitsOf(token[0]), bitsOf(token[1]));
            putTwo(bitsOf(token[2]), bitsOf(token[3]));
        }
    }
    for (; token < end; ++token) {
        const Bits last = bitsOf(*token);
        writer.Put(last.value, last.count);
    }
    bits = writer;
}

}  // namespace qv

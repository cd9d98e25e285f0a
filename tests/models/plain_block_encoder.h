// Plain reference of the block compressor: token list, Huffman coders and bit stream of the other plain
// references, put together step by step.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "models/plain_bit_streams.h"
#include "models/plain_huffman.h"
#include "models/plain_sliding_dictionary.h"

namespace model {

namespace block_detail {

inline void EncodeSymbol(OutputBits& bits, const HuffmanTables& tables, std::size_t symbol) {
    bits.PutUInt(32, tables.patterns.at(symbol), tables.lengths.at(symbol), nullptr);
}

inline std::size_t UsedCount(const std::vector<std::uint32_t>& lengths) {
    std::size_t used = lengths.size();
    while (used > 0 && lengths[used - 1] == 0)
        --used;
    return used;
}

inline unsigned DistanceClass(unsigned offset) {
    unsigned bits = 0;
    for (; offset != 0; offset >>= 1)
        ++bits;
    return bits;
}

// One entry of the literal length table: a non-zero length (run 0) or a run of zero lengths.
struct LengthItem {
    std::uint32_t length;
    std::size_t run;
};

inline std::vector<LengthItem> LengthItems(const std::vector<std::uint32_t>& lengths, std::size_t used) {
    std::vector<LengthItem> items;
    for (std::size_t i = 0; i < used;) {
        if (lengths[i] != 0) {
            items.push_back({lengths[i], 0});
            ++i;
            continue;
        }
        std::size_t run = 0;
        while (i + run < used && lengths[i + run] == 0)
            ++run;
        items.push_back({0, run});
        i += run;
    }
    return items;
}

inline void CountItem(std::vector<std::uint32_t>& counts, const LengthItem& item) {
    if (item.run == 0) {
        counts[item.length + 2] += 1;
    } else if (item.run == 1) {
        counts[0] += 1;
    } else if (item.run == 2) {
        counts[0] += 2;
    } else if (item.run <= 18) {
        counts[1] += 1;
    } else if (item.run == 19) {
        counts[0] += 1;
        counts[1] += 1;
    } else {
        counts[2] += 1;
    }
}

inline void WriteItem(OutputBits& bits, const HuffmanTables& tables, const LengthItem& item) {
    if (item.run == 0) {
        EncodeSymbol(bits, tables, item.length + 2);
    } else if (item.run == 1) {
        EncodeSymbol(bits, tables, 0);
    } else if (item.run == 2) {
        EncodeSymbol(bits, tables, 0);
        EncodeSymbol(bits, tables, 0);
    } else if (item.run <= 18) {
        EncodeSymbol(bits, tables, 1);
        bits.PutUInt(8, static_cast<std::uint32_t>(item.run - 3), 4, nullptr);
    } else if (item.run == 19) {
        EncodeSymbol(bits, tables, 0);
        EncodeSymbol(bits, tables, 1);
        bits.PutUInt(8, 15, 4, nullptr);
    } else {
        EncodeSymbol(bits, tables, 2);
        bits.PutUInt(16, static_cast<std::uint32_t>(item.run - 20), 9, nullptr);
    }
}

}  // namespace block_detail

inline void EncodeLiteralBitLengthTable(OutputBits& bits, const std::vector<std::uint32_t>& lengths) {
    using namespace block_detail;
    const std::size_t used = UsedCount(lengths);
    const std::vector<LengthItem> items = LengthItems(lengths, used);
    std::vector<std::uint32_t> counts(lengths.size(), 0);
    for (const LengthItem& item : items)
        CountItem(counts, item);
    const HuffmanTables tables = MakeHuffmanTables(counts);
    if (tables.root->children.empty()) {
        bits.PutUInt(8, 0, 5, nullptr);
        bits.PutUInt(8, static_cast<std::uint32_t>(tables.root->code), 5, nullptr);
        return;
    }
    if (used > 511) throw std::invalid_argument("the literal table needs more than 511 entries");
    for (const LengthItem& item : items)
        WriteItem(bits, tables, item);
}

inline void EncodeDistanceBitLengthTable(OutputBits& bits, const std::vector<std::uint32_t>& lengths) {
    const std::size_t used = block_detail::UsedCount(lengths);
    bits.PutUInt(8, static_cast<std::uint32_t>(used), 4, nullptr);
    for (std::size_t i = 0; i < used; ++i) {
        if (lengths[i] < 7) {
            bits.PutUInt(8, lengths[i], 3, nullptr);
        } else {
            bits.PutUInt(16, 65534, lengths[i] - 3, nullptr);
        }
    }
}

/// One block: token count in little-endian order, then the bits. `tokens` is a token list as Tokenize makes
/// it.
inline std::vector<std::uint8_t> EncodeBlock(const std::vector<std::uint16_t>& tokens) {
    using namespace block_detail;
    std::vector<std::uint32_t> literalFreqs(512, 0);
    std::vector<std::uint32_t> distanceFreqs(16, 0);
    std::size_t tokenCount = 0;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        ++tokenCount;
        ++literalFreqs[tokens[i]];
        if (tokens[i] > 255) ++distanceFreqs[DistanceClass(tokens[++i])];
    }

    std::vector<std::uint8_t> data(32768, 0);
    std::uint64_t bitCount = 0;
    {
        OutputBits bits(data, 0);
        const HuffmanTables literals = MakeHuffmanTables(literalFreqs);
        const HuffmanTables distances = MakeHuffmanTables(distanceFreqs);
        EncodeLiteralBitLengthTable(bits, literals.lengths);
        EncodeDistanceBitLengthTable(bits, distances.lengths);
        for (std::size_t i = 0; i < tokens.size(); ++i) {
            EncodeSymbol(bits, literals, tokens[i]);
            if (tokens[i] <= 255) continue;
            const unsigned offset = tokens[++i];
            const unsigned distanceClass = DistanceClass(offset);
            EncodeSymbol(bits, distances, distanceClass);
            if (distanceClass >= 2) bits.PutUInt(16, offset, distanceClass - 1, nullptr);
        }
        bitCount = bits.GetNumberOfBits();
    }
    data.resize(static_cast<std::size_t>((bitCount + 7) / 8));
    std::vector<std::uint8_t> block;
    block.push_back(static_cast<std::uint8_t>(tokenCount & 0xFF));
    block.push_back(static_cast<std::uint8_t>(tokenCount >> 8 & 0xFF));
    for (const std::uint8_t byte : data)
        block.push_back(byte);
    return block;
}

/// A whole compressed file: one block for every 32768 bytes.
inline std::vector<std::uint8_t> Compress(const std::vector<std::uint8_t>& bytes) {
    std::vector<std::uint8_t> out;
    for (std::size_t at = 0; at < bytes.size(); at += 32768) {
        const std::size_t size = std::min<std::size_t>(32768, bytes.size() - at);
        const std::vector<std::uint8_t> block = EncodeBlock(Tokenize(bytes.data() + at, size));
        out.insert(out.end(), block.begin(), block.end());
    }
    return out;
}

}  // namespace model

// The Huffman coder as an object: the tables, and the objects that show them to callers.
#pragma once

#include <cstddef>
#include <cstdint>

#include <QVFoundation/QVObject.h>

#include "codec/huffman_tables.h"
#include "runtime/Owned.h"
#include "runtime/QVCBase.h"

class QVHuffmanCodingImpl final : public QVCBase {
public:
    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDHuffman; }

    // Replaces all tables; false, and there are none, when they cannot be made.
    bool SetFrequencyTable(const std::uint32_t* frequencies, std::size_t count);
    // Answers a result code.
    [[nodiscard]] int Encode(void* outputBitStream, std::uint32_t symbol) const noexcept;

    // Borrowed; made at the first call. Null without tables, and when memory runs out.
    [[nodiscard]] void* GetFrequencyTableData() const noexcept { return frequencyTable_.Get(); }
    [[nodiscard]] void* GetBitLengthTableData();
    [[nodiscard]] void* GetRootTree();
    [[nodiscard]] void* GetBitPatternTable();

private:
    // What callers see, in this order. The first one stands for all: without it there are no tables.
    qv::Owned frequencyTable_;
    qv::Owned bitLengthTable_;
    qv::Owned rootTree_;
    qv::Owned bitPatternTable_;
    // What encoding uses.
    qv::HuffmanTables tables_;
};

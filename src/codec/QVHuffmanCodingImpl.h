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

    // Counts how often each byte value occurs. Answers 0.
    static int CountFrequencyOfData(const std::uint8_t* bytes, std::size_t size,
                                    std::uint32_t* frequencies) noexcept;

    // Replaces all tables; false, and there are none, when they cannot be made.
    bool SetFrequencyTable(const std::uint32_t* frequencies, std::size_t count);
    // Answers a result code.
    [[nodiscard]] int Encode(void* outputBitStream, std::uint32_t symbol) const noexcept;

    // Borrowed; made at the first call. Null without tables, and when memory runs out.
    [[nodiscard]] void* GetFrequencyTableData() const noexcept { return frequencyTable_.Get(); }
    [[nodiscard]] void* GetBitLengthTableData();
    [[nodiscard]] void* GetRootTree();
    [[nodiscard]] void* GetBitPatternTable();

    // Each replaces one object, which may be null, and leaves the other three as they are: nothing is worked
    // out anew. Encode goes by the two tables as they are from then on. Throw std::bad_alloc, and change
    // nothing, when the other objects cannot be made.
    void SetFrequencyTableData(void* data) { Replace(frequencyTable_, data); }
    void SetBitLengthTableData(void* data) { Replace(bitLengthTable_, data); }
    void SetRootTree(void* tree) { Replace(rootTree_, tree); }
    void SetBitPatternTable(void* array) { Replace(bitPatternTable_, array); }

private:
    // Whether the objects are made from tables_ when they are asked for.
    [[nodiscard]] bool MakesObjects() const noexcept { return frequencyTable_ && !replaced_; }
    void Replace(qv::Owned& object, void* replacement);
    [[nodiscard]] int EncodeByObjects(void* outputBitStream, std::uint32_t symbol) const noexcept;

    // What callers see, in this order. The first one stands for all: without it there are no tables.
    qv::Owned frequencyTable_;
    qv::Owned bitLengthTable_;
    qv::Owned rootTree_;
    qv::Owned bitPatternTable_;
    // What encoding uses, unless one of the objects has been replaced.
    qv::HuffmanTables tables_;
    bool replaced_ = false;
};

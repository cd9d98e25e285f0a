// Huffman coders: the C functions.
#include <QVFoundation/QVHuffman.h>

#include "codec/QVHuffmanCodingImpl.h"
#include "runtime/Guard.h"

using qv::CreateObject;
using qv::With;
using Coder = QVHuffmanCodingImpl;

static_assert(sizeof(unsigned int) == sizeof(std::uint32_t));

void* QVHuffmanCreate() noexcept {
    return CreateObject<Coder>();
}

int QVHuffmanSetFrequencyTable(void* coder, const unsigned int* freqs, unsigned long count) noexcept {
    if (freqs == nullptr || count == 0) return QVErrParam;
    return With<Coder>(coder, int{QVErrParam},
                       [=](Coder& c) { return c.SetFrequencyTable(freqs, count) ? QVNoErr : QVErrParam; });
}

int QVHuffmanEncode(void* coder, void* outputBitStream, unsigned int symbol) noexcept {
    return With<Coder>(coder, int{QVErrParam},
                       [=](const Coder& c) { return c.Encode(outputBitStream, symbol); });
}

void* QVHuffmanGetFrequencyTableData(void* coder) noexcept {
    return With<Coder>(coder, static_cast<void*>(nullptr),
                       [](const Coder& c) { return c.GetFrequencyTableData(); });
}

void* QVHuffmanGetBitLengthTableData(void* coder) noexcept {
    return With<Coder>(coder, static_cast<void*>(nullptr),
                       [](Coder& c) { return c.GetBitLengthTableData(); });
}

void* QVHuffmanGetRootTree(void* coder) noexcept {
    return With<Coder>(coder, static_cast<void*>(nullptr), [](Coder& c) { return c.GetRootTree(); });
}

void* QVHuffmanGetBitPatternTable(void* coder) noexcept {
    return With<Coder>(coder, static_cast<void*>(nullptr), [](Coder& c) { return c.GetBitPatternTable(); });
}

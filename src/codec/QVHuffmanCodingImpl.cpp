#include "codec/QVHuffmanCodingImpl.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVBitStream.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVTree.h>

#include "runtime/Guard.h"

using qv::HuffmanNode;
using qv::Owned;
using qv::RequireObject;

namespace {

// The object functions below log and go on when memory runs out; a table that is not complete is not shown.
void Require(bool complete) {
    if (!complete) throw std::bad_alloc();
}

Owned MakeTable(const std::uint32_t* values, std::size_t count) {
    Require(count <= std::numeric_limits<std::uint32_t>::max() / sizeof *values);
    return Owned{RequireObject(QVDataCreate(values, static_cast<unsigned long>(count * sizeof *values)))};
}

Owned MakeContext(const HuffmanNode& node) {
    Owned context{RequireObject(QVDictionaryCreate())};
    const Owned code{RequireObject(QVNumberCreateWithSInt32(node.symbol))};
    const Owned frequency{RequireObject(QVNumberCreateWithUInt32(node.frequency))};
    const Owned length{RequireObject(QVNumberCreateWithUInt32(node.codeLength))};
    QVDictionarySetObject(context.Get(), code.Get(), L"code");
    QVDictionarySetObject(context.Get(), frequency.Get(), L"freq");
    QVDictionarySetObject(context.Get(), length.Get(), L"bitLen");
    Require(QVDictionaryCount(context.Get()) == 3);
    return context;
}

Owned MakeTree(const HuffmanNode& node) {
    Owned tree{RequireObject(QVTreeCreate())};
    const Owned context = MakeContext(node);
    QVTreeSetContext(tree.Get(), context.Get());
    return tree;
}

void AddChild(void* parent, void* child) {
    void* const children = QVTreeGetChildren(parent);
    const unsigned long count = QVArrayGetCount(children);
    const unsigned long references = QVGetRetainCount(child);
    QVTreeAddChild(parent, child);
    if (QVArrayGetCount(children) > count) return;
    // An array that has no room for an object keeps the reference it took.
    if (QVGetRetainCount(child) > references) QVRelease(child);
    throw std::bad_alloc();
}

// Every node stands before its parent, so children are there when their parent is made.
Owned MakeTree(const std::vector<HuffmanNode>& nodes) {
    std::vector<Owned> trees;
    trees.reserve(nodes.size());
    for (const HuffmanNode& node : nodes) {
        Owned tree = MakeTree(node);
        if (node.first != HuffmanNode::kNoChild) {
            AddChild(tree.Get(), trees[node.first].Get());
            AddChild(tree.Get(), trees[node.second].Get());
        }
        trees.push_back(std::move(tree));
    }
    return std::move(trees.back());
}

Owned MakePatternArray(const std::vector<std::uint32_t>& patterns) {
    Owned array{RequireObject(QVArrayCreateWithCapacity(static_cast<unsigned long>(patterns.size())))};
    for (const std::uint32_t pattern : patterns) {
        const Owned number{RequireObject(QVNumberCreateWithUInt32(pattern))};
        QVArrayAddObject(array.Get(), number.Get());
    }
    Require(QVArrayGetCount(array.Get()) == patterns.size());
    return array;
}

}  // namespace

int QVHuffmanCodingImpl::CountFrequencyOfData(const std::uint8_t* bytes, std::size_t size,
                                              std::uint32_t* frequencies) noexcept {
    std::fill_n(frequencies, 256, 0u);
    for (std::size_t i = 0; i < size; ++i)
        ++frequencies[bytes[i]];
    return 0;
}

bool QVHuffmanCodingImpl::SetFrequencyTable(const std::uint32_t* frequencies, std::size_t count) {
    // The frequencies may be those that this coder has lent, so the old objects go last.
    Owned newTable;
    const bool built = qv::Guard(false, [&] {
        newTable = MakeTable(frequencies, count);
        tables_.Build(frequencies, count);
        return true;
    });
    if (!built) newTable.Reset();
    frequencyTable_ = std::move(newTable);
    bitLengthTable_.Reset();
    rootTree_.Reset();
    bitPatternTable_.Reset();
    replaced_ = false;
    return built;
}

int QVHuffmanCodingImpl::Encode(void* outputBitStream, std::uint32_t symbol) const noexcept {
    if (replaced_) return EncodeByObjects(outputBitStream, symbol);
    if (!frequencyTable_ || symbol >= tables_.Patterns().size()) return QVErrParam;
    return QVOutputBitStreamPutUInt32(outputBitStream, tables_.Patterns()[symbol], tables_.Lengths()[symbol],
                                      nullptr, 1);
}

int QVHuffmanCodingImpl::EncodeByObjects(void* outputBitStream, std::uint32_t symbol) const noexcept {
    void* const pattern = QVArrayGetObjectAtIndex(bitPatternTable_.Get(), symbol);
    // These come from outside, so they may be anything.
    if (pattern == nullptr || QVGetTypeID(pattern) != QVTypeIDNumber) return QVErrParam;
    if (symbol >= QVDataGetSize(bitLengthTable_.Get()) / sizeof(std::uint32_t)) return QVErrParam;
    std::uint32_t length = 0;
    std::memcpy(&length,
                static_cast<const std::uint8_t*>(QVDataGetImutableBuffer(bitLengthTable_.Get())) +
                    symbol * sizeof length,
                sizeof length);
    return QVOutputBitStreamPutUInt32(outputBitStream, QVNumberGetUInt32Value(pattern), length, nullptr, 1);
}

void QVHuffmanCodingImpl::Replace(Owned& object, void* replacement) {
    // From here on nothing is made from the tables any more.
    static_cast<void>(GetBitLengthTableData());
    static_cast<void>(GetRootTree());
    static_cast<void>(GetBitPatternTable());
    object = Owned::Retaining(replacement);
    replaced_ = true;
}

void* QVHuffmanCodingImpl::GetBitLengthTableData() {
    if (MakesObjects() && !bitLengthTable_) {
        bitLengthTable_ = MakeTable(tables_.Lengths().data(), tables_.Lengths().size());
    }
    return bitLengthTable_.Get();
}

void* QVHuffmanCodingImpl::GetRootTree() {
    if (MakesObjects() && !rootTree_) rootTree_ = MakeTree(tables_.Nodes());
    return rootTree_.Get();
}

void* QVHuffmanCodingImpl::GetBitPatternTable() {
    if (MakesObjects() && !bitPatternTable_) bitPatternTable_ = MakePatternArray(tables_.Patterns());
    return bitPatternTable_.Get();
}

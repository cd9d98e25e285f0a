#include "codec/QVHuffmanCodingImpl.h"

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
    return built;
}

int QVHuffmanCodingImpl::Encode(void* outputBitStream, std::uint32_t symbol) const noexcept {
    if (!frequencyTable_ || symbol >= tables_.Patterns().size()) return QVErrParam;
    return QVOutputBitStreamPutUInt32(outputBitStream, tables_.Patterns()[symbol], tables_.Lengths()[symbol],
                                      nullptr, 1);
}

void* QVHuffmanCodingImpl::GetBitLengthTableData() {
    if (frequencyTable_ && !bitLengthTable_) {
        bitLengthTable_ = MakeTable(tables_.Lengths().data(), tables_.Lengths().size());
    }
    return bitLengthTable_.Get();
}

void* QVHuffmanCodingImpl::GetRootTree() {
    if (frequencyTable_ && !rootTree_) rootTree_ = MakeTree(tables_.Nodes());
    return rootTree_.Get();
}

void* QVHuffmanCodingImpl::GetBitPatternTable() {
    if (frequencyTable_ && !bitPatternTable_) bitPatternTable_ = MakePatternArray(tables_.Patterns());
    return bitPatternTable_.Get();
}

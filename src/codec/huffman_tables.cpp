#include "codec/huffman_tables.h"

#include <algorithm>

namespace qv {

void HuffmanTables::Reserve(std::size_t count) {
    nodes_.reserve(2 * count + 1);
    sorted_.reserve(count);
    waiting_.reserve(count);
    lengths_.reserve(count);
    patterns_.reserve(count);
}

void HuffmanTables::Build(const std::uint32_t* frequencies, std::size_t count) {
    Reserve(count);
    lengths_.assign(count, 0);
    CollectLeaves(frequencies, count);
    if (leafCount_ < 2) {
        MakeSingleNode();
    } else {
        MergeNodes();
        SetDepths();
        LimitLengths();
        for (std::size_t i = 0; i < leafCount_; ++i)
            lengths_[nodes_[i].symbol] = nodes_[i].codeLength;
    }
    MakePatterns();
}

// The leaves by frequency, equal ones by symbol.
void HuffmanTables::CollectLeaves(const std::uint32_t* frequencies, std::size_t count) {
    sorted_.clear();
    for (std::size_t symbol = 0; symbol < count; ++symbol) {
        if (frequencies[symbol] != 0) sorted_.push_back(std::uint64_t{frequencies[symbol]} << 32 | symbol);
    }
    std::sort(sorted_.begin(), sorted_.end());

    nodes_.clear();
    for (const std::uint64_t entry : sorted_) {
        nodes_.push_back({static_cast<std::uint32_t>(entry >> 32),
                          static_cast<std::int32_t>(entry & 0xFFFFFFFFu), 0, HuffmanNode::kNoChild,
                          HuffmanNode::kNoChild});
    }
    leafCount_ = nodes_.size();
}

// With one symbol the root is a node of its own, of frequency 1, and the symbol keeps the length 0; without
// any the root stands for symbol 0. Both are required.
void HuffmanTables::MakeSingleNode() {
    const std::int32_t symbol = leafCount_ == 1 ? nodes_[0].symbol : 0;
    nodes_.assign(1, {1, symbol, 0, HuffmanNode::kNoChild, HuffmanNode::kNoChild});
}

// Joins the two first nodes of the list until one is left. The list is ordered by frequency; among equal ones
// inner nodes come before leaves (this fixes the tree's shape and is required), in the order of their making.
// So it is kept as two rows, the leaves and the inner nodes: a new inner node goes behind those of equal
// frequency, which is the row's end unless a sum has wrapped around at 32 bits.
void HuffmanTables::MergeNodes() {
    std::size_t nextLeaf = 0;
    std::size_t nextInner = 0;
    waiting_.clear();
    const auto takeFirst = [&] {
        const bool inner =
            nextInner < waiting_.size() &&
            (nextLeaf == leafCount_ || nodes_[waiting_[nextInner]].frequency <= nodes_[nextLeaf].frequency);
        return inner ? waiting_[nextInner++] : static_cast<std::uint32_t>(nextLeaf++);
    };
    const auto isRarer = [&](std::uint32_t frequency, std::uint32_t node) {
        return frequency < nodes_[node].frequency;
    };

    for (std::size_t merge = 1; merge < leafCount_; ++merge) {
        const std::uint32_t a = takeFirst();
        const std::uint32_t b = takeFirst();
        const std::uint32_t sum = nodes_[a].frequency + nodes_[b].frequency;
        const auto inner = static_cast<std::uint32_t>(nodes_.size());
        nodes_.push_back({sum, -1, 0, a, b});
        auto at = waiting_.end();
        if (nextInner < waiting_.size() && isRarer(sum, waiting_.back())) {
            at =
                std::upper_bound(waiting_.begin() + static_cast<std::ptrdiff_t>(nextInner), at, sum, isRarer);
        }
        waiting_.insert(at, inner);
    }
}

void HuffmanTables::SetDepths() noexcept {
    for (std::size_t i = nodes_.size(); i-- > leafCount_;) {
        const HuffmanNode& parent = nodes_[i];
        nodes_[parent.first].codeLength = parent.codeLength + 1;
        nodes_[parent.second].codeLength = parent.codeLength + 1;
    }
}

HuffmanTables::LengthCounts HuffmanTables::CountLengths() const noexcept {
    LengthCounts counts{};
    for (std::size_t i = 0; i < leafCount_; ++i)
        ++counts[std::min(nodes_[i].codeLength, kMaxCodeLength)];
    return counts;
}

// Shortens codes of more than 16 bits to 16 and makes up for it by lengthening shorter ones: each step takes
// a leaf of length 16 and hangs it, with a leaf from above, below that leaf's place.
void HuffmanTables::LimitLengths() noexcept {
    LengthCounts counts = CountLengths();
    std::uint64_t used = 0;  // of the 65536 codes of 16 bits
    for (unsigned length = 1; length <= kMaxCodeLength; ++length)
        used += counts[length] << (kMaxCodeLength - length);
    if (used <= 65536) return;

    for (std::uint64_t excess = used - 65536; excess > 0; --excess) {
        // Starting at 13 where 15 would do is required: it decides which lengths come out.
        int length = 13;
        while (length >= 0 && counts[length] == 0)
            --length;
        if (length < 0) break;
        counts[length] -= 1;
        counts[length + 1] += 2;
        counts[kMaxCodeLength] -= 1;
    }
    std::size_t leaf = 0;
    for (unsigned length = kMaxCodeLength; length >= 1; --length) {
        for (std::uint64_t i = 0; i < counts[length]; ++i)
            nodes_[leaf++].codeLength = length;
    }
}

// Canonical codes, computed at the top of 16 bits. Lengths 15 and 16 get no start and no step, so that all
// their symbols have the pattern 0: no decoder could tell them apart, but it is required.
void HuffmanTables::MakePatterns() {
    constexpr unsigned kLongestWithPattern = 14;
    std::array<std::uint32_t, kMaxCodeLength + 1> start{};
    std::array<std::uint32_t, kMaxCodeLength + 1> step{};
    const LengthCounts counts = leafCount_ < 2 ? LengthCounts{} : CountLengths();
    std::uint32_t sum = 0;
    for (unsigned length = 1; length <= kLongestWithPattern; ++length) {
        start[length] = sum;
        step[length] = 32768u >> (length - 1);
        sum += static_cast<std::uint32_t>(counts[length]) * step[length];
    }
    patterns_.clear();
    for (const std::uint32_t length : lengths_) {
        patterns_.push_back(start[length] >> (kMaxCodeLength - length));
        start[length] += step[length];
    }
}

}  // namespace qv

// Plain reference of the Huffman coder: a tree of nodes, the working list sorted again in full after every
// merge.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace model {

struct HuffmanNode {
    std::int32_t code = -1;
    std::uint32_t freq = 0;
    std::uint32_t bitLen = 0;
    std::vector<std::shared_ptr<HuffmanNode>> children;
};

using HuffmanNodePtr = std::shared_ptr<HuffmanNode>;

struct HuffmanTables {
    HuffmanNodePtr root;
    std::vector<std::uint32_t> lengths;
    std::vector<std::uint32_t> patterns;
};

namespace huffman_detail {

struct FreqElement {
    std::uint32_t frequency;
    std::int32_t symbol;
    HuffmanNodePtr tree;
};

inline bool SortCmpFreqList(const FreqElement& a, const FreqElement& b) {
    if (a.frequency != b.frequency) return a.frequency < b.frequency;
    return a.symbol < b.symbol;
}

inline HuffmanNodePtr MakeNode(std::int32_t code, std::uint32_t freq) {
    auto node = std::make_shared<HuffmanNode>();
    node->code = code;
    node->freq = freq;
    return node;
}

inline void SetDepths(HuffmanNode& root) {
    std::vector<std::pair<HuffmanNode*, std::uint32_t>> open{{&root, 0}};
    while (!open.empty()) {
        const auto [node, depth] = open.back();
        open.pop_back();
        node->bitLen = depth;
        for (const auto& child : node->children)
            open.push_back({child.get(), depth + 1});
    }
}

inline void LimitLengths(std::vector<HuffmanNodePtr>& leaves) {
    std::vector<std::int64_t> count(17, 0);
    for (const auto& leaf : leaves) {
        if (leaf->bitLen > 0) ++count[std::min<std::uint32_t>(leaf->bitLen, 16)];
    }
    std::int64_t kraft = 0;
    for (std::size_t length = 1; length <= 16; ++length)
        kraft += count[length] << (16 - length);
    if (kraft <= 65536) return;

    for (std::int64_t step = 0; step < kraft - 65536; ++step) {
        for (int length = 13; length >= 0; --length) {
            const auto at = static_cast<std::size_t>(length);
            if (count[at] == 0) continue;
            count[at] -= 1;
            count[at + 1] += 2;
            count[16] -= 1;
            break;
        }
    }
    std::size_t next = 0;
    for (std::uint32_t length = 16; length >= 1; --length) {
        for (std::int64_t i = 0; i < count[length]; ++i)
            leaves[next++]->bitLen = length;
    }
}

}  // namespace huffman_detail

inline HuffmanNodePtr MakeHuffmanTree(const std::vector<std::uint32_t>& freqs,
                                      std::vector<std::uint32_t>& lengths) {
    using namespace huffman_detail;
    std::vector<FreqElement> list;
    for (std::size_t s = 0; s < freqs.size(); ++s) {
        if (freqs[s] == 0) continue;
        const auto symbol = static_cast<std::int32_t>(s);
        list.push_back({freqs[s], symbol, MakeNode(symbol, freqs[s])});
    }
    std::stable_sort(list.begin(), list.end(), SortCmpFreqList);
    std::vector<HuffmanNodePtr> leaves;
    for (const auto& element : list)
        leaves.push_back(element.tree);

    while (list.size() >= 2) {
        const FreqElement a = list[0];
        const FreqElement b = list[1];
        list.erase(list.begin(), list.begin() + 2);
        auto inner = MakeNode(-1, a.frequency + b.frequency);
        inner->children = {a.tree, b.tree};
        list.push_back({inner->freq, -1, inner});
        std::stable_sort(list.begin(), list.end(), SortCmpFreqList);
    }

    HuffmanNodePtr root;
    if (leaves.size() >= 2) {
        root = list[0].tree;
    } else if (leaves.size() == 1) {
        root = MakeNode(leaves[0]->code, 1);
    } else {
        root = MakeNode(0, 1);
    }
    SetDepths(*root);
    LimitLengths(leaves);

    lengths.assign(freqs.size(), 0);
    for (const auto& leaf : leaves)
        lengths[static_cast<std::size_t>(leaf->code)] = leaf->bitLen;
    return root;
}

inline std::vector<std::uint32_t> MakeBitPatternTable(const std::vector<std::uint32_t>& lengths) {
    std::vector<std::uint32_t> count(17, 0);
    for (std::uint32_t length : lengths) {
        if (length >= 1) ++count[length];
    }
    std::vector<std::uint32_t> start(17, 0);
    std::vector<std::uint32_t> step(17, 0);
    std::uint32_t sum = 0;
    for (std::uint32_t length = 1; length <= 14; ++length) {
        start[length] = sum;
        step[length] = 32768u >> (length - 1);
        sum += count[length] * step[length];
    }
    std::vector<std::uint32_t> patterns;
    for (std::uint32_t length : lengths) {
        if (length == 0) {
            patterns.push_back(0);
            continue;
        }
        const std::uint32_t c = start[length];
        start[length] = c + step[length];
        patterns.push_back(c >> (16 - length));
    }
    return patterns;
}

inline HuffmanTables MakeHuffmanTables(const std::vector<std::uint32_t>& freqs) {
    HuffmanTables tables;
    tables.root = MakeHuffmanTree(freqs, tables.lengths);
    tables.patterns = MakeBitPatternTable(tables.lengths);
    return tables;
}

}  // namespace model

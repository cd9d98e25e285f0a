// Code tree, code lengths and canonical patterns out of symbol frequencies.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qv {

// The lengths after limiting are at most this.
inline constexpr unsigned kMaxCodeLength = 16;

// One node of the code tree.
struct HuffmanNode {
    static constexpr std::uint32_t kNoChild = 0xFFFFFFFFu;

    std::uint32_t frequency;   // an inner node's is the sum of its children's, modulo 2^32
    std::int32_t symbol;       // -1 for an inner node
    std::uint32_t codeLength;  // the depth (root 0); a leaf's is the code length, after limiting
    std::uint32_t first;       // the children's places in the row of nodes, or kNoChild
    std::uint32_t second;
};

// The tables of one Huffman code. Building again reuses the memory.
class HuffmanTables {
public:
    // Makes all tables for `count` symbols. Throws std::bad_alloc.
    void Build(const std::uint32_t* frequencies, std::size_t count);

    // Makes room for alphabets of up to `count` symbols, so that Build cannot fail. Throws std::bad_alloc.
    void Reserve(std::size_t count);

    // The code length of each symbol; 0 for one that does not occur, and for the only one that does.
    [[nodiscard]] const std::vector<std::uint32_t>& Lengths() const noexcept { return lengths_; }
    // The code of each symbol, in the low bits.
    [[nodiscard]] const std::vector<std::uint32_t>& Patterns() const noexcept { return patterns_; }
    // The tree; every node stands before its parent, so the root is the last one.
    [[nodiscard]] const std::vector<HuffmanNode>& Nodes() const noexcept { return nodes_; }
    // Whether the tree is a single node, because at most one symbol occurs.
    [[nodiscard]] bool IsSingleNode() const noexcept { return nodes_.size() == 1; }

private:
    using LengthCounts = std::array<std::uint64_t, kMaxCodeLength + 1>;

    void CollectLeaves(const std::uint32_t* frequencies, std::size_t count);
    void MakeSingleNode();
    void MergeNodes();
    void SetDepths() noexcept;
    void LimitLengths() noexcept;
    [[nodiscard]] LengthCounts CountLengths() const noexcept;
    void MakePatterns();

    std::vector<HuffmanNode> nodes_;
    std::size_t leafCount_ = 0;  // the leaves stand first, the rarest first
    // Working rows, kept for the next time.
    std::vector<std::uint64_t> sorted_;
    std::vector<std::uint32_t> waiting_;
    std::vector<std::uint32_t> lengths_;
    std::vector<std::uint32_t> patterns_;
};

}  // namespace qv

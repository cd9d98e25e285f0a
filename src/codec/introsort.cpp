#include "codec/introsort.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace qv {

namespace {

// Ranges up to this size are left to insertion.
constexpr size_t kInsertionLimit = 16;

// Ranges of one key up to this size are rearranged through a copy on the stack (16 KiB).
constexpr size_t kOneKeyCopy = 4096;

constexpr int32_t Key(int32_t word) {
    return word >> kIntrosortKeyShift;
}

constexpr size_t LowestBit(uint64_t mask) {
    return static_cast<unsigned>(std::countr_zero(mask));
}

// Bit i becomes bit 63 - i.
constexpr uint64_t ReverseBits(uint64_t bits) {
    constexpr uint64_t kOdd = 0x5555555555555555, kPairs = 0x3333333333333333, kNibbles = 0x0F0F0F0F0F0F0F0F;
    bits = (bits >> 1 & kOdd) | (bits & kOdd) << 1;
    bits = (bits >> 2 & kPairs) | (bits & kPairs) << 2;
    bits = (bits >> 4 & kNibbles) | (bits & kNibbles) << 4;
    return __builtin_bswap64(bits);
}

constexpr int32_t MedianKey(int32_t a, int32_t b, int32_t c) {
    return Key(std::max(std::min(a, b), std::min(std::max(a, b), c)));
}

// Equal keys keep their order.
void SortByInsertion(int32_t* first, int32_t* last) {
    for (int32_t* at = first; at < last; ++at) {
        const int32_t word = *at;
        int32_t* hole = at;
        for (; hole > first && Key(word) < Key(hole[-1]); --hole)
            *hole = hole[-1];
        *hole = word;
    }
}

// A hole at `hole` sinks along the larger children (the right one of equals) to the bottom of the heap of
// `size` words; then `word` rises from there, up to where the hole began.
void SinkInHeap(int32_t* heap, size_t hole, size_t size, int32_t word) {
    const size_t top = hole;
    size_t child = 2 * hole + 2;
    for (; child < size; child = 2 * hole + 2) {
        if (Key(heap[child]) < Key(heap[child - 1])) --child;
        heap[hole] = heap[child];
        hole = child;
    }
    if (child == size) {
        heap[hole] = heap[child - 1];
        hole = child - 1;
    }
    for (; hole > top && Key(heap[(hole - 1) / 2]) < Key(word); hole = (hole - 1) / 2) {
        heap[hole] = heap[(hole - 1) / 2];
    }
    heap[hole] = word;
}

void SortByHeap(int32_t* first, int32_t* last) {
    const auto size = static_cast<size_t>(last - first);
    for (size_t parent = size / 2; parent-- > 0;)
        SinkInHeap(first, parent, size, first[parent]);
    for (size_t rest = size - 1; rest > 0; --rest) {
        const int32_t word = first[rest];
        first[rest] = first[0];
        SinkInHeap(first, 0, rest, word);
    }
}

// The number of partitions that separate a range of one key from ranges small enough for insertion: each
// halves it, the right half being the larger.
int CountHalvings(size_t size) {
    int halvings = 0;
    for (; size > kInsertionLimit; size -= size / 2)
        ++halvings;
    return halvings;
}

// `to` stands for a range of one key that now holds from[0 .. size - 1], or the same words from the last to
// the first when `reversed`. Gives `to` the words in the order that the partitions still to come leave.
void PlaceOneKey(const int32_t* from, size_t size, int32_t* to, bool reversed) {
    if (size <= kInsertionLimit) {
        if (reversed)
            std::reverse_copy(from, from + size, to);
        else
            std::copy(from, from + size, to);
        return;
    }
    const size_t left = size / 2;
    const size_t right = size - left;
    // The partition turns the range round, then each half goes its own way.
    PlaceOneKey(reversed ? from : from + right, left, to, !reversed);
    PlaceOneKey(reversed ? from + left : from, right, to + left, !reversed);
}

void SortOneKey(int32_t* first, int32_t* last) {
    const auto size = static_cast<size_t>(last - first);
    if (size <= kOneKeyCopy) {
        std::array<int32_t, kOneKeyCopy> copy;
        std::copy(first, last, copy.begin());
        PlaceOneKey(copy.data(), size, first, false);
        return;
    }
    std::reverse(first, last);
    SortOneKey(first, first + size / 2);
    SortOneKey(first + size / 2, last);
}

class Sorter {
public:
    explicit Sorter(ScanGreater greater) : greater_(greater) {}

    void Sort(int32_t* first, int32_t* last, int depth) {
        while (static_cast<size_t>(last - first) > kInsertionLimit) {
            const int32_t pivot = MedianKey(first[0], first[(last - first) / 2], last[-1]);
            if (IsOneKey(first, last, pivot) && CountHalvings(static_cast<size_t>(last - first)) <= depth) {
                SortOneKey(first, last);
                return;
            }
            if (depth == 0) {
                SortByHeap(first, last);
                return;
            }
            --depth;
            int32_t* const cut = Partition(first, last, pivot);
            Sort(cut, last, depth);
            last = cut;
        }
        SortByInsertion(first, last);
    }

private:
    // The places that stop the search from the left: keys not below the pivot's.
    uint64_t StopsFromLeft(const int32_t* words, size_t count, int32_t pivot) const {
        return greater_(words, count, pivot * (1 << kIntrosortKeyShift) - 1);
    }

    // The places that stop the search from the right: keys not above the pivot's. Bit i stands for the i-th
    // word from the right, so that here as well the lowest bit comes first: highest bits are slow to find.
    uint64_t StopsFromRight(const int32_t* words, size_t count, int32_t pivot) const {
        return ReverseBits(~GreaterThan(words, count, pivot) & LowBits(count)) >> (kWordScanBlock - count);
    }

    uint64_t GreaterThan(const int32_t* words, size_t count, int32_t pivot) const {
        return greater_(words, count, (pivot + 1) * (1 << kIntrosortKeyShift) - 1);
    }

    bool IsOneKey(const int32_t* first, const int32_t* last, int32_t key) const {
        if (Key(first[0]) != key || Key(last[-1]) != key) return false;
        while (first < last) {
            const size_t count = std::min(kWordScanBlock, static_cast<size_t>(last - first));
            if (StopsFromLeft(first, count, key) != LowBits(count)) return false;
            if (GreaterThan(first, count, key) != 0) return false;
            first += count;
        }
        return true;
    }

    // Exchanges the first word from the left that stops there with the first from the right, and so on until
    // the two meet; returns the place where the search from the left then stands.
    int32_t* Partition(int32_t* first, int32_t* last, int32_t pivot) const {
        while (static_cast<size_t>(last - first) > kWordScanBlock) {
            const size_t count = std::min(kWordScanBlock, static_cast<size_t>(last - first) / 2);
            uint64_t leftStops = StopsFromLeft(first, count, pivot);
            uint64_t rightStops = StopsFromRight(last - count, count, pivot);
            while (leftStops != 0 && rightStops != 0) {
                std::swap(first[LowestBit(leftStops)], *(last - 1 - LowestBit(rightStops)));
                leftStops &= leftStops - 1;
                rightStops &= rightStops - 1;
            }
            // One of the blocks is done; the other begins at its first place that is still to be exchanged.
            first += leftStops == 0 ? count : LowestBit(leftStops);
            last -= rightStops == 0 ? count : LowestBit(rightStops);
        }
        if (first == last) return first;
        return first + PartitionBlock(first, static_cast<size_t>(last - first), pivot);
    }

    // The end of a partition, where both searches run through the same block, which is not empty.
    size_t PartitionBlock(int32_t* words, size_t count, int32_t pivot) const {
        uint64_t leftStops = StopsFromLeft(words, count, pivot);
        uint64_t rightStops = StopsFromRight(words, count, pivot);
        size_t exchanged = count;  // from here on nothing is below the pivot
        while (leftStops != 0 && rightStops != 0) {
            const size_t i = LowestBit(leftStops);
            const size_t j = count - 1 - LowestBit(rightStops);
            if (i >= j) break;
            std::swap(words[i], words[j]);
            leftStops &= leftStops - 1;
            rightStops &= rightStops - 1;
            exchanged = j;
        }
        return leftStops == 0 ? exchanged : std::min(exchanged, LowestBit(leftStops));
    }

    ScanGreater greater_;
};

}  // namespace

void Introsort(int32_t* words, size_t count) {
    static const ScanGreater greater = GetScanGreater();
    const int depthLimit = count == 0 ? 0 : 2 * (static_cast<int>(std::bit_width(count)) - 1);
    Introsort(words, count, depthLimit, greater);
}

void Introsort(int32_t* words, size_t count, int depthLimit, ScanGreater greater) {
    Sorter(greater).Sort(words, words + count, depthLimit);
}

}  // namespace qv

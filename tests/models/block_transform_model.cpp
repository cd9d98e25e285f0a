#include "models/block_transform_model.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

namespace qv::model {

namespace {

constexpr size_t kInsertionLimit = 16;

using Numbers = std::vector<size_t>;
using Place = size_t;

// The introsort, on `v`, with an order that looks at one byte only.
template <class Less>
class Introsort {
public:
    Introsort(Numbers& v, Less less) : v_(v), less_(less) {}

    void Sort(int depthLimit) {
        Loop(0, v_.size(), depthLimit);
        FinalInsertion();
    }

private:
    size_t Median(size_t a, size_t b, size_t c) const {
        if (less_(a, b)) {
            if (less_(b, c)) return b;
            return less_(a, c) ? c : a;
        }
        if (less_(a, c)) return a;
        return less_(b, c) ? c : b;
    }

    void Loop(Place first, Place last, int depth) {
        while (last - first > kInsertionLimit) {
            if (depth == 0) {
                HeapSort(first, last);
                return;
            }
            --depth;
            const size_t pivot = Median(v_[first], v_[first + (last - first) / 2], v_[last - 1]);
            const Place cut = Partition(first, last, pivot);
            Loop(cut, last, depth);
            last = cut;
        }
    }

    Place Partition(Place first, Place last, size_t pivot) {
        while (true) {
            while (less_(v_[first], pivot))
                ++first;
            --last;
            while (less_(pivot, v_[last]))
                --last;
            if (!(first < last)) return first;
            std::swap(v_[first], v_[last]);
            ++first;
        }
    }

    void HeapSort(Place first, Place last) {
        const size_t size = last - first;
        for (size_t parent = (size - 2) / 2 + 1; parent-- > 0;)
            Sink(first, parent, size, v_[first + parent]);
        for (size_t rest = size - 1; rest > 0; --rest) {
            const size_t value = v_[first + rest];
            v_[first + rest] = v_[first];
            Sink(first, 0, rest, value);
        }
    }

    // The hole sinks to the bottom, always to the larger child (the right one of equals); then the value
    // rises from there.
    void Sink(Place first, size_t hole, size_t size, size_t value) {
        const size_t top = hole;
        size_t child = 2 * hole + 2;
        for (; child < size; child = 2 * hole + 2) {
            if (less_(v_[first + child], v_[first + child - 1])) --child;
            v_[first + hole] = v_[first + child];
            hole = child;
        }
        if (child == size) {
            v_[first + hole] = v_[first + child - 1];
            hole = child - 1;
        }
        while (hole > top && less_(v_[first + (hole - 1) / 2], value)) {
            v_[first + hole] = v_[first + (hole - 1) / 2];
            hole = (hole - 1) / 2;
        }
        v_[first + hole] = value;
    }

    void FinalInsertion() {
        const size_t guarded = std::min(v_.size(), kInsertionLimit);
        for (size_t i = 1; i < guarded; ++i) {
            const size_t value = v_[i];
            if (less_(value, v_[0])) {
                for (size_t j = i; j > 0; --j)
                    v_[j] = v_[j - 1];
                v_[0] = value;
            } else {
                InsertUnguarded(i, value);
            }
        }
        for (size_t i = guarded; i < v_.size(); ++i)
            InsertUnguarded(i, v_[i]);
    }

    void InsertUnguarded(size_t i, size_t value) {
        while (less_(value, v_[i - 1])) {
            v_[i] = v_[i - 1];
            --i;
        }
        v_[i] = value;
    }

    Numbers& v_;
    Less less_;
};

int FloorLog2(size_t n) {
    int log = 0;
    for (; n > 1; n /= 2)
        ++log;
    return log;
}

}  // namespace

Numbers SortRotationsByFirstByte(const std::vector<uint8_t>& in, int depthLimit) {
    Numbers numbers(in.size());
    std::iota(numbers.begin(), numbers.end(), size_t{0});
    if (depthLimit < 0) depthLimit = 2 * FloorLog2(in.size());
    Introsort(numbers, [&in](size_t a, size_t b) { return in[a] < in[b]; }).Sort(depthLimit);
    return numbers;
}

BlockTransform EncodeBlock(const std::vector<uint8_t>& in) {
    const Numbers sorted = SortRotationsByFirstByte(in);
    BlockTransform result;
    for (size_t i = 0; i < in.size(); ++i) {
        result.bytes.push_back(in[(sorted[i] + in.size() - 1) % in.size()]);
        if (sorted[i] == 1) {
            result.hasPrimaryIndex = true;
            result.primaryIndex = i;
        }
    }
    return result;
}

std::vector<uint8_t> DecodeBlock(const std::vector<uint8_t>& in, size_t primaryIndex) {
    std::array<size_t, 256> smaller{};
    for (size_t c = 0; c < 256; ++c) {
        smaller[c] =
            static_cast<size_t>(std::count_if(in.begin(), in.end(), [c](uint8_t b) { return b < c; }));
    }
    Numbers next(in.size());
    for (size_t i = 0; i < in.size(); ++i)
        next[smaller[in[i]]++] = i;
    std::vector<uint8_t> out;
    size_t p = primaryIndex;
    for (size_t k = 0; k < in.size(); ++k) {
        out.push_back(in[p]);
        p = next[p];
    }
    return out;
}

std::vector<uint8_t> EncodeMoveToFront(const std::vector<uint8_t>& in) {
    std::vector<uint8_t> list(in);
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
    std::vector<uint8_t> out;
    for (const uint8_t byte : in) {
        const auto position = std::find(list.begin(), list.end(), byte) - list.begin();
        out.push_back(static_cast<uint8_t>(position));
        if (position != 0) std::swap(list[0], list[static_cast<size_t>(position)]);
    }
    return out;
}

std::vector<uint8_t> MakeIntrosortKiller(size_t size) {
    // An adversary: every element is "gas", larger than all settled ones, until a comparison forces one of
    // two gas elements to settle at the next smallest value. The sort then always meets bad pivots.
    const size_t gas = size;
    std::vector<size_t> value(size, gas);
    size_t settled = 0;
    size_t candidate = 0;
    const auto less = [&](size_t a, size_t b) {
        if (value[a] == gas && value[b] == gas) value[a == candidate ? a : b] = settled++;
        if (value[a] == gas)
            candidate = a;
        else if (value[b] == gas)
            candidate = b;
        return value[a] < value[b];
    };
    Numbers numbers(size);
    std::iota(numbers.begin(), numbers.end(), size_t{0});
    Introsort(numbers, less).Sort(2 * FloorLog2(size));
    std::vector<uint8_t> bytes(size);
    for (size_t i = 0; i < size; ++i) {
        const size_t v = std::min(value[i], size - 1);
        bytes[i] = static_cast<uint8_t>(size <= 256 ? v : v * 256 / size);
    }
    return bytes;
}

}  // namespace qv::model

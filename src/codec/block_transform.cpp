#include "codec/block_transform.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "codec/introsort.h"

namespace qv {

namespace {

// A rotation is sorted as one word: its first byte as the key, below it whether it is the rotation that
// starts at byte 1, and the byte before its start. Nothing else of it reaches the output, so its number
// need not be kept.
constexpr int32_t kIsRotationOne = 1 << 8;

constexpr int32_t MakeWord(uint8_t first, uint8_t before) {
    return int32_t{first} << kIntrosortKeyShift | before;
}

template <class T>
std::unique_ptr<T[]> AllocateUnset(size_t count, size_t extra = 0) {
    if (count > SIZE_MAX / sizeof(T) - extra) throw std::bad_alloc();
    return std::unique_ptr<T[]>(new T[count + extra]);
}

// Continues out[0 .. period - 1] with itself up to out[size - 1].
void Repeat(uint8_t* out, size_t period, size_t size) {
    for (size_t done = period; done < size;) {
        const size_t count = std::min(done, size - done);
        std::memcpy(out + done, out, count);
        done += count;
    }
}

// Where each byte value's places begin among the sorted bytes.
std::array<size_t, 256> CountSmaller(const uint8_t* in, size_t size) {
    std::array<size_t, 256> places{};
    for (size_t i = 0; i < size; ++i)
        ++places[in[i]];
    size_t sum = 0;
    for (size_t& place : places) {
        const size_t count = place;
        place = sum;
        sum += count;
    }
    return places;
}

// Follows the successors from place to place. A link holds a place's successor and the byte found there, so
// that each step is one load. The walk always comes back to where it began: from there on it repeats.
template <class Link>
void Decode(const uint8_t* in, size_t size, size_t primaryIndex, uint8_t* out) {
    const std::unique_ptr<Link[]> links = AllocateUnset<Link>(size);
    std::array<size_t, 256> places = CountSmaller(in, size);
    for (size_t i = 0; i < size; ++i)
        links[places[in[i]]++] = static_cast<Link>(static_cast<Link>(i) << 8 | in[i]);
    out[0] = in[primaryIndex];
    size_t place = primaryIndex;
    for (size_t k = 1; k < size; ++k) {
        const Link link = links[place];
        out[k] = static_cast<uint8_t>(link);
        place = static_cast<size_t>(link >> 8);
        if (place == primaryIndex) {
            Repeat(out, k, size);
            return;
        }
    }
}

}  // namespace

std::optional<size_t> EncodeBlockTransform(const uint8_t* in, size_t size, uint8_t* out) {
    if (size == 0) return std::nullopt;
    const std::unique_ptr<int32_t[]> words = AllocateUnset<int32_t>(size, kIntrosortPadding);
    words[0] = MakeWord(in[0], in[size - 1]);
    for (size_t i = 1; i < size; ++i)
        words[i] = MakeWord(in[i], in[i - 1]);
    if (size > 1) words[1] |= kIsRotationOne;
    std::fill_n(&words[size], kIntrosortPadding, 0);

    Introsort(words.get(), size);

    for (size_t i = 0; i < size; ++i)
        out[i] = static_cast<uint8_t>(words[i]);
    const auto primary =
        std::find_if(&words[0], &words[size], [](int32_t word) { return (word & kIsRotationOne) != 0; });
    if (primary == &words[size]) return std::nullopt;
    return static_cast<size_t>(primary - &words[0]);
}

void DecodeBlockTransform(const uint8_t* in, size_t size, size_t primaryIndex, uint8_t* out) {
    if (size == 0) return;
    if (size <= size_t{1} << 24)
        Decode<uint32_t>(in, size, primaryIndex, out);
    else
        Decode<uint64_t>(in, size, primaryIndex, out);
}

}  // namespace qv

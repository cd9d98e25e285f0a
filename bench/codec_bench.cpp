// Block transforms, Base64 and the pattern search.

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <numeric>

#include <QVFoundation/QVBase64.h>
#include <QVFoundation/QVBlockTransform.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVPatternSearch.h>

#include "bench.h"
#include "codec/base64.h"
#include "inputs.h"

namespace bench {

namespace {

constexpr std::size_t kBlock = 1 << 16;

using Index = std::uint32_t;

// The required order, by the means of the standard library: an array of rotation numbers, sorted by one byte.
// Its order of equal bytes is another one, which takes the same work.
void EncodeBlockPlain(const Bytes& in, Bytes& out) {
    std::vector<Index> numbers(in.size());
    std::iota(numbers.begin(), numbers.end(), Index{0});
    std::sort(numbers.begin(), numbers.end(), [&in](Index a, Index b) { return in[a] < in[b]; });
    for (std::size_t i = 0; i < in.size(); ++i)
        out[i] = in[(numbers[i] + in.size() - 1) % in.size()];
}

void DecodeBlockPlain(const Bytes& in, std::size_t primary, Bytes& out) {
    std::array<Index, 256> places{};
    for (const std::uint8_t byte : in)
        ++places[byte];
    std::exclusive_scan(places.begin(), places.end(), places.begin(), Index{0});
    std::vector<Index> next(in.size());
    for (std::size_t i = 0; i < in.size(); ++i)
        next[places[in[i]]++] = static_cast<Index>(i);
    Index place = static_cast<Index>(primary);
    for (std::uint8_t& byte : out) {
        byte = in[place];
        place = next[place];
    }
}

void EncodeMoveToFrontPlain(const Bytes& in, Bytes& out) {
    std::array<bool, 256> occurs{};
    for (const std::uint8_t byte : in)
        occurs[byte] = true;
    std::array<std::uint8_t, 256> list{};
    std::array<std::uint8_t, 256> places{};
    std::size_t count = 0;
    for (std::size_t value = 0; value < 256; ++value) {
        if (!occurs[value]) continue;
        list[count] = static_cast<std::uint8_t>(value);
        places[value] = static_cast<std::uint8_t>(count++);
    }
    for (std::size_t i = 0; i < in.size(); ++i) {
        const std::uint8_t place = places[in[i]];
        out[i] = place;
        if (place == 0) continue;
        std::swap(list[0], list[place]);
        places[list[place]] = place;
        places[list[0]] = 0;
    }
}

// For each place in the order of the bytes there, the byte before it.
void CountingSortByFirstByte(const Bytes& in, Bytes& out) {
    std::array<std::uint32_t, 257> starts{};
    for (const std::uint8_t byte : in)
        ++starts[byte + 1U];
    std::partial_sum(starts.begin(), starts.end(), starts.begin());
    std::uint8_t before = in.back();
    for (const std::uint8_t byte : in) {
        out[starts[byte]++] = before;
        before = byte;
    }
}

Comparison CompareBlockEncoding(const Bytes& in) {
    Bytes ours(in.size()), plain(in.size());
    unsigned long primary = 0;
    Require(QVBWTEncode(ours.data(), &primary, in.data(), in.size()) == QVNoErr, "encoding fails");
    EncodeBlockPlain(in, plain);
    // Both hold, for each byte value in turn, the same bytes in some order.
    std::array<std::size_t, 256> counts{};
    for (const std::uint8_t byte : in)
        ++counts[byte];
    std::size_t begin = 0;
    Bytes oursSorted = ours, plainSorted = plain;
    for (const std::size_t count : counts) {
        for (Bytes* bytes : {&oursSorted, &plainSorted}) {
            const auto first = bytes->begin() + static_cast<std::ptrdiff_t>(begin);
            std::sort(first, first + static_cast<std::ptrdiff_t>(count));
        }
        begin += count;
    }
    Require(oursSorted == plainSorted, "another transform");
    return {Times([in, out = ours]() mutable {
                unsigned long index = 0;
                QVBWTEncode(out.data(), &index, in.data(), in.size());
                Keep(out[0]);
            }),
            Times([in, out = plain]() mutable {
                EncodeBlockPlain(in, out);
                Keep(out[0]);
            }),
            "plain: std::sort of indices by first byte",
            1,
            false,
            {"counting sort by first byte, which gives another order", Times([in, out = plain]() mutable {
                 CountingSortByFirstByte(in, out);
                 Keep(out[0]);
             })}};
}

Comparison CompareBlockDecoding(const Bytes& in) {
    Bytes sorted(in.size()), ours(in.size()), plain(in.size());
    unsigned long primary = 0;
    Require(QVBWTEncode(sorted.data(), &primary, in.data(), in.size()) == QVNoErr, "encoding fails");
    Require(QVBWTDecode(ours.data(), sorted.data(), static_cast<long>(in.size()),
                        static_cast<long>(primary)) == QVNoErr,
            "decoding fails");
    DecodeBlockPlain(sorted, primary, plain);
    Require(ours == plain, "another inverse");
    return {Times([=, out = ours]() mutable {
                QVBWTDecode(out.data(), sorted.data(), static_cast<long>(sorted.size()),
                            static_cast<long>(primary));
                Keep(out[0]);
            }),
            Times([=, out = plain]() mutable {
                DecodeBlockPlain(sorted, primary, out);
                Keep(out[0]);
            }),
            "floor: counting, then one chain of loads"};
}

Comparison CompareMoveToFront(const Bytes& in) {
    Bytes ours(in.size()), plain(in.size());
    Require(QVMTFEncode(ours.data(), in.data(), static_cast<long>(in.size())) == QVNoErr, "coding fails");
    EncodeMoveToFrontPlain(in, plain);
    Require(ours == plain, "other places");
    return {Times([in, out = ours]() mutable {
                QVMTFEncode(out.data(), in.data(), static_cast<long>(in.size()));
                Keep(out[0]);
            }),
            Times([in, out = plain]() mutable {
                EncodeMoveToFrontPlain(in, out);
                Keep(out[0]);
            }),
            "floor: swap rule with a table of positions"};
}

std::string TextOf(void* data) {
    return {static_cast<const char*>(QVDataGetImutableBuffer(data)), QVDataGetSize(data)};
}

// Small results share a pool as an application's would; large ones are given back one by one, as the peer's
// are.
std::size_t DrainEach(std::size_t size) {
    return size > 512 ? 1 : 16;
}

// simdutf is not packaged. It uses the same vector method; so does this floor, made of the same functions
// without any object: what is left to compare is the result object and the pool.
constexpr const char* kBase64Floor = "floor: same vectors + malloc/free, for simdutf";

Comparison CompareBase64Encoding(std::size_t size) {
    const Bytes in = Random(size);
    const std::size_t textSize = qv::Base64EncodedSize(size);
    std::string text(textSize, '\0');
    qv::EncodeBase64(in.data(), size, text.data());
    Require(TextOf(QVBase64Encode(in.data(), in.size())) == text, "another text");
    return {DrainPool(Times([in] { Keep(QVBase64Encode(in.data(), in.size())); }), DrainEach(size)),
            Times([in, textSize] {
                auto* out = static_cast<char*>(std::malloc(textSize));
                qv::EncodeBase64(in.data(), in.size(), out);
                Keep(out[0]);
                std::free(out);
            }),
            kBase64Floor, 1, true};
}

// The text stands for `size` bytes.
Comparison CompareBase64Decoding(std::size_t size) {
    const Bytes bytes = Random(size);
    std::string text(qv::Base64EncodedSize(size), '\0');
    qv::EncodeBase64(bytes.data(), size, text.data());
    Require(TextOf(QVBase64Decode(text.data(), text.size())) == std::string(bytes.begin(), bytes.end()),
            "other bytes");
    return {DrainPool(Times([text] { Keep(QVBase64Decode(text.data(), text.size())); }), DrainEach(size)),
            Times([text] {
                auto* out = static_cast<std::uint8_t*>(std::malloc(qv::Base64DecodedSize(text.size())));
                Keep(qv::DecodeBase64(text.data(), text.size(), out).has_value());
                Keep(out[0]);
                std::free(out);
            }),
            kBase64Floor, 1, true};
}

// Every byte of a text without the byte 0 is looked at once.
Floor ReadingOnce(const Bytes& text) {
    return {"every byte read once (memchr)",
            Times([text] { Keep(std::memchr(text.data(), 0, text.size())); })};
}

// A piece of prose that occurs nowhere: one of its letters is changed.
Comparison CompareAbsentPattern(std::size_t length) {
    const Bytes text = English(1 << 20);
    Bytes pattern(text.begin() + 5000, text.begin() + 5000 + static_cast<std::ptrdiff_t>(length));
    pattern[length / 2] = 'q';
    Require(memmem(text.data(), text.size(), pattern.data(), pattern.size()) == nullptr,
            "the pattern occurs");
    Require(!QVBMSearchPattern(text.data(), text.size(), pattern.data(), pattern.size(), nullptr),
            "it is found");
    return {Times([=] {
                Keep(QVBMSearchPattern(text.data(), text.size(), pattern.data(), pattern.size(), nullptr));
            }),
            Times([=] { Keep(memmem(text.data(), text.size(), pattern.data(), pattern.size())); }),
            "memmem",
            1,
            false,
            ReadingOnce(text)};
}

Comparison CompareFoundPattern() {
    Bytes text = English(1 << 20);
    const std::string words = "(quick) brown fx";
    const std::size_t place = text.size() - 1000;
    std::copy(words.begin(), words.end(), text.begin() + static_cast<std::ptrdiff_t>(place));
    const Bytes pattern(words.begin(), words.end());
    unsigned long position = 0;
    Require(QVBMSearchPattern(text.data(), text.size(), pattern.data(), pattern.size(), &position),
            "not found");
    Require(position == place, "found elsewhere");
    return {Times([=] {
                unsigned long found = 0;
                QVBMSearchPattern(text.data(), text.size(), pattern.data(), pattern.size(), &found);
                Keep(found);
            }),
            Times([=] {
                const std::boyer_moore_horspool_searcher searcher(pattern.begin(), pattern.end());
                Keep(std::search(text.begin(), text.end(), searcher));
            }),
            "std::boyer_moore_horspool_searcher",
            1,
            false,
            ReadingOnce(text)};
}

}  // namespace

void AddCodecComparisons(Suite& suite) {
    suite.Add("bwt.encode.english", [] { return CompareBlockEncoding(English(kBlock)); });
    suite.Add("bwt.encode.random", [] { return CompareBlockEncoding(Random(kBlock)); });
    suite.Add("bwt.encode.runs", [] { return CompareBlockEncoding(Runs(kBlock)); });
    suite.Add("bwt.decode.english", [] { return CompareBlockDecoding(English(kBlock)); });
    suite.Add("bwt.decode.random", [] { return CompareBlockDecoding(Random(kBlock)); });
    suite.Add("mtf.english", [] { return CompareMoveToFront(English(kBlock)); });
    suite.Add("mtf.random", [] { return CompareMoveToFront(Random(kBlock)); });
    suite.Add("mtf.runs", [] { return CompareMoveToFront(Runs(kBlock)); });
    for (const std::size_t size : {64, 1024, 1048576}) {
        suite.Add("base64.encode." + std::to_string(size), [=] { return CompareBase64Encoding(size); });
        suite.Add("base64.decode." + std::to_string(size), [=] { return CompareBase64Decoding(size); });
    }
    for (const std::size_t length : {4, 8, 16, 64}) {
        suite.Add("search." + std::to_string(length), [=] { return CompareAbsentPattern(length); });
    }
    suite.Add("search.found_16", CompareFoundPattern);
}

}  // namespace bench

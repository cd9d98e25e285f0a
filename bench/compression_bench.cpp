// Bit streams, the sliding dictionary, Huffman tables and the block compressor.

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <numeric>
#include <random>
#include <zlib.h>

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVBitStream.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDeflate.h>
#include <QVFoundation/QVHuffman.h>
#include <QVFoundation/QVLZSS.h>

#include "bench.h"
#include "codec/sliding_window.h"
#include "codec/tokenizer.h"
#include "inputs.h"
#include "models/plain_block_encoder.h"
#include "plain_tokens.h"

namespace bench {

namespace {

using Handle = std::shared_ptr<void>;

Handle Adopt(void* handle) {
    return {handle, QVRelease};
}

Bytes BytesOf(void* data) {
    const auto* bytes = static_cast<const std::uint8_t*>(QVDataGetImutableBuffer(data));
    return {bytes, bytes + QVDataGetSize(data)};
}

// ---- bit streams ----

struct Code {
    std::uint16_t bits;
    std::uint16_t length;
};

constexpr std::size_t kCodes = 1 << 15;

// Codes of 1 to 16 bits, the shorter ones more often.
std::vector<Code> MakeCodes() {
    std::mt19937 random(5);
    std::vector<Code> codes(kCodes);
    for (Code& code : codes) {
        code.length = static_cast<std::uint16_t>(1 + random() % (1 + random() % 16));
        code.bits = static_cast<std::uint16_t>(random() & ((1U << code.length) - 1));
    }
    return codes;
}

std::size_t CountBits(const std::vector<Code>& codes) {
    return std::accumulate(codes.begin(), codes.end(), std::size_t{0},
                           [](std::size_t sum, const Code& code) { return sum + code.length; });
}

// Collects bits from the top of 64 and writes them four bytes at a time.
std::size_t PutPlain(const std::vector<Code>& codes, std::uint8_t* out) {
    std::uint8_t* to = out;
    std::uint64_t collected = 0;
    unsigned count = 0;
    for (const Code& code : codes) {
        collected = collected << code.length | code.bits;
        count += code.length;
        if (count >= 32) {
            const std::uint32_t word =
                __builtin_bswap32(static_cast<std::uint32_t>(collected >> (count - 32)));
            std::memcpy(to, &word, 4);
            to += 4;
            count -= 32;
        }
    }
    for (; count >= 8; count -= 8)
        *to++ = static_cast<std::uint8_t>(collected >> (count - 8));
    if (count > 0) *to++ = static_cast<std::uint8_t>(collected << (8 - count));
    return static_cast<std::size_t>(to - out);
}

Handle PutCodes(const std::vector<Code>& codes) {
    Handle data = Adopt(QVDataCreate(nullptr, 0));
    const Handle stream = Adopt(QVOutputBitStreamCreateWithData(data.get(), 0));
    for (const Code& code : codes)
        QVOutputBitStreamPutUInt16(stream.get(), code.bits, code.length, nullptr, 1);
    return data;
}

// The bytes that the codes fill; the stream may keep one more.
Bytes CodeBytes(const std::vector<Code>& codes) {
    Bytes bytes(CountBits(codes) / 8 + 16);
    bytes.resize(PutPlain(codes, bytes.data()));
    return bytes;
}

Comparison ComparePuttingCodes() {
    const auto codes = MakeCodes();
    const Bytes expected = CodeBytes(codes);
    Bytes ours = BytesOf(PutCodes(codes).get());
    ours.resize(expected.size());
    Require(ours == expected, "other bits");
    return {Times([codes] { Keep(PutCodes(codes).get()); }),
            Times([codes, out = Bytes(expected.size() + 16)]() mutable {
                PutPlain(codes, out.data());
                Keep(out[0]);
            }),
            "floor: 64-bit accumulator",
            kCodes,
            false,
            EmptyCalls(kCodes)};
}

constexpr std::size_t kBits = 1 << 16;

Comparison ComparePuttingSingleBits() {
    const Bytes bits = FewSymbols(kBits, 2);
    return {Times([bits] {
                const Handle data = Adopt(QVDataCreate(nullptr, 0));
                const Handle stream = Adopt(QVOutputBitStreamCreateWithData(data.get(), 0));
                for (const std::uint8_t bit : bits)
                    QVOutputBitStreamPutOneBit(stream.get(), bit & 1);
                Keep(data.get());
            }),
            Times([bits, out = Bytes()]() mutable {
                out.assign(kBits / 8, 0);
                std::uint8_t byte = 0;
                for (std::size_t i = 0; i < kBits; ++i) {
                    byte = static_cast<std::uint8_t>(byte << 1 | (bits[i] & 1));
                    if (i % 8 == 7) out[i / 8] = byte;
                }
                Keep(out[0]);
            }),
            "plain: a byte at a time",
            kBits,
            false,
            EmptyCalls(kBits)};
}

Comparison CompareGettingCodes() {
    const auto codes = MakeCodes();
    Bytes bytes = CodeBytes(codes);
    const std::size_t bits = CountBits(codes);
    const Handle data = Adopt(QVDataCreate(bytes.data(), bytes.size()));
    bytes.resize(bytes.size() + 8);
    const auto sumOfOurs = [=] {
        const Handle stream = Adopt(QVInputBitStreamCreateWithData(data.get(), bits));
        unsigned sum = 0;
        for (const Code& code : codes) {
            std::uint8_t buffer[2] = {};
            QVInputBitStreamGetBits(stream.get(), buffer, code.length, nullptr, 1);
            // Byte by byte, as they were written: one load of both would have to wait until both stores are
            // in the cache.
            unsigned first = buffer[0];
            Keep(first);
            sum = sum * 3 + ((first << 8U | buffer[1]) >> (16 - code.length));
        }
        return sum;
    };
    const auto sumOfPlain = [=] {
        std::size_t at = 0;
        unsigned sum = 0;
        for (const Code& code : codes) {
            std::uint64_t word;
            std::memcpy(&word, &bytes[at / 8], 8);
            word = __builtin_bswap64(word) << (at % 8);
            sum = sum * 3 + static_cast<unsigned>(word >> (64 - code.length));
            at += code.length;
        }
        return sum;
    };
    Require(sumOfOurs() == sumOfPlain(), "other codes");
    return {Times([=] { Keep(sumOfOurs()); }),
            Times([=] { Keep(sumOfPlain()); }),
            "floor: 64-bit load and shift",
            kCodes,
            false,
            EmptyCalls(kCodes)};
}

Comparison CompareGettingSingleBits() {
    const Bytes bytes = Random(kBits / 8 + 8);
    const Handle data = Adopt(QVDataCreate(bytes.data(), bytes.size()));
    const auto sumOfOurs = [data] {
        const Handle stream = Adopt(QVInputBitStreamCreateWithData(data.get(), kBits));
        unsigned sum = 0;
        for (std::size_t i = 0; i < kBits; ++i)
            sum = sum * 3 + QVInputBitStreamGetOneBit(stream.get());
        return sum;
    };
    const auto sumOfPlain = [bytes] {
        unsigned sum = 0;
        for (std::size_t i = 0; i < kBits; ++i) {
            std::uint64_t word;
            std::memcpy(&word, &bytes[i / 8], 8);
            sum = sum * 3 + static_cast<unsigned>((__builtin_bswap64(word) << (i % 8)) >> 63);
        }
        return sum;
    };
    Require(sumOfOurs() == sumOfPlain(), "other bits");
    return {Times([=] { Keep(sumOfOurs()); }),
            Times([=] { Keep(sumOfPlain()); }),
            "floor: 64-bit load and shift",
            kBits,
            false,
            EmptyCalls(kBits)};
}

// ---- tokens ----

constexpr std::size_t kChunk = 32768;

// A chunk's tokens by the public calls: a search and one appended byte for each token.
std::size_t TokenizeByCalls(void* dictionary, const std::uint8_t* bytes, std::size_t size,
                            std::uint16_t* tokens) {
    std::uint16_t* out = tokens;
    for (std::size_t at = 0; at < size;) {
        unsigned short offset = 0;
        unsigned char length = 0;
        const bool matches = QVLZSSSearchSlideDic(dictionary, bytes + at, size - at, &offset, &length) != 0;
        QVLZSSAppendValue(dictionary, bytes[at]);
        if (matches) {
            *out++ = static_cast<std::uint16_t>(length + qv::kMatchTokenBase);
            *out++ = offset;
            at += length;
        } else {
            *out++ = bytes[at++];
        }
    }
    return static_cast<std::size_t>(out - tokens);
}

// Every chunk's tokens must be found; the rest of the work could in theory be next to nothing.
Floor SearchAlone(const Bytes& in) {
    const auto window = std::make_shared<qv::SlidingWindow>();
    const auto tokens = std::make_shared<qv::TokenList>();
    return {"the token search alone, its memory reused", Times([=] {
                for (std::size_t at = 0; at < in.size(); at += kChunk) {
                    qv::Tokenize(*window, in.data() + at, std::min(kChunk, in.size() - at), *tokens);
                    Keep(tokens->Size());
                }
            })};
}

// What `Lists` finds by plain loops is the reference.
template <class Lists>
Comparison CompareTokens(const Bytes& in, const std::string& name) {
    Require(in.size() == kChunk, "one chunk");
    std::vector<std::uint16_t> ours(kChunk), plain(kChunk);
    const auto lists = std::make_shared<Lists>();
    ours.resize(TokenizeByCalls(Adopt(QVLZSSCreate()).get(), in.data(), kChunk, ours.data()));
    plain.resize(TokenizePlain(*lists, in.data(), kChunk, plain.data()));
    Require(ours == plain, "other tokens");
    return {Times([in, values = std::vector<std::uint16_t>(kChunk)]() mutable {
                TokenizeByCalls(Adopt(QVLZSSCreate()).get(), in.data(), kChunk, values.data());
                Keep(values[0]);
            }),
            Times([in, lists, values = std::vector<std::uint16_t>(kChunk)]() mutable {
                TokenizePlain(*lists, in.data(), kChunk, values.data());
                Keep(values[0]);
            }),
            name,
            1,
            false,
            SearchAlone(in)};
}

// ---- the block compressor ----

constexpr std::size_t kCompressed = 1 << 20;

Bytes CompressOurs(const Bytes& in) {
    const Handle source = Adopt(QVDataCreateNoCopy(const_cast<std::uint8_t*>(in.data()), in.size(), 0));
    const Handle destination = Adopt(QVDataCreate(nullptr, 0));
    const Handle from = Adopt(QVStreamCreateWithMemory(source.get()));
    const Handle to = Adopt(QVStreamCreateWithMemory(destination.get()));
    const Handle encoder = Adopt(QVDeflateCreate());
    Require(QVDeflateEncode(encoder.get(), to.get(), from.get()) == QVNoErr, "encoding fails");
    return BytesOf(destination.get());
}

std::size_t CompressPeer(const Bytes& in, int level, Bytes& out) {
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    std::size_t size = 0;
    for (std::size_t at = 0; at < in.size(); at += kChunk) {
        stream.next_in = const_cast<std::uint8_t*>(in.data() + at);
        stream.avail_in = static_cast<uInt>(std::min(kChunk, in.size() - at));
        stream.next_out = out.data() + size;
        stream.avail_out = static_cast<uInt>(out.size() - size);
        deflate(&stream, Z_FINISH);
        size += stream.total_out;
        deflateReset(&stream);
    }
    deflateEnd(&stream);
    return size;
}

Comparison CompareCompression(const Bytes& in, int peerLevel, const std::string& peerName) {
    // The plain model is slow; a part of the input tells as much.
    const Bytes part(in.begin(), in.begin() + static_cast<std::ptrdiff_t>(3 * kChunk + 100));
    Require(CompressOurs(part) == model::Compress(part), "other blocks");
    return {Times([in] { Keep(CompressOurs(in).size()); }),
            Times([in, peerLevel, out = Bytes(2 * in.size())]() mutable {
                Keep(CompressPeer(in, peerLevel, out));
            }),
            peerName,
            1,
            false,
            SearchAlone(in)};
}

// ---- Huffman tables ----

// Code lengths by two queues of sums in order, then codes in order of length: arrays only.
struct PlainCodes {
    std::vector<std::uint32_t> lengths, codes;

    explicit PlainCodes(const std::vector<std::uint32_t>& frequencies)
        : lengths(frequencies.size()), codes(frequencies.size()) {
        const std::size_t count = frequencies.size();
        std::vector<std::uint32_t> order(count), parents(2 * count);
        std::vector<std::uint64_t> sums(2 * count);
        std::iota(order.begin(), order.end(), 0U);
        std::sort(order.begin(), order.end(),
                  [&](std::uint32_t a, std::uint32_t b) { return frequencies[a] < frequencies[b]; });
        for (std::size_t i = 0; i < count; ++i)
            sums[i] = frequencies[order[i]];
        std::size_t leaf = 0, inner = count;
        for (std::size_t node = count; node < 2 * count - 1; ++node) {
            const auto take = [&] {
                const bool takesLeaf = leaf < count && (inner == node || sums[leaf] <= sums[inner]);
                const std::size_t taken = takesLeaf ? leaf++ : inner++;
                parents[taken] = static_cast<std::uint32_t>(node);
                return sums[taken];
            };
            sums[node] = take();
            sums[node] += take();
        }
        std::vector<std::uint32_t> depths(2 * count);
        for (std::size_t node = 2 * count - 2; node-- > 0;)
            depths[node] = depths[parents[node]] + 1;
        std::uint32_t starts[33] = {}, counts[33] = {};
        for (std::size_t i = 0; i < count; ++i)
            ++counts[lengths[order[i]] = depths[i]];
        for (unsigned length = 1; length < 32; ++length)
            starts[length + 1] = (starts[length] + counts[length]) << 1;
        for (std::size_t symbol = 0; symbol < count; ++symbol)
            codes[symbol] = starts[lengths[symbol]]++;
    }
};

Comparison CompareHuffmanTables() {
    std::mt19937 random(6);
    std::vector<std::uint32_t> frequencies(512);
    for (auto& frequency : frequencies)
        frequency = static_cast<std::uint32_t>(10 + random() % (1U << (random() % 8 + 3)));
    const Handle coder = Adopt(QVHuffmanCreate());
    const auto setTable = [=] { return QVHuffmanSetFrequencyTable(coder.get(), frequencies.data(), 512); };
    Require(setTable() == QVNoErr, "no tables");
    // Ties may be broken in another way, but the whole is as short.
    const Bytes lengths = BytesOf(QVHuffmanGetBitLengthTableData(coder.get()));
    const PlainCodes plain(frequencies);
    std::uint64_t oursBits = 0, plainBits = 0;
    for (std::size_t i = 0; i < 512; ++i) {
        std::uint32_t length;
        std::memcpy(&length, &lengths[4 * i], 4);
        oursBits += std::uint64_t{length} * frequencies[i];
        plainBits += std::uint64_t{plain.lengths[i]} * frequencies[i];
    }
    Require(oursBits == plainBits, "codes of another total length");
    return {Times([setTable] { Keep(setTable()); }),
            Times([frequencies] { Keep(PlainCodes(frequencies).codes[0]); }), "floor: arrays, two queues"};
}

}  // namespace

void AddCompressionComparisons(Suite& suite) {
    suite.Add("bits.put_code", ComparePuttingCodes);
    suite.Add("bits.put_one", ComparePuttingSingleBits);
    suite.Add("bits.get_code", CompareGettingCodes);
    suite.Add("bits.get_one", CompareGettingSingleBits);

    struct Input {
        const char* name;
        Bytes (*make)(std::size_t size);
        int level;
    };
    static constexpr Input kInputs[] = {{"english", English, 1}, {"source", SourceText, 1},
                                        {"json", Json, 1},       {"runs", Runs, 6},
                                        {"records", Records, 6}, {"random", Random, 1}};
    for (const Input& input : kInputs) {
        const std::string peer = "zlib " + std::to_string(input.level) + ", raw, 32 KiB pieces";
        suite.Add(std::string("compress.") + input.name,
                  [=] { return CompareCompression(input.make(kCompressed), input.level, peer); });
    }
    for (const unsigned symbols : {2, 4}) {
        suite.Add("compress.symbols_" + std::to_string(symbols), [=] {
            return CompareCompression(FewSymbols(kCompressed, symbols), 9, "zlib 9, raw, 32 KiB pieces");
        });
    }
    for (const Input& input : kInputs) {
        suite.Add(std::string("tokens.") + input.name, [=] {
            const Bytes in = input.make(kChunk);
            if (input.make == Random)
                return CompareTokens<PairLists>(in, "plain: pair lists with remembered ends");
            return CompareTokens<TripleLists>(in, "floor: triple lists until the first rebase");
        });
    }
    suite.Add("huffman.tables_512", CompareHuffmanTables);
}

}  // namespace bench

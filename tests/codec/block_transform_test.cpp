#include "codec/block_transform.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "codec/move_to_front.h"
#include "models/block_transform_model.h"
#include "support/shaped_bytes.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(BlockTransform, EqualsThePlainModel) {
    qvtest::ShapedBytes random(11);
    for (int round = 0; round < 60'000; ++round) {
        const Bytes in = random.Make(random.SomeSize(5000));
        const auto expected = qv::model::EncodeBlock(in);
        Bytes out(in.size());
        const auto primary = qv::EncodeBlockTransform(in.data(), in.size(), out.data());
        ASSERT_EQ(out, expected.bytes) << "round " << round;
        ASSERT_EQ(primary.has_value(), expected.hasPrimaryIndex);
        ASSERT_EQ(primary.value_or(0), expected.primaryIndex) << "round " << round;
    }
}

TEST(BlockTransform, DecodesAnyBytesFromAnyIndexAsThePlainModelDoes) {
    qvtest::ShapedBytes random(12);
    for (int round = 0; round < 40'000; ++round) {
        const Bytes in = random.Make(1 + random.SomeSize(2000));
        const std::size_t primary = random.Below(in.size());
        Bytes out(in.size());
        qv::DecodeBlockTransform(in.data(), in.size(), primary, out.data());
        ASSERT_EQ(out, qv::model::DecodeBlock(in, primary)) << "round " << round;
    }
}

TEST(BlockTransform, WorksInPlace) {
    qvtest::ShapedBytes random(13);
    for (int round = 0; round < 500; ++round) {
        const Bytes in = random.Make(2 + random.SomeSize(1000));
        Bytes bytes = in;
        const auto primary = qv::EncodeBlockTransform(bytes.data(), bytes.size(), bytes.data());
        ASSERT_EQ(bytes, qv::model::EncodeBlock(in).bytes);
        const Bytes decoded = qv::model::DecodeBlock(bytes, primary.value());
        qv::DecodeBlockTransform(bytes.data(), bytes.size(), *primary, bytes.data());
        ASSERT_EQ(bytes, decoded);
    }
}

TEST(BlockTransform, ComesBackToInputsWithoutRepeatedBytes) {
    qvtest::ShapedBytes random(14);
    for (int round = 0; round < 2'000; ++round) {
        Bytes in(256);
        for (std::size_t i = 0; i < in.size(); ++i)
            in[i] = static_cast<std::uint8_t>(i);
        for (std::size_t i = in.size() - 1; i > 0; --i)
            std::swap(in[i], in[random.Below(i + 1)]);
        in.resize(2 + random.Below(255));
        Bytes sorted(in.size()), back(in.size());
        const auto primary = qv::EncodeBlockTransform(in.data(), in.size(), sorted.data());
        qv::DecodeBlockTransform(sorted.data(), sorted.size(), primary.value(), back.data());
        ASSERT_EQ(back, in);
    }
}

TEST(BlockTransform, DecodesBlocksTooLargeForNarrowLinks) {
    // A ring of bytes 0 1 2 ... 255 0 1 ..., sorted: each value stands `runs` times in a row.
    const std::size_t runs = (std::size_t{1} << 16) + 1;
    Bytes in;
    for (std::size_t value = 0; value < 256; ++value)
        in.insert(in.end(), runs, static_cast<std::uint8_t>(value));
    Bytes out(in.size());
    qv::DecodeBlockTransform(in.data(), in.size(), in.size() - 1, out.data());
    // Sorted bytes succeed themselves: every place leads back to itself.
    EXPECT_EQ(std::count(out.begin(), out.end(), 255), static_cast<std::ptrdiff_t>(in.size()));
    std::rotate(in.begin(), in.begin() + 1, in.end());
    qv::DecodeBlockTransform(in.data(), in.size(), 5, out.data());
    std::vector<std::size_t> next(in.size());
    std::vector<std::size_t> places(256);
    for (std::size_t value = 0; value < 256; ++value)
        places[value] = value * runs;
    for (std::size_t i = 0; i < in.size(); ++i)
        next[places[in[i]]++] = i;
    for (std::size_t k = 0, p = 5; k < in.size(); ++k, p = next[p])
        ASSERT_EQ(out[k], in[p]) << k;
}

TEST(MoveToFront, EqualsThePlainModel) {
    qvtest::ShapedBytes random(15);
    for (int round = 0; round < 40'000; ++round) {
        const Bytes in = random.Make(random.SomeSize(3000));
        Bytes out(in.size());
        qv::EncodeMoveToFront(in.data(), in.size(), out.data());
        ASSERT_EQ(out, qv::model::EncodeMoveToFront(in)) << "round " << round;
    }
}

TEST(MoveToFront, WorksInPlace) {
    Bytes bytes = {'b', 'a', 'a', 'c', 'a'};
    qv::EncodeMoveToFront(bytes.data(), bytes.size(), bytes.data());
    EXPECT_EQ(bytes, (Bytes{1, 1, 0, 2, 2}));
}

}  // namespace

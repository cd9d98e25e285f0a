#include "crypto/md5_digest.h"

#include <gtest/gtest.h>

#include "crypto/random_bytes.h"
#include "models/md5_model.h"

namespace {

using qvtest::Bytes;

qvmodel::Md5State HashInPieces(const Bytes& message, const std::vector<std::size_t>& cuts) {
    qv::Md5Block block;
    qv::Md5Digest digest(block);
    digest.Initialize();
    std::size_t from = 0;
    for (std::size_t to : cuts) {
        digest.Update(message.data() + from, to - from);
        from = to;
    }
    digest.Update(message.data() + from, message.size() - from);
    digest.Finish();
    return digest.GetWords();
}

TEST(Md5Blocks, CompressAsTheModelDoes) {
    qvtest::RandomBytes random(3);
    const Bytes blocks = random.Make(64 * 20);
    qvmodel::Md5State expected = qvmodel::kMd5Start;
    for (std::size_t i = 0; i < blocks.size(); i += 64)
        expected = qvmodel::CompressMd5(expected, blocks.data() + i);
    qv::Md5Words words = qvmodel::kMd5Start;
    qv::TransformMd5Blocks(words, blocks.data(), 0);
    EXPECT_EQ(words, qvmodel::kMd5Start);
    qv::TransformMd5Blocks(words, blocks.data(), 20);
    EXPECT_EQ(words, expected);
}

TEST(Md5Digest, EveryLengthAsTheModelDoes) {
    qvtest::RandomBytes random(4);
    for (std::size_t size = 0; size <= 300; ++size) {
        const Bytes message = random.Make(size);
        EXPECT_EQ(HashInPieces(message, {}), qvmodel::HashMd5(message)) << size;
    }
}

TEST(Md5Digest, EverySplitInTwoGivesTheSameDigest) {
    qvtest::RandomBytes random(5);
    for (std::size_t size : {1, 55, 56, 63, 64, 65, 120, 127, 128, 200}) {
        const Bytes message = random.Make(size);
        const qvmodel::Md5State whole = HashInPieces(message, {});
        for (std::size_t cut = 0; cut <= size; ++cut)
            EXPECT_EQ(HashInPieces(message, {cut}), whole) << size << " cut at " << cut;
    }
}

TEST(Md5Digest, AnySplitGivesTheSameDigest) {
    qvtest::RandomBytes random(6);
    for (int round = 0; round < 300; ++round) {
        const Bytes message = random.Make(random.Below(1000));
        std::vector<std::size_t> cuts;
        for (std::size_t at = 0; (at += random.Below(150)) <= message.size();)
            cuts.push_back(at);
        EXPECT_EQ(HashInPieces(message, cuts), qvmodel::HashMd5(message)) << "round " << round;
    }
}

// Between 56 and 63 bytes the length words replace the tail: bytes that the mark and the length overwrite do
// not count.
TEST(Md5Digest, LengthReplacesATailThatLeavesNoRoom) {
    Bytes message(63, 'a');
    const qvmodel::Md5State digest = HashInPieces(message, {});
    for (std::size_t i = 56; i < 63; ++i)
        message[i] = 'z';
    EXPECT_EQ(HashInPieces(message, {}), digest);
    message[55] = 'z';
    EXPECT_NE(HashInPieces(message, {}), digest);
}

TEST(Md5Digest, UpdateAfterFinishGoesOnFromTheFinishedState) {
    qvtest::RandomBytes random(7);
    const Bytes first = random.Make(10);
    const Bytes second = random.Make(70);

    Bytes finished = first;
    finished.resize(64);
    finished[10] = 0x80;
    finished[56] = 80;
    qvmodel::Md5State expected = qvmodel::CompressMd5(qvmodel::kMd5Start, finished.data());
    Bytes next(first);
    next.insert(next.end(), second.begin(), second.end());
    expected = qvmodel::CompressMd5(expected, next.data());
    Bytes last(next.begin() + 64, next.end());
    last.resize(64);
    last[16] = 0x80;
    last[56] = 640 & 0xFF;
    last[57] = 640 >> 8;
    expected = qvmodel::CompressMd5(expected, last.data());

    qv::Md5Block block;
    qv::Md5Digest digest(block);
    digest.Initialize();
    digest.Update(first.data(), first.size());
    digest.Finish();
    digest.Update(second.data(), second.size());
    digest.Finish();
    EXPECT_EQ(digest.GetWords(), expected);
}

TEST(Md5Digest, CountsLentBlocksAsPartOfTheMessage) {
    qvtest::RandomBytes random(8);
    const Bytes message = random.Make(64 * 3 + 5);
    qv::Md5Block block;
    qv::Md5Digest digest(block);
    digest.Initialize();
    digest.Update(message.data(), 64);
    qv::TransformMd5Blocks(digest.LendWords(2), message.data() + 64, 2);
    digest.Update(message.data() + 192, 5);
    digest.Finish();
    EXPECT_EQ(digest.GetWords(), qvmodel::HashMd5(message));
}

}  // namespace

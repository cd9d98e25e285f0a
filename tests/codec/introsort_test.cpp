#include "codec/introsort.h"

#include <cstdint>
#include <vector>

#include "models/block_transform_model.h"
#include "support/shaped_bytes.h"

namespace {

using qv::ScanGreater;
using Bytes = std::vector<std::uint8_t>;

std::vector<ScanGreater> ScansOfThisProcessor() {
    std::vector<ScanGreater> scans = {qv::ScanGreaterPlain};
#if QV_X86
    if (qv::HasAvx2()) scans.push_back(qv::ScanGreaterAvx2);
    if (qv::HasAvx512()) scans.push_back(qv::ScanGreaterAvx512);
#endif
    return scans;
}

// Which of the elements 0, 1, ... stands at each place when they are sorted by keys[element].
std::vector<std::size_t> SortedBy(const Bytes& keys, int depthLimit, ScanGreater scan) {
    std::vector<std::int32_t> words;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        words.push_back(keys[i] << qv::kIntrosortKeyShift | static_cast<std::int32_t>(i));
    }
    words.resize(keys.size() + qv::kIntrosortPadding, -1);
    qv::Introsort(words.data(), keys.size(), depthLimit, scan);
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < keys.size(); ++i)
        order.push_back(words[i] & 0xFFFF);
    return order;
}

int FullDepth(std::size_t size) {
    int log = 0;
    for (; size > 1; size /= 2)
        ++log;
    return 2 * log;
}

TEST(Introsort, LeavesEqualKeysWhereThePlainSortLeavesThem) {
    const auto scans = ScansOfThisProcessor();
    qvtest::ShapedBytes random(1);
    for (int round = 0; round < 30'000; ++round) {
        const Bytes keys = random.Make(random.SomeSize(3000));
        const int depth = FullDepth(keys.size());
        const auto expected = qv::model::SortRotationsByFirstByte(keys);
        for (const ScanGreater scan : scans)
            ASSERT_EQ(SortedBy(keys, depth, scan), expected) << "round " << round;
    }
}

TEST(Introsort, TakesTheHeapWhereTheDepthRunsOut) {
    const auto scans = ScansOfThisProcessor();
    qvtest::ShapedBytes random(2);
    for (int round = 0; round < 6'000; ++round) {
        const Bytes keys = random.Make(random.SomeSize(2000));
        const int depth = static_cast<int>(random.Below(8));
        const auto expected = qv::model::SortRotationsByFirstByte(keys, depth);
        for (const ScanGreater scan : scans) {
            ASSERT_EQ(SortedBy(keys, depth, scan), expected) << "round " << round << ", depth " << depth;
        }
    }
}

TEST(Introsort, IsRightAtEverySizeAroundTheBlocksAndTheInsertionLimit) {
    const auto scans = ScansOfThisProcessor();
    qvtest::ShapedBytes random(3);
    for (std::size_t size = 0; size <= 300; ++size) {
        for (int round = 0; round < 12; ++round) {
            const Bytes keys = random.Make(size);
            const auto expected = qv::model::SortRotationsByFirstByte(keys);
            for (const ScanGreater scan : scans)
                ASSERT_EQ(SortedBy(keys, FullDepth(size), scan), expected) << size;
        }
    }
}

TEST(Introsort, RearrangesRangesOfOneKeyAtAllSizes) {
    // The sizes around the copy on the stack and its multiples, odd and even, and some below.
    for (const std::size_t size :
         {17, 18, 31, 32, 33, 63, 64, 65, 100, 4095, 4096, 4097, 8191, 8193, 20'001}) {
        const Bytes keys(size, 200);
        EXPECT_EQ(SortedBy(keys, FullDepth(size), qv::GetScanGreater()),
                  qv::model::SortRotationsByFirstByte(keys));
    }
}

TEST(Introsort, SortsKillerInputsThroughTheHeap) {
    for (const std::size_t size : {40, 64, 128, 200, 256, 300, 1000, 5000}) {
        const Bytes keys = qv::model::MakeIntrosortKiller(size);
        for (const ScanGreater scan : ScansOfThisProcessor()) {
            ASSERT_EQ(SortedBy(keys, FullDepth(size), scan), qv::model::SortRotationsByFirstByte(keys))
                << size;
        }
    }
}

TEST(Introsort, KillerInputsExhaustTheDepthOfDistinctKeys) {
    // The order with a much larger limit differs, so the limit of the sort was reached and its heap is used.
    const Bytes keys = qv::model::MakeIntrosortKiller(256);
    Bytes doubled;
    for (const std::uint8_t key : keys)
        doubled.insert(doubled.end(), 2, key / 2);
    EXPECT_NE(SortedBy(doubled, 6, qv::GetScanGreater()), SortedBy(doubled, 100, qv::GetScanGreater()));
}

TEST(WordScan, EveryProcessorsScanGivesTheSameMask) {
    qvtest::ShapedBytes random(4);
    for (int round = 0; round < 20'000; ++round) {
        std::vector<std::int32_t> words(qv::kWordScanBlock);
        for (auto& word : words)
            word = static_cast<std::int32_t>(random.Below(8)) - 1;
        const std::size_t count = random.Below(qv::kWordScanBlock + 1);
        const auto bound = static_cast<std::int32_t>(random.Below(9)) - 2;
        const std::uint64_t expected = qv::ScanGreaterPlain(words.data(), count, bound);
        for (const ScanGreater scan : ScansOfThisProcessor())
            ASSERT_EQ(scan(words.data(), count, bound), expected);
    }
}

}  // namespace

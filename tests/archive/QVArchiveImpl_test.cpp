// What stands behind the archive's functions: the search, the resizing of a body, the layout's arithmetic,
// the numbering.
#include "archive/QVArchiveImpl.h"

#include "archive/archive_test_tools.h"
#include "archive/item_ids.h"
#include "runtime/Handle.h"

namespace {

using qvmodel::ArchiveItem;
using qvmodel::DirectoryBody;
using qvtest::LittleEndian;
using qvtest::NoiseBytes;

constexpr std::uint16_t kFile = 1;
constexpr std::size_t kFirstItem = 30;

class QVArchiveImplTest : public qvtest::ArchiveTest {
protected:
    [[nodiscard]] ::QVArchiveImpl& Archive() { return *qv::FromHandle<::QVArchiveImpl>(archive_.Get()); }
};

TEST_F(QVArchiveImplTest, FindsItemsWhereTheyBegin) {
    ASSERT_EQ(New(), QVNoErr);
    EXPECT_EQ(Archive().FindItem(2), 0U);
    AddBytes("12345");
    ASSERT_EQ(MakeRoot(2), QVNoErr);
    AddBytes("");
    EXPECT_EQ(Archive().FindItem(2), kFirstItem);
    EXPECT_EQ(Archive().FindItem(1), kFirstItem + 18 + 5);
    EXPECT_EQ(Archive().FindItem(3), kFirstItem + 18 + 5 + 18 + 12);
    EXPECT_EQ(Archive().FindItem(4), 0U);
}

TEST_F(QVArchiveImplTest, StepsOverAttributesAndBodies) {
    ASSERT_EQ(New(), QVNoErr);
    AddBytes("12345");
    AddBytes("6");
    Patch(kFirstItem + 6, LittleEndian(2U));  // two of the body's bytes become attributes
    Patch(kFirstItem + 10, LittleEndian(3ULL));
    EXPECT_EQ(Archive().FindItem(3), kFirstItem + 18 + 5);
}

// Lengths that lead nowhere, backwards through wrapping sums or beyond the end, end the search; it never runs
// in circles.
TEST_F(QVArchiveImplTest, TheSearchOnlyStepsForwardInsideTheFile) {
    ASSERT_EQ(New(), QVNoErr);
    AddBytes("abc");
    AddBytes("def");
    const std::uint64_t lengths[] = {
        0ULL - 18,               // to the same item again
        0ULL - 18 - kFirstItem,  // to the file's start
        0ULL - 1,
        0x7FFFFFFFFFFFFFFFULL,
        0x8000000000000000ULL,
        3 + 18 + 3 + 1,  // one byte beyond the end
    };
    for (const std::uint64_t length : lengths) {
        Patch(kFirstItem + 10, LittleEndian(length));
        EXPECT_EQ(Archive().FindItem(3), 0U) << length;
        EXPECT_EQ(Enter(3, {2}), QVNoErr);
    }
    Patch(kFirstItem + 10, LittleEndian(3ULL));
    for (const std::uint32_t attributes : {0xFFFFFFFFU, 0xFFFFFFEEU, 25U}) {
        Patch(kFirstItem + 6, LittleEndian(attributes));
        EXPECT_EQ(Archive().FindItem(3), 0U) << attributes;
    }
    Patch(kFirstItem + 6, LittleEndian(0U));
    EXPECT_EQ(Archive().FindItem(3), kFirstItem + 21);
}

TEST_F(QVArchiveImplTest, ADamagedDirectoryIsToldAndLeftAlone) {
    ASSERT_EQ(New(), QVNoErr);
    ASSERT_EQ(MakeRoot(2), QVNoErr);
    AddBytes("abc");
    for (const std::uint64_t length : {0ULL, 3ULL, 12ULL + 18 + 3 + 1, 0ULL - 18, 0x8000000000000000ULL}) {
        Patch(kFirstItem + 10, LittleEndian(length));
        const std::string before = Bytes();
        EXPECT_EQ(Enter(1, {2}), QVErrFormat) << length;
        EXPECT_EQ(Bytes(), before);
    }
}

TEST_F(QVArchiveImplTest, ACutFileEndsTheSearch) {
    ASSERT_EQ(New(), QVNoErr);
    AddBytes("abc");
    AddBytes("def");
    for (std::size_t size = kFirstItem + 21 + 17; size >= kFirstItem; --size) {
        std::filesystem::resize_file(archivePath_, size);
        EXPECT_EQ(Archive().FindItem(3), 0U) << size;
    }
}

TEST_F(QVArchiveImplTest, ABodyShrinksAndTheFileWithIt) {
    for (const std::size_t tail : {0U, 1U, 5U, 1000U, 3000U, 1048576U + 5}) {
        for (const std::size_t newLength : {0U, 1U, 1999U}) {
            ASSERT_EQ(New(), QVNoErr);
            const std::string body = NoiseBytes(2000, 1);
            const std::string behind = NoiseBytes(tail, 2);
            AddBytes(body);
            AddBytes(behind);
            ASSERT_EQ(Archive().ResizeItemBody(kFirstItem, newLength), QVNoErr);
            EXPECT_EQ(AddBytes("after"), 4U);
            EXPECT_EQ(Items(), (std::vector<ArchiveItem>{{2, kFile, "", body.substr(0, newLength)},
                                                         {3, kFile, "", behind},
                                                         {4, kFile, "", "after"}}))
                << tail << " behind " << newLength;
            ExpectDirectoryHolds(2);
        }
    }
}

TEST_F(QVArchiveImplTest, ABodyGrowsByZeros) {
    for (const std::size_t growth : {1U, 1000U, 5000U, 1048576U * 2 + 3}) {
        ASSERT_EQ(New(), QVNoErr);
        const std::string body = NoiseBytes(700, 1);
        const std::string behind = NoiseBytes(900, 2);
        AddBytes(body);
        AddBytes(behind);
        ASSERT_EQ(Archive().ResizeItemBody(kFirstItem, body.size() + growth), QVNoErr);
        EXPECT_EQ(Items(), (std::vector<ArchiveItem>{{2, kFile, "", body + std::string(growth, '\0')},
                                                     {3, kFile, "", behind}}));
    }
}

TEST_F(QVArchiveImplTest, TheSameLengthChangesNothing) {
    ASSERT_EQ(New(), QVNoErr);
    AddBytes("abc");
    const std::string before = Bytes();
    EXPECT_EQ(Archive().ResizeItemBody(kFirstItem, 3), QVNoErr);
    EXPECT_EQ(Bytes(), before);
}

TEST_F(QVArchiveImplTest, ResizingWithoutAnItemFails) {
    EXPECT_EQ(Archive().ResizeItemBody(kFirstItem, 3), QVErrFileNotFound);
    ASSERT_EQ(New(), QVNoErr);
    EXPECT_EQ(Archive().ResizeItemBody(kFirstItem, 3), QVErrEOF);
}

TEST(ArchiveLayout, DirectoriesGrowToMultiplesOf160Bytes) {
    EXPECT_EQ(qv::GrownBodyLength(8), 160U);
    EXPECT_EQ(qv::GrownBodyLength(160), 160U);
    EXPECT_EQ(qv::GrownBodyLength(161), 320U);
    EXPECT_EQ(qv::GrownBodyLength(qv::DirectoryBodyLength(0xFFFFFFFF)), 17179869280U);
    for (std::uint64_t entries = 1; entries < 1000; ++entries) {
        EXPECT_EQ(qv::GrownBodyLength(qv::DirectoryBodyLength(entries)),
                  qv::DirectoryBodyLength(qvmodel::CapacityAfter(static_cast<std::size_t>(entries), 0)));
    }
}

TEST(ArchiveLayout, LengthsThatWrapLieInNoFile) {
    constexpr std::uint64_t kMost = 0xFFFFFFFFFFFFFFFF;
    EXPECT_TRUE(qv::LiesInFile(30, {1, 1, 0, 0}, 48));
    EXPECT_FALSE(qv::LiesInFile(30, {1, 1, 0, 0}, 47));
    EXPECT_TRUE(qv::LiesInFile(30, {1, 1, 2, 3}, 53));
    EXPECT_FALSE(qv::LiesInFile(30, {1, 1, 3, 3}, 53));
    EXPECT_FALSE(qv::LiesInFile(30, {1, 1, 0, kMost}, 53));
    EXPECT_FALSE(qv::LiesInFile(30, {1, 1, 0xFFFFFFFF, kMost - 0xFFFFFFFF}, 53));
    EXPECT_FALSE(qv::LiesInFile(kMost, {1, 1, 0, 0}, 53));
    EXPECT_FALSE(qv::LiesInFile(30, {1, 1, 0, kMost - 48}, kMost - 1));
}

TEST(ArchiveItemIDs, SkipUsedOnesAndEndBeforeTheLast) {
    std::uint64_t counter = 2;
    EXPECT_EQ(qv::TakeItemID(counter, {3, 4}), 2U);
    EXPECT_EQ(qv::TakeItemID(counter, {3, 4}), 5U);
    counter = 0xFFFFFFFD;
    EXPECT_EQ(qv::TakeItemID(counter, {0xFFFFFFFD}), 0xFFFFFFFEU);
    EXPECT_EQ(qv::TakeItemID(counter, {}), 0U);
    EXPECT_EQ(qv::TakeItemID(counter, {}), 0U);
    EXPECT_EQ(counter, 0xFFFFFFFFU);
    counter = 0xFFFFFFFE;
    EXPECT_EQ(qv::TakeItemID(counter, {0xFFFFFFFE}), 0U);
}

}  // namespace

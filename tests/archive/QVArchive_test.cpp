// Archives as a user writes them, compared byte by byte with the model.
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

#include <QVFoundation/QVLibrary.h>

#include "archive/archive_test_tools.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;
using qvmodel::ArchiveItem;
using qvmodel::DirectoryBody;
using qvtest::LittleEndian;
using qvtest::NoiseBytes;
using qvtest::NumberArray;
using qvtest::PathString;

using QVArchive = qvtest::ArchiveTest;

constexpr std::uint16_t kFile = 1;
constexpr std::uint16_t kDirectory = 2;
constexpr std::size_t kFirstItem = 30;

// The archive code is random; everything else is compared.
std::string Expected(const std::string& bytes, const std::vector<ArchiveItem>& items) {
    const auto archive = qvmodel::DecodeArchive(bytes);
    return qvmodel::EncodeArchive({archive ? archive->code : 0, items, ""});
}

TEST_F(QVArchive, ANewArchiveIsItsHeaderAlone) {
    ASSERT_EQ(New(), QVNoErr);
    const std::string bytes = Bytes();
    ASSERT_EQ(bytes.size(), 30U);
    EXPECT_EQ(bytes.substr(0, 22), std::string("10449C48896D45A9\x00\x01\x00\x00\x00\x00", 22));
}

TEST_F(QVArchive, TheCodeIsMadeOfFourRandomNumbers) {
    QVRandom();  // the generator seeds itself on first use
    std::srand(20261115);
    archive_.Reset(QVArchiveCreate());
    std::srand(20261115);
    std::uint64_t draws[4];
    for (std::uint64_t& draw : draws)
        draw = static_cast<std::uint64_t>(std::rand());
    ASSERT_EQ(New(), QVNoErr);
    EXPECT_EQ(Bytes().substr(22, 8), LittleEndian((draws[0] << 32 | draws[1]) ^ (draws[2] << 32 | draws[3])));
}

TEST_F(QVArchive, FilesAreStoredByteForByteInTheOrderOfTheirComing) {
    ASSERT_EQ(New(), QVNoErr);
    std::vector<ArchiveItem> expected;
    std::uint32_t id = 2;
    // Around the stream's buffer of 1024 bytes, with and without the item header's 18, and around the copy
    // buffer.
    for (const std::size_t size :
         {0U, 1U, 1005U, 1006U, 1007U, 1024U, 4096U, 1048575U, 1048576U, 1048577U, 2100000U, 3U}) {
        expected.push_back({id, kFile, "", NoiseBytes(size, id)});
        EXPECT_EQ(AddBytes(expected.back().body), id);
        ++id;
    }
    EXPECT_EQ(Bytes(), Expected(Bytes(), expected));
    ExpectDirectoryHolds(2);
}

TEST_F(QVArchive, TheExampleOfTheFormatPage) {
    ASSERT_EQ(New(), QVNoErr);
    ASSERT_EQ(MakeRoot(1), QVNoErr);
    ASSERT_EQ(AddBytes("abc"), 2U);
    ASSERT_EQ(Enter(1, {2}), QVNoErr);
    EXPECT_EQ(Bytes().substr(kFirstItem),
              std::string("\x01\x00\x00\x00\x02\x00\x00\x00\x00\x00\x08\x00\x00\x00\x00\x00\x00\x00"
                          "\x01\x00\x00\x00\x02\x00\x00\x00"
                          "\x02\x00\x00\x00\x01\x00\x00\x00\x00\x00\x03\x00\x00\x00\x00\x00\x00\x00"
                          "abc",
                          47));
}

TEST_F(QVArchive, NumbersBeginAtTwoWithOrWithoutARoot) {
    ASSERT_EQ(New(), QVNoErr);
    EXPECT_EQ(AddBytes("x"), 2U);
    ASSERT_EQ(MakeRoot(3), QVNoErr);
    EXPECT_EQ(AddBytes("y"), 3U);
    EXPECT_EQ(Items()[1], (ArchiveItem{1, kDirectory, "", DirectoryBody({}, 3)}));
}

TEST_F(QVArchive, ASecondRootIsNotRefused) {
    ASSERT_EQ(New(), QVNoErr);
    ASSERT_EQ(MakeRoot(0), QVNoErr);
    ASSERT_EQ(MakeRoot(1), QVNoErr);
    EXPECT_EQ(Items().size(), 2U);
}

TEST_F(QVArchive, TheOutIDMayBeNull) {
    ASSERT_EQ(New(), QVNoErr);
    qvtest::WriteFile(directory_ / "f", "text");
    EXPECT_EQ(AddPath(directory_ / "f"), QVNoErr);
    EXPECT_EQ(Items(), (std::vector<ArchiveItem>{{2, kFile, "", "text"}}));
}

TEST_F(QVArchive, ARootWithoutRoomGrowsTo160Bytes) {
    ASSERT_EQ(New(), QVNoErr);
    ASSERT_EQ(MakeRoot(0), QVNoErr);
    EXPECT_EQ(Items()[0].body, std::string(4, '\0'));
    ASSERT_EQ(Enter(1, {7}), QVNoErr);
    EXPECT_EQ(Items()[0].body, DirectoryBody({7}, 39));
    EXPECT_EQ(Items()[0].body.size(), 160U);
}

TEST_F(QVArchive, AGrowingDirectoryMovesWhatLiesBehindIt) {
    for (const std::size_t capacity : {0U, 1U, 38U, 39U, 40U, 78U, 79U}) {
        for (const std::size_t count : {0U, 1U, 2U, 38U, 39U, 40U, 79U, 80U, 300U}) {
            ASSERT_EQ(New(), QVNoErr);
            std::vector<ArchiveItem> expected{{2, kFile, "", NoiseBytes(500, 1)}};
            AddBytes(expected[0].body);
            ASSERT_EQ(MakeRoot(capacity), QVNoErr);
            expected.push_back({3, kFile, "", NoiseBytes(1500, 2)});
            AddBytes(expected[1].body);

            std::vector<std::uint32_t> ids(count);
            for (std::size_t i = 0; i < count; ++i)
                ids[i] = static_cast<std::uint32_t>(0xFFFFFF00U + i);
            ASSERT_EQ(Enter(1, ids), QVNoErr);
            expected.insert(expected.begin() + 1,
                            {1, kDirectory, "", DirectoryBody(ids, qvmodel::CapacityAfter(count, capacity))});
            expected.push_back({4, kFile, "", "after"});
            EXPECT_EQ(AddBytes("after"), 4U);
            EXPECT_EQ(Bytes(), Expected(Bytes(), expected)) << capacity << " grew for " << count;
            ExpectDirectoryHolds(2);
        }
    }
}

TEST_F(QVArchive, EntriesOfSeveralCallsFollowEachOther) {
    ASSERT_EQ(New(), QVNoErr);
    ASSERT_EQ(MakeRoot(2), QVNoErr);
    AddBytes(NoiseBytes(1048576 + 77, 5));  // a rest of more than one piece moves
    std::vector<std::uint32_t> ids;
    std::size_t capacity = 2;
    for (std::uint32_t call = 1; call <= 12; ++call) {
        std::vector<std::uint32_t> added(call);
        for (std::uint32_t& id : added)
            id = static_cast<std::uint32_t>(ids.size() * 3 + call);
        ASSERT_EQ(Enter(1, added), QVNoErr);
        ids.insert(ids.end(), added.begin(), added.end());
        capacity = qvmodel::CapacityAfter(ids.size(), capacity);
        ASSERT_EQ(Items()[0].body, DirectoryBody(ids, capacity)) << "call " << call;
    }
    EXPECT_EQ(Items()[1].body, NoiseBytes(1048576 + 77, 5));
}

TEST_F(QVArchive, NumbersOfEveryTypeAreEnteredAsTheir32Bits) {
    ASSERT_EQ(New(), QVNoErr);
    ASSERT_EQ(MakeRoot(3), QVNoErr);
    const Owned array(QVArrayCreateWithCapacity(0));
    const Owned minusOne(QVNumberCreateWithSInt8(-1));
    const Owned real(QVNumberCreateWithDouble(70000.9));
    const Owned wide(QVNumberCreateWithUInt64(0x500000006ULL));
    for (const Owned* number : {&minusOne, &real, &wide})
        QVArrayAddObject(array.Get(), number->Get());
    ASSERT_EQ(QVArchiveAddItemIntoDirectory(archive_.Get(), 1, array.Get()), QVNoErr);
    EXPECT_EQ(Items()[0].body, DirectoryBody({0xFFFFFFFF, 70000, 6}, 3));
}

TEST_F(QVArchive, AMissingDirectoryIsNoErrorAndNothingChanges) {
    ASSERT_EQ(New(), QVNoErr);
    AddBytes("x");
    const std::string before = Bytes();
    EXPECT_EQ(Enter(1, {2}), QVNoErr);
    EXPECT_EQ(Enter(99, {2}), QVNoErr);
    EXPECT_EQ(Bytes(), before);
}

TEST_F(QVArchive, AFileIsNoDirectoryAndStaysAsItIs) {
    ASSERT_EQ(New(), QVNoErr);
    AddBytes(std::string(100, '\0'));
    const std::string before = Bytes();
    EXPECT_EQ(Enter(2, {2}), QVNoErr);
    EXPECT_EQ(Bytes(), before);
}

TEST_F(QVArchive, WhatIsNoArrayOfNumbersIsRefusedBeforeAnythingIsWritten) {
    ASSERT_EQ(New(), QVNoErr);
    ASSERT_EQ(MakeRoot(0), QVNoErr);
    const std::string before = Bytes();
    const Owned text = PathString("2");
    const Owned array = NumberArray({5, 6});
    QVArrayAddObject(array.Get(), text.Get());
    EXPECT_EQ(QVArchiveAddItemIntoDirectory(archive_.Get(), 1, nullptr), QVErrParam);
    EXPECT_EQ(QVArchiveAddItemIntoDirectory(archive_.Get(), 1, text.Get()), QVErrParam);
    EXPECT_EQ(QVArchiveAddItemIntoDirectory(archive_.Get(), 1, array.Get()), QVErrParam);
    EXPECT_EQ(Bytes(), before);
}

TEST_F(QVArchive, ADirectoryNeverCountsBeyond32Bits) {
    ASSERT_EQ(New(), QVNoErr);
    ASSERT_EQ(MakeRoot(4), QVNoErr);
    Patch(kFirstItem + 18, LittleEndian(0xFFFFFFFFU));
    const std::string before = Bytes();
    EXPECT_EQ(Enter(1, {2}), QVErrDirectoryFull);
    EXPECT_EQ(Bytes(), before);
}

TEST_F(QVArchive, EveryOperationNeedsAnOpenArchive) {
    qvtest::WriteFile(directory_ / "f", "text");
    unsigned int id = 77;
    EXPECT_EQ(MakeRoot(1), QVErrFileNotFound);
    EXPECT_EQ(AddPath(directory_ / "f", &id), QVErrFileNotFound);
    EXPECT_EQ(Enter(1, {2}), QVErrFileNotFound);
    EXPECT_EQ(id, 77U);
}

TEST_F(QVArchive, NullIsABadArgument) {
    const Owned path = PathString(archivePath_);
    EXPECT_EQ(QVArchiveNew(nullptr, path.Get(), nullptr), QVErrParam);
    EXPECT_EQ(QVArchiveMakeRootDirectory(nullptr, 1), QVErrParam);
    EXPECT_EQ(QVArchiveAddFile(nullptr, path.Get(), nullptr), QVErrParam);
    EXPECT_EQ(QVArchiveAddItemIntoDirectory(nullptr, 1, nullptr), QVErrParam);
    EXPECT_FALSE(qvtest::Exists(archivePath_));
}

TEST_F(QVArchive, ANullPathStartsNothingAndClosesNothing) {
    ASSERT_EQ(New(), QVNoErr);
    EXPECT_EQ(QVArchiveNew(archive_.Get(), nullptr, nullptr), QVErrParam);
    EXPECT_EQ(AddBytes("still open"), 2U);
}

TEST_F(QVArchive, ANullSourceIsNotFound) {
    ASSERT_EQ(New(), QVNoErr);
    EXPECT_EQ(QVArchiveAddFile(archive_.Get(), nullptr, nullptr), QVErrFileNotFound);
    EXPECT_EQ(Bytes().size(), 30U);
}

TEST_F(QVArchive, SourcesThatCannotBeReadLeaveTheArchiveAsItWas) {
    ASSERT_EQ(New(), QVNoErr);
    AddBytes("first");
    const std::string before = Bytes();
    ASSERT_EQ(mkfifo((directory_ / "fifo").c_str(), 0600), 0);
    unsigned int id = 77;
    EXPECT_EQ(AddPath(directory_ / "missing", &id), QVErrFileNotFound);
    EXPECT_EQ(AddPath(directory_ / "", &id), QVErrIO) << "a directory";
    EXPECT_EQ(AddPath(directory_ / "fifo", &id), QVErrIO);
    EXPECT_EQ(AddPath("/dev/null", &id), QVErrIO);
    EXPECT_EQ(id, 77U);
    EXPECT_EQ(Bytes(), before);
    EXPECT_EQ(AddBytes("second"), 3U) << "a source that does not open takes no ID";
}

TEST_F(QVArchive, TheSourceIsNeverChanged) {
    ASSERT_EQ(New(), QVNoErr);
    AddBytes("the source");
    EXPECT_EQ(qvtest::ReadFile(directory_ / "source"), "the source");
}

TEST_F(QVArchive, AnExistingFileIsReplaced) {
    qvtest::WriteFile(archivePath_, NoiseBytes(5000, 3));
    ASSERT_EQ(New(), QVNoErr);
    EXPECT_EQ(Bytes().size(), 30U);
}

TEST_F(QVArchive, NothingButARegularFileIsDeleted) {
    ASSERT_EQ(mkdir(archivePath_.c_str(), 0700), 0);
    EXPECT_EQ(New(), QVErrIO) << "an empty directory";
    EXPECT_TRUE(std::filesystem::is_directory(archivePath_));

    archivePath_ = directory_ / "fifo";
    ASSERT_EQ(mkfifo(archivePath_.c_str(), 0600), 0);
    EXPECT_EQ(New(), QVErrIO);
    EXPECT_TRUE(std::filesystem::is_fifo(archivePath_));
    EXPECT_EQ(MakeRoot(1), QVErrFileNotFound) << "no archive is open";
}

TEST_F(QVArchive, APlaceThatTakesNoFileIsTold) {
    archivePath_ = directory_ / "missing/a.qva";
    EXPECT_EQ(New(), QVErrFileNotFound);
    qvtest::WriteFile(directory_ / "file", "x");
    archivePath_ = directory_ / "file/a.qva";
    EXPECT_EQ(New(), QVErrFileNotFound);
}

TEST_F(QVArchive, ALinkInTheArchivesPlaceIsServed) {
    qvtest::WriteFile(directory_ / "target", "old");
    std::filesystem::create_symlink(directory_ / "target", archivePath_);
    ASSERT_EQ(New(), QVNoErr);
    EXPECT_EQ(Bytes().size(), 30U);
}

TEST_F(QVArchive, ANewArchiveClosesTheOneBefore) {
    ASSERT_EQ(New(), QVNoErr);
    ASSERT_EQ(MakeRoot(1), QVNoErr);
    AddBytes("one");
    const std::string first = Bytes();
    const std::string firstPath = archivePath_;
    archivePath_ = directory_ / "b.qva";
    ASSERT_EQ(New(), QVNoErr);
    EXPECT_EQ(AddBytes("two"), 2U) << "numbers begin again";
    EXPECT_EQ(Items(), (std::vector<ArchiveItem>{{2, kFile, "", "two"}}));
    EXPECT_EQ(qvtest::ReadFile(firstPath), first);
}

TEST_F(QVArchive, TheSameFileCanBeStartedAgain) {
    ASSERT_EQ(New(), QVNoErr);
    AddBytes("one");
    ASSERT_EQ(New(), QVNoErr);
    EXPECT_EQ(AddBytes("two"), 2U);
    EXPECT_EQ(Items(), (std::vector<ArchiveItem>{{2, kFile, "", "two"}}));
}

TEST_F(QVArchive, PathAndOptionsAreHeldWhileTheArchiveIsOpen) {
    const Owned path = PathString(archivePath_);
    const Owned options(QVDictionaryCreate());
    ASSERT_EQ(QVArchiveNew(archive_.Get(), path.Get(), options.Get()), QVNoErr);
    EXPECT_GE(QVGetRetainCount(path.Get()), 2U);
    EXPECT_EQ(QVGetRetainCount(options.Get()), 2U);
    ASSERT_EQ(QVArchiveNew(archive_.Get(), path.Get(), options.Get()), QVNoErr);
    EXPECT_EQ(QVGetRetainCount(options.Get()), 2U);
    archive_.Reset();
    EXPECT_EQ(QVGetRetainCount(path.Get()), 1U);
    EXPECT_EQ(QVGetRetainCount(options.Get()), 1U);
}

TEST_F(QVArchive, OptionsThatAreNoDictionaryAreRefused) {
    ASSERT_EQ(New(), QVNoErr);
    const Owned text = PathString("Compress");
    EXPECT_EQ(New(text.Get()), QVErrParam);
    EXPECT_EQ(AddBytes("still open"), 2U);
}

TEST_F(QVArchive, OptionsThatAreNoNumberAreFalse) {
    const Owned options(QVDictionaryCreate());
    const Owned text = PathString("1");
    QVDictionarySetObject(options.Get(), text.Get(), L"Compress");
    QVDictionarySetObject(options.Get(), text.Get(), L"Encrypt");
    ASSERT_EQ(New(options.Get()), QVNoErr);
    AddBytes("plain");
    EXPECT_EQ(Items(), (std::vector<ArchiveItem>{{2, kFile, "", "plain"}}));
}

TEST_F(QVArchive, EncryptionChangesNothing) {
    const Owned options(QVDictionaryCreate());
    const Owned yes(QVNumberCreateWithBool(1));
    QVDictionarySetObject(options.Get(), yes.Get(), L"Encrypt");
    ASSERT_EQ(New(options.Get()), QVNoErr);
    AddBytes("plain");
    EXPECT_EQ(Bytes(), Expected(Bytes(), {{2, kFile, "", "plain"}}));
}

TEST_F(QVArchive, ARootBeyondMemoryIsRefused) {
    ASSERT_EQ(New(), QVNoErr);
    const qvtest::LogCapture log;  // Data says that it cannot be made
    EXPECT_EQ(MakeRoot(static_cast<unsigned long>(-1)), QVErrMemory);
    EXPECT_EQ(MakeRoot(static_cast<unsigned long>(-1) / 4), QVErrMemory);
    EXPECT_EQ(MakeRoot(0x3FFFFFFFUL), QVErrMemory);
    EXPECT_EQ(Bytes().size(), 30U);
    EXPECT_EQ(MakeRoot(1), QVNoErr);
}

TEST_F(QVArchive, AnswersItsType) {
    EXPECT_EQ(QVGetTypeID(archive_.Get()), 17);
}

}  // namespace

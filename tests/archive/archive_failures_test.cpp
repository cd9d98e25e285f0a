// Archives when the world fails: full disks, failing calls, sources that change while they are read, no
// memory.
#include <csignal>
#include <sys/resource.h>

#include "archive/archive_test_tools.h"
#include "support/failing_allocator.h"
#include "support/failing_files.h"
#include "support/log_capture.h"

namespace {

using qv::FileError;
using qv::Owned;
using qvmodel::ArchiveItem;
using qvtest::FailingFiles;
using qvtest::FileOperation;
using qvtest::LittleEndian;
using qvtest::NoiseBytes;
using qvtest::NumberArray;
using qvtest::PathString;

using ArchiveFailures = qvtest::ArchiveTest;

constexpr std::size_t kFirstItem = 30;
constexpr std::size_t kRootCount = kFirstItem + 18;

TEST_F(ArchiveFailures, AnArchiveThatCannotBeStartedLeavesNoFile) {
    const std::size_t calls = qvtest::FailEachFileCall(FileError::kOther, [&](FailingFiles& files) {
        archive_.Reset(QVArchiveCreate());
        std::filesystem::remove(archivePath_);
        const int result = New();
        qv::ReplaceFiles(nullptr);
        if (result == QVNoErr) {
            EXPECT_EQ(Bytes().size(), kFirstItem);
            EXPECT_EQ(MakeRoot(1), QVNoErr);
        } else {
            EXPECT_EQ(MakeRoot(1), QVErrFileNotFound);
            EXPECT_EQ(files.OpenDescriptors(), 0);
            ExpectDirectoryHolds(0);
        }
        archive_.Reset();
    });
    EXPECT_GT(calls, 3U);
}

TEST_F(ArchiveFailures, AFullDiskLeavesNoHeader) {
    FailingFiles files;
    for (std::uint64_t room = 0; room < kFirstItem; ++room) {
        files.LimitDisk(room);
        EXPECT_EQ(New(), QVErrIO) << room;
        ExpectDirectoryHolds(0);
    }
    files.LimitDisk(kFirstItem);
    EXPECT_EQ(New(), QVNoErr);
}

// Whichever call fails: either the item is whole, or the archive is as it was and goes on working.
TEST_F(ArchiveFailures, AFailedFileIsCutOffAgain) {
    const std::string contents = NoiseBytes(1048576 + 3000, 4);
    qvtest::WriteFile(directory_ / "large", contents);
    std::size_t failures = 0;
    const std::size_t calls = qvtest::FailEachFileCall(FileError::kOther, [&](FailingFiles& files) {
        qv::ReplaceFiles(nullptr);  // the archive is made in peace
        ASSERT_EQ(New(), QVNoErr);
        AddBytes("first");
        qv::ReplaceFiles(&files);
        const std::string before = Bytes();
        unsigned int id = 0;
        const int result = AddPath(directory_ / "large", &id);
        qv::ReplaceFiles(nullptr);
        if (result == QVNoErr) {
            EXPECT_EQ(Items(), (std::vector<ArchiveItem>{{2, 1, "", "first"}, {3, 1, "", contents}}));
            EXPECT_EQ(id, 3U);
        } else {
            ++failures;
            EXPECT_EQ(Bytes(), before);
            EXPECT_EQ(id, 0U);
        }
        AddBytes("next");
        EXPECT_EQ(Items().back().body, "next");
        archive_.Reset(QVArchiveCreate());
    });
    EXPECT_GT(calls, 5U);
    EXPECT_GT(failures, 5U);
}

TEST_F(ArchiveFailures, TheIDOfAFailedItemStaysUsed) {
    ASSERT_EQ(New(), QVNoErr);
    {
        FailingFiles files;
        files.LimitDisk(10);
        qvtest::WriteFile(directory_ / "f", "text");
        EXPECT_EQ(AddPath(directory_ / "f"), QVErrIO);
    }
    EXPECT_EQ(AddBytes("next"), 3U);
}

TEST_F(ArchiveFailures, AFullDiskIsNeverSilent) {
    for (const std::size_t size : {0U, 10U, 1006U, 1024U, 5000U, 1100000U}) {
        for (const std::size_t room : {0U, 1U, 17U, 18U, 19U, 1023U, 1024U, 1025U, 4000U, 1048576U}) {
            if (room >= size + 18) continue;
            archive_.Reset(QVArchiveCreate());
            ASSERT_EQ(New(), QVNoErr);
            ASSERT_EQ(MakeRoot(1), QVNoErr);
            const std::string before = Bytes();
            qvtest::WriteFile(directory_ / "f", NoiseBytes(size, 9));
            {
                FailingFiles files;
                files.LimitDisk(room);
                EXPECT_EQ(AddPath(directory_ / "f"), QVErrIO) << size << " bytes, room for " << room;
            }
            EXPECT_EQ(Bytes(), before);
        }
    }
}

TEST_F(ArchiveFailures, AFailedRootIsCutOffAgain) {
    ASSERT_EQ(New(), QVNoErr);
    AddBytes("first");
    const std::string before = Bytes();
    for (const std::uint64_t room : {0U, 17U, 20U, 1024U, 4000U}) {
        FailingFiles files;
        files.LimitDisk(room);
        EXPECT_EQ(MakeRoot(1000), QVErrIO) << room;
        EXPECT_EQ(Bytes(), before);
    }
}

TEST_F(ArchiveFailures, SmallTransfersMakeTheSameArchive) {
    FailingFiles files;
    files.LimitTransfers(7);
    ASSERT_EQ(New(), QVNoErr);
    ASSERT_EQ(MakeRoot(0), QVNoErr);
    const std::string contents = NoiseBytes(3000, 1);
    AddBytes(contents);
    ASSERT_EQ(Enter(1, {2}), QVNoErr);
    EXPECT_EQ(Items(),
              (std::vector<ArchiveItem>{{1, 2, "", qvmodel::DirectoryBody({2}, 39)}, {2, 1, "", contents}}));
}

// Lets no file of the process grow beyond a size.
class FileSizeLimit {
public:
    explicit FileSizeLimit(std::uint64_t size) {
        oldHandler_ = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &old_);
        const rlimit limit{static_cast<rlim_t>(size), old_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, oldHandler_);
    }

private:
    rlimit old_{};
    void (*oldHandler_)(int) = nullptr;
};

// A disk that has no room for the growth leaves everything but the count in its place.
TEST_F(ArchiveFailures, ADirectoryThatCannotGrowKeepsWhatLiesBehindIt) {
    for (const std::uint64_t room : {0U, 1U, 100U, 155U}) {
        ASSERT_EQ(New(), QVNoErr);
        ASSERT_EQ(MakeRoot(0), QVNoErr);
        AddBytes(NoiseBytes(3000, 2));
        std::string expected = Bytes();
        expected.replace(kRootCount, 4, LittleEndian(1U));
        {
            const FileSizeLimit limit(expected.size() + room);
            EXPECT_EQ(Enter(1, {2}), QVErrIO) << room;
        }
        EXPECT_TRUE(Bytes() == expected) << room;
        ExpectDirectoryHolds(2);
        // With room again, the entry that was lost reads as 0 and the next one follows it.
        EXPECT_EQ(Enter(1, {2}), QVNoErr);
        EXPECT_EQ(Items()[0].body, qvmodel::DirectoryBody({0, 2}, 39));
        EXPECT_EQ(Items()[1].body, NoiseBytes(3000, 2));
    }
}

TEST_F(ArchiveFailures, EveryCallFailingWhileADirectoryGrows) {
    std::size_t filesLeft = 0;
    const std::size_t calls = qvtest::FailEachFileCall(FileError::kPermission, [&](FailingFiles& files) {
        qv::ReplaceFiles(nullptr);
        ASSERT_EQ(New(), QVNoErr);
        ASSERT_EQ(MakeRoot(0), QVNoErr);
        AddBytes(NoiseBytes(3000, 2));
        qv::ReplaceFiles(&files);
        const int result = Enter(1, {2});
        EXPECT_LE(result, 0);
        if (result == QVNoErr) {
            EXPECT_EQ(Items(), (std::vector<ArchiveItem>{{1, 2, "", qvmodel::DirectoryBody({2}, 39)},
                                                         {2, 1, "", NoiseBytes(3000, 2)}}));
        }
        qv::ReplaceFiles(nullptr);
        archive_.Reset(QVArchiveCreate());
        filesLeft += std::filesystem::remove(archivePath_ + ".2");
        ExpectDirectoryHolds(2);
    });
    EXPECT_GT(calls, 5U);
    EXPECT_LE(filesLeft, 3U)
        << "only where deleting the temporary file fails: two looks at it, and the removal";
}

TEST_F(ArchiveFailures, ATemporaryFileThatCannotBeMadeIsToldAsPermission) {
    ASSERT_EQ(New(), QVNoErr);
    ASSERT_EQ(MakeRoot(0), QVNoErr);
    FailingFiles files;
    files.Fail(FileOperation::kLookUp, FileError::kPermission);
    EXPECT_EQ(Enter(1, {2}), QVErrPermission);
}

TEST_F(ArchiveFailures, AnArchiveDoesNotTakeItself) {
    ASSERT_EQ(New(), QVNoErr);
    std::filesystem::create_hard_link(archivePath_, directory_ / "same file");
    for (const std::size_t size : {0U, 100U, 2000U, 1048576U, 2000000U}) {
        AddBytes(NoiseBytes(size, 1));
        const std::string before = Bytes();
        EXPECT_EQ(AddPath(archivePath_), QVErrIO) << size;
        EXPECT_EQ(AddPath(directory_ / "same file"), QVErrIO) << size;
        EXPECT_EQ(Bytes(), before);
    }
}

// Changes a source's size between two of the library's reads.
class ChangingFiles final : public FailingFiles {
public:
    ChangingFiles(const std::string& path, std::uint64_t newSize) : path_(path), newSize_(newSize) {}

    FileError ReadAt(int descriptor, void* buffer, std::size_t size, std::uint64_t offset,
                     std::size_t& moved) override {
        if (size == 1048576) std::filesystem::resize_file(path_, newSize_);
        return FailingFiles::ReadAt(descriptor, buffer, size, offset, moved);
    }

private:
    std::string path_;
    std::uint64_t newSize_;
};

TEST_F(ArchiveFailures, ASourceThatChangesItsSizeIsRefused) {
    ASSERT_EQ(New(), QVNoErr);
    AddBytes("first");
    const std::string before = Bytes();
    for (const std::uint64_t newSize : {0U, 4999U, 5001U, 3000000U}) {
        qvtest::WriteFile(directory_ / "changing", NoiseBytes(5000, 1));
        ChangingFiles files(directory_ / "changing", newSize);
        EXPECT_EQ(AddPath(directory_ / "changing"), QVErrIO) << newSize;
        EXPECT_EQ(Bytes(), before);
    }
}

TEST_F(ArchiveFailures, AFileThatHidesItsSizeIsRefused) {
    ASSERT_EQ(New(), QVNoErr);
    EXPECT_EQ(AddPath("/proc/self/status"), QVErrIO);
    EXPECT_EQ(Bytes().size(), kFirstItem);
}

TEST_F(ArchiveFailures, WithoutMemoryEveryFunctionFailsCleanly) {
    qvtest::WriteFile(directory_ / "f", NoiseBytes(3000, 1));
    const Owned archivePath = PathString(archivePath_);
    const Owned sourcePath = PathString(directory_ / "f");
    const Owned ids = NumberArray({2, 3, 4});
    const Owned options(QVDictionaryCreate());
    const qvtest::LogCapture log;  // families below say that they could not allocate
    archive_.Reset();
    const std::size_t live = qvtest::LiveAllocations();

    qvtest::FailEachAllocation([&] { QVRelease(QVArchiveCreate()); });
    EXPECT_EQ(qvtest::LiveAllocations(), live);

    qvtest::FailEachAllocation([&] {
        const Owned archive(QVArchiveCreate());
        if (!archive) return;
        const int started = QVArchiveNew(archive.Get(), archivePath.Get(), options.Get());
        EXPECT_LE(started, 0);
        if (started != QVNoErr) {
            EXPECT_EQ(QVArchiveMakeRootDirectory(archive.Get(), 0), QVErrFileNotFound);
            return;
        }
        EXPECT_LE(QVArchiveMakeRootDirectory(archive.Get(), 0), 0);
        unsigned int id = 0;
        const int added = QVArchiveAddFile(archive.Get(), sourcePath.Get(), &id);
        EXPECT_EQ(added == QVNoErr, id != 0);
        EXPECT_LE(QVArchiveAddItemIntoDirectory(archive.Get(), 1, ids.Get()), 0);
    });
    EXPECT_EQ(qvtest::LiveAllocations(), live);
    ExpectDirectoryHolds(2);
}

TEST_F(ArchiveFailures, AFileIsCutOffAgainWhenMemoryRunsOut) {
    qvtest::WriteFile(directory_ / "f", NoiseBytes(3000, 1));
    const Owned sourcePath = PathString(directory_ / "f");
    const qvtest::LogCapture log;
    ASSERT_EQ(New(), QVNoErr);
    std::size_t items = 0;
    const std::size_t failures = qvtest::FailEachAllocation(
        [&] { items += QVArchiveAddFile(archive_.Get(), sourcePath.Get(), nullptr) == QVNoErr; });
    EXPECT_GT(failures, 3U);
    const std::vector<ArchiveItem> stored = Items();
    EXPECT_EQ(stored.size(), items);
    for (const ArchiveItem& item : stored)
        EXPECT_EQ(item.body, NoiseBytes(3000, 1));
}

}  // namespace

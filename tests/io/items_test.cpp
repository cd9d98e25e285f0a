#include "io/items.h"

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "io/path_text.h"
#include "support/failing_allocator.h"
#include "support/failing_files.h"
#include "support/temporary_directory.h"

using qv::CopyItem;
using qv::FileError;
using qvtest::Exists;
using qvtest::FailingFiles;
using qvtest::FileOperation;
using qvtest::ReadFile;
using qvtest::TemporaryDirectory;
using qvtest::WriteFile;

namespace {

mode_t ModeOf(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
}

// A directory "tree" with one item of every kind that is copied, and an empty directory "to".
void MakeTree(const TemporaryDirectory& place) {
    std::filesystem::create_directories(place / "tree/inner/empty");
    std::filesystem::create_directory(place / "to");
    WriteFile(place / "tree/one", "1");
    WriteFile(place / "tree/inner/two", std::string(300'000, '2'));
    WriteFile(place / "tree/inner/\xFF not text", "bytes");
    std::filesystem::create_symlink("one", place / "tree/link");
    std::filesystem::create_symlink("nowhere", place / "tree/dangling");
}

}  // namespace

TEST(LastComponent, LeavesTheTrailingSeparatorOut) {
    EXPECT_EQ(qv::LastComponent("/usr/lib"), "lib");
    EXPECT_EQ(qv::LastComponent("/usr/lib/"), "lib");
    EXPECT_EQ(qv::LastComponent("abc"), "abc");
    EXPECT_EQ(qv::LastComponent("/"), "");
    EXPECT_EQ(qv::LastComponent(""), "");
}

TEST(CopyItem, AFileGoesIntoTheDirectoryUnderItsName) {
    const TemporaryDirectory place;
    MakeTree(place);
    ASSERT_EQ(chmod((place / "tree/inner/two").c_str(), 0451), 0);
    const auto time = std::filesystem::file_time_type::clock::now() - std::chrono::hours(100);
    std::filesystem::last_write_time(place / "tree/inner/two", time);
    EXPECT_EQ(CopyItem(place / "tree/inner/two", place / "to"), FileError::kNone);
    EXPECT_EQ(ReadFile(place / "to/two"), std::string(300'000, '2'));
    EXPECT_EQ(ModeOf(place / "to/two"), 0451U);
    EXPECT_EQ(std::filesystem::last_write_time(place / "to/two"), time);
    EXPECT_TRUE(Exists(place / "tree/inner/two"));
}

TEST(CopyItem, ADirectoryGoesWithEverythingInIt) {
    const TemporaryDirectory place;
    MakeTree(place);
    ASSERT_EQ(chmod((place / "tree/inner").c_str(), 0555), 0);
    EXPECT_EQ(CopyItem(place / "tree/", place / "to/"), FileError::kNone);
    EXPECT_EQ(ReadFile(place / "to/tree/one"), "1");
    EXPECT_EQ(ReadFile(place / "to/tree/inner/two"), std::string(300'000, '2'));
    EXPECT_EQ(ReadFile(place / "to/tree/inner/\xFF not text"), "bytes");
    EXPECT_TRUE(std::filesystem::is_empty(place / "to/tree/inner/empty"));
    EXPECT_EQ(ModeOf(place / "to/tree/inner"), 0555U);
    EXPECT_EQ(std::filesystem::read_symlink(place / "to/tree/link"), "one");
    EXPECT_EQ(std::filesystem::read_symlink(place / "to/tree/dangling"), "nowhere");
}

TEST(CopyItem, ALinkItselfIsFollowed) {
    const TemporaryDirectory place;
    MakeTree(place);
    EXPECT_EQ(CopyItem(place / "tree/link", place / "to"), FileError::kNone);
    EXPECT_FALSE(std::filesystem::is_symlink(place / "to/link"));
    EXPECT_EQ(ReadFile(place / "to/link"), "1");
    EXPECT_EQ(CopyItem(place / "tree/dangling", place / "to"), FileError::kNotFound);
}

TEST(CopyItem, ATakenNameStaysAsItIs) {
    const TemporaryDirectory place;
    MakeTree(place);
    WriteFile(place / "to/one", "already here");
    std::filesystem::create_directory(place / "to/tree");
    WriteFile(place / "to/tree/mine", "mine");
    EXPECT_EQ(CopyItem(place / "tree/one", place / "to"), FileError::kExists);
    EXPECT_EQ(ReadFile(place / "to/one"), "already here");
    EXPECT_EQ(CopyItem(place / "tree", place / "to"), FileError::kExists);
    EXPECT_EQ(ReadFile(place / "to/tree/mine"), "mine");
    EXPECT_FALSE(Exists(place / "to/tree/one"));
    EXPECT_EQ(CopyItem(place / "tree/one", place / "tree"), FileError::kExists);
    EXPECT_EQ(ReadFile(place / "tree/one"), "1");
}

TEST(CopyItem, ADirectoryDoesNotGoIntoItself) {
    const TemporaryDirectory place;
    MakeTree(place);
    std::filesystem::create_directory_symlink(place / "tree/inner", place / "way in");
    EXPECT_EQ(CopyItem(place / "tree", place / "tree"), FileError::kBadArgument);
    EXPECT_EQ(CopyItem(place / "tree", place / "tree/inner/empty"), FileError::kBadArgument);
    EXPECT_EQ(CopyItem(place / "tree", place / "way in"), FileError::kBadArgument);
    EXPECT_FALSE(Exists(place / "tree/inner/tree"));
    // A directory whose name only begins alike is another one.
    std::filesystem::create_directory(place / "tree2");
    EXPECT_EQ(CopyItem(place / "tree", place / "tree2"), FileError::kNone);
}

TEST(CopyItem, BothEndsMustBeThere) {
    const TemporaryDirectory place;
    MakeTree(place);
    EXPECT_EQ(CopyItem(place / "absent", place / "to"), FileError::kNotFound);
    EXPECT_EQ(CopyItem(place / "tree/one", place / "absent"), FileError::kNotFound);
    EXPECT_EQ(CopyItem(place / "tree/one", place / "tree/inner/two"), FileError::kNotFound);
    EXPECT_EQ(CopyItem("", place / "to"), FileError::kNotFound);
    EXPECT_EQ(CopyItem(place / "tree/one", ""), FileError::kNotFound);
}

TEST(CopyItem, AFifoIsAnErrorAndNothingOfTheCopyStays) {
    const TemporaryDirectory place;
    MakeTree(place);
    ASSERT_EQ(mkfifo((place / "tree/inner/fifo").c_str(), 0600), 0);
    EXPECT_EQ(CopyItem(place / "tree/inner/fifo", place / "to"), FileError::kOther);
    EXPECT_EQ(CopyItem(place / "tree", place / "to"), FileError::kOther);
    EXPECT_TRUE(std::filesystem::is_empty(place / "to"));
}

TEST(CopyItem, DeepTreesGoAsAWhole) {
    const TemporaryDirectory place;
    std::filesystem::create_directory(place / "to");
    std::string path = place / "deep";
    while (path.size() < 200)
        path += "/d";
    std::filesystem::create_directories(path);
    EXPECT_EQ(CopyItem(place / "deep", place / "to"), FileError::kNone);
    EXPECT_TRUE(Exists((place / "to") + path.substr(place.Path().size())));
}

TEST(CopyItem, EveryCallMayFailAndNothingOfAFailedCopyStays) {
    const TemporaryDirectory place;
    MakeTree(place);
    for (const FileError error : {FileError::kOther, FileError::kPermission}) {
        const std::size_t failures = qvtest::FailEachFileCall(error, [&](FailingFiles& files) {
            files.LimitTransfers(100'000);
            const bool isCopied = CopyItem(place / "tree", place / "to") == FileError::kNone;
            EXPECT_EQ(files.OpenDescriptors(), 0);
            EXPECT_EQ(std::filesystem::is_empty(place / "to"), !isCopied) << files.Calls();
            EXPECT_TRUE(!isCopied || ReadFile(place / "to/tree/inner/two") == std::string(300'000, '2'));
            std::filesystem::remove_all(place / "to/tree");
        });
        EXPECT_GT(failures, 30U);
    }
}

TEST(CopyItem, AFullDiskLeavesNothingOfTheCopy) {
    const TemporaryDirectory place;
    MakeTree(place);
    FailingFiles files;
    files.LimitDisk(200'000);
    EXPECT_EQ(CopyItem(place / "tree", place / "to"), FileError::kOther);
    EXPECT_TRUE(std::filesystem::is_empty(place / "to"));
}

TEST(CopyItem, EveryAllocationMayFailAndNothingOfAFailedCopyStays) {
    const TemporaryDirectory place;
    MakeTree(place);
    WriteFile(place / "to/tree", "already here");
    const std::string tree = place / "tree";
    const std::string taken = place / "to";
    std::filesystem::create_directory(place / "free");
    const std::string free = place / "free";
    bool isCopied = false;
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        if (isCopied) return;
        try {
            isCopied = CopyItem(tree, free) == FileError::kNone;
            EXPECT_EQ(CopyItem(tree, taken), FileError::kExists);
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(isCopied || access((free + "/tree").c_str(), F_OK) != 0);
        }
    });
    EXPECT_GT(failures, 20U);
    EXPECT_EQ(ReadFile(place / "to/tree"), "already here");
    EXPECT_EQ(ReadFile(place / "free/tree/inner/two"), std::string(300'000, '2'));
}

TEST(RemoveItem, TakesFilesLinksAndEmptyDirectories) {
    const TemporaryDirectory place;
    MakeTree(place);
    std::filesystem::create_directory_symlink("inner", place / "tree/way in");
    EXPECT_EQ(qv::RemoveItem(place / "tree/one"), FileError::kNone);
    EXPECT_EQ(qv::RemoveItem(place / "tree/dangling"), FileError::kNone);
    EXPECT_EQ(qv::RemoveItem(place / "tree/way in"), FileError::kNone);
    EXPECT_EQ(qv::RemoveItem(place / "tree/inner/empty"), FileError::kNone);
    EXPECT_EQ(qv::RemoveItem(place / "tree/inner"), FileError::kOther);
    EXPECT_EQ(qv::RemoveItem(place / "tree/one"), FileError::kNotFound);
    EXPECT_TRUE(Exists(place / "tree/inner/two"));
}

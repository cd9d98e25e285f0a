#include "io/trash.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <QVFoundation/QVFile.h>

#include "io/paths.h"
#include "support/environment.h"
#include "support/failing_allocator.h"
#include "support/failing_files.h"
#include "support/temporary_directory.h"

using qv::FileError;
using qv::Owned;
using qvtest::Exists;
using qvtest::FailingFiles;
using qvtest::FileAt;
using qvtest::FileOperation;
using qvtest::PathOf;
using qvtest::ReadFile;
using qvtest::TemporaryDirectory;
using qvtest::WriteFile;

namespace {

// A place for items, and the user's data directory beside it.
class TrashTest : public testing::Test {
protected:
    [[nodiscard]] std::string Trashed(const std::string& name) const {
        return place / ("data/Trash/files/" + name);
    }
    [[nodiscard]] std::string Info(const std::string& name) const {
        return place / ("data/Trash/info/" + name + ".trashinfo");
    }
    // How many items the trash folders hold together.
    [[nodiscard]] std::ptrdiff_t CountTrash() const {
        std::ptrdiff_t count = 0;
        for (const char* folder : {"data/Trash/files", "data/Trash/info"}) {
            if (Exists(place / folder))
                count += std::distance(std::filesystem::directory_iterator(place / folder), {});
        }
        return count;
    }

    const TemporaryDirectory place;
    const qvtest::ScopedVariable data{"XDG_DATA_HOME", (place / "data").c_str()};
};

// Where the trash of the file system that holds the temporary directory would lie.
std::string FileSystemTrash(const std::string& path) {
    struct stat status;
    stat(path.c_str(), &status);
    const dev_t device = status.st_dev;
    std::filesystem::path root = path;
    while (root != "/" && stat(root.parent_path().c_str(), &status) == 0 && status.st_dev == device) {
        root = root.parent_path();
    }
    return root / (".Trash-" + std::to_string(getuid()));
}

}  // namespace

TEST_F(TrashTest, AFileGoesThereUnderItsNameAndANumber) {
    WriteFile(place / "a", "first");
    const Owned file = FileAt(place / "a");
    EXPECT_EQ(QVFileDelete(file.Get(), 1), QVNoErr);
    EXPECT_FALSE(Exists(place / "a"));
    EXPECT_EQ(ReadFile(Trashed("a.1")), "first");
    WriteFile(place / "a", "second");
    EXPECT_EQ(QVFileDelete(FileAt(place / "a").Get(), 1), QVNoErr);
    EXPECT_EQ(ReadFile(Trashed("a.1")), "first");
    EXPECT_EQ(ReadFile(Trashed("a.2")), "second");
}

TEST_F(TrashTest, TheInfoTellsWhereItWasAndWhenItWent) {
    std::filesystem::create_directory(place / "sub dir");
    WriteFile(place / "sub dir/100% a", "");
    EXPECT_EQ(QVFileDelete(FileAt(place / "sub dir/100% a").Get(), 1), QVNoErr);
    const std::string info = ReadFile(Info("100% a.1"));
    const std::string beginning =
        "[Trash Info]\nPath=" + (place / "sub%20dir/100%25%20a") + "\nDeletionDate=";
    ASSERT_TRUE(info.starts_with(beginning)) << info;
    std::string date = info.substr(beginning.size());
    for (char& c : date)
        c = c >= '0' && c <= '9' ? '9' : c;
    EXPECT_EQ(date, "9999-99-99T99:99:99\n");
    struct stat status;
    ASSERT_EQ(stat((place / "data/Trash/files").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
}

TEST_F(TrashTest, ANameMustBeFreeInBothFolders) {
    WriteFile(place / "a", "mine");
    std::filesystem::create_directories(place / "data/Trash/files");
    std::filesystem::create_directories(place / "data/Trash/info");
    WriteFile(Trashed("a.1"), "without info");
    WriteFile(Info("a.2"), "without file");
    EXPECT_EQ(QVFileDelete(FileAt(place / "a").Get(), 1), QVNoErr);
    EXPECT_EQ(ReadFile(Trashed("a.3")), "mine");
    EXPECT_EQ(ReadFile(Trashed("a.1")), "without info");
    EXPECT_EQ(ReadFile(Info("a.2")), "without file");
    EXPECT_FALSE(Exists(Info("a.1")));
    EXPECT_FALSE(Exists(Trashed("a.2")));
}

TEST_F(TrashTest, ANameThatEndsWithADotGetsNoSecondOne) {
    WriteFile(place / "a.", "");
    EXPECT_EQ(QVFileDelete(FileAt(place / "a.").Get(), 1), QVNoErr);
    EXPECT_TRUE(Exists(Trashed("a.1")));
}

TEST_F(TrashTest, DirectoriesGoWithTheirContents) {
    std::filesystem::create_directories(place / "d/inner");
    WriteFile(place / "d/inner/a", "abc");
    EXPECT_EQ(QVFileDelete(FileAt(place / "d/").Get(), 1), QVNoErr);
    EXPECT_EQ(ReadFile(Trashed("d.1/inner/a")), "abc");
}

TEST_F(TrashTest, LinksGoThemselves) {
    WriteFile(place / "target", "abc");
    std::filesystem::create_symlink(place / "target", place / "link");
    EXPECT_EQ(QVFileDelete(FileAt(place / "link").Get(), 1), QVNoErr);
    EXPECT_TRUE(std::filesystem::is_symlink(Trashed("link.1")));
    EXPECT_EQ(ReadFile(place / "target"), "abc");
}

TEST_F(TrashTest, TheObjectFollowsTheFileAndItsPathStays) {
    WriteFile(place / "a", "abc");
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileDelete(file.Get(), 1), QVNoErr);
    EXPECT_EQ(PathOf(file.Get()), place / "a");
    ASSERT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    EXPECT_EQ(QVFileGetSize(file.Get()), 3ULL);
    EXPECT_EQ(QVFileDelete(file.Get(), 1), QVNoErr);  // from the trash into the trash: the next number
    EXPECT_TRUE(Exists(Trashed("a.2")));
    EXPECT_EQ(QVFileDelete(file.Get(), 0), QVNoErr);
    EXPECT_FALSE(Exists(Trashed("a.2")));
}

TEST_F(TrashTest, AFileThatHasGoneIsNotFound) {
    WriteFile(place / "a", "abc");
    const Owned file = FileAt(place / "a");
    std::filesystem::remove(place / "a");
    EXPECT_EQ(QVFileDelete(file.Get(), 1), QVErrFileNotFound);
    EXPECT_EQ(CountTrash(), 0);
}

TEST_F(TrashTest, WithoutAnAbsoluteDataDirectoryTheHomeDirectorysIsUsed) {
    const qvtest::ScopedVariable relative("XDG_DATA_HOME", "relative");
    const qvtest::ScopedVariable home("HOME", (place / "home").c_str());
    std::filesystem::create_directory(place / "home");
    WriteFile(place / "a", "abc");
    EXPECT_EQ(QVFileDelete(FileAt(place / "a").Get(), 1), QVNoErr);
    EXPECT_EQ(ReadFile(place / "home/.local/share/Trash/files/a.1"), "abc");
}

TEST_F(TrashTest, ThePathIsWrittenWithPlainCharactersOnly) {
    EXPECT_EQ(qv::TrashInfoText("/a-b_c.d~/\xC3\xA9 %\n", "2026-11-15T15:08:30"),
              "[Trash Info]\nPath=/a-b_c.d~/%C3%A9%20%25%0A\nDeletionDate=2026-11-15T15:08:30\n");
}

// The first move fails as if the trash lay on another file system; the second goes to the item's own.
TEST_F(TrashTest, TheItemsOwnFileSystemHasATrashToo) {
    const std::string trash = FileSystemTrash(place.Path());
    const bool wasThere = Exists(trash);
    const std::string name = "qvtest-" + std::to_string(getpid());
    WriteFile(place / name, "abc");
    const Owned file = FileAt(place / name);
    {
        FailingFiles files;
        files.Fail(FileOperation::kMoveWithoutReplacing, FileError::kOther);
        EXPECT_EQ(QVFileDelete(file.Get(), 1), QVNoErr);
    }
    EXPECT_EQ(ReadFile(trash + "/files/" + name + ".1"), "abc");
    const std::string info = ReadFile(trash + "/info/" + name + ".1.trashinfo");
    const std::string root = std::filesystem::path(trash).parent_path();
    const std::string shown = (place / name).substr(root == "/" ? 1 : root.size() + 1);
    EXPECT_EQ(info.substr(0, info.find("\nDeletion")), "[Trash Info]\nPath=" + shown);
    EXPECT_EQ(CountTrash(), 0);
    std::filesystem::remove(trash + "/files/" + name + ".1");
    std::filesystem::remove(trash + "/info/" + name + ".1.trashinfo");
    if (!wasThere) std::filesystem::remove_all(trash);
}

TEST_F(TrashTest, WithoutAnyTrashTheItemStaysAndTheReasonIsTold) {
    WriteFile(place / "a", "abc");
    const Owned file = FileAt(place / "a");
    const struct {
        FileError error;
        int code;
    } rows[] = {{FileError::kPermission, QVErrPermission},
                {FileError::kOther, QVErrIO},
                {FileError::kNotFound, QVErrIO},
                {FileError::kBadArgument, QVErrIO}};
    for (const auto& row : rows) {
        for (const FileOperation operation :
             {FileOperation::kMakeDirectory, FileOperation::kCreateExclusively,
              FileOperation::kMoveWithoutReplacing, FileOperation::kWriteAt}) {
            FailingFiles files;
            files.Fail(operation, row.error, 0, true);
            EXPECT_EQ(QVFileDelete(file.Get(), 1), row.code);
            EXPECT_EQ(ReadFile(place / "a"), "abc");
            EXPECT_EQ(files.OpenDescriptors(), 0);
            EXPECT_EQ(CountTrash(), 0);
        }
    }
    const std::string trash = FileSystemTrash(place.Path());
    for (const char* folder : {"/files", "/info", ""}) {  // goes only when these tests have left it empty
        std::error_code ignored;
        std::filesystem::remove(trash + folder, ignored);
    }
}

TEST_F(TrashTest, ADataDirectoryThatIsAFileIsNoTrash) {
    WriteFile(place / "data", "a file in the way");
    WriteFile(place / "a", "abc");
    FailingFiles files;
    // The file system's own trash cannot be made either.
    files.Fail(FileOperation::kMakeDirectory, FileError::kPermission, 1, true);
    EXPECT_EQ(QVFileDelete(FileAt(place / "a").Get(), 1), QVErrPermission);
    EXPECT_EQ(ReadFile(place / "a"), "abc");
}

TEST_F(TrashTest, EveryCallMayFailAndTheItemIsNeverLost) {
    const std::size_t failures = qvtest::FailEachFileCall(FileError::kPermission, [&](FailingFiles& files) {
        WriteFile(place / "a", "abc");
        std::string path = place / "a";
        const FileError error = qv::MoveToTrash(path, "a");
        EXPECT_EQ(Exists(place / "a"), error != FileError::kNone);
        EXPECT_EQ(ReadFile(path), "abc");
        EXPECT_EQ(files.OpenDescriptors(), 0);
        std::filesystem::remove_all(place / "data");
        if (error == FileError::kNone) {  // it may lie in the file system's own trash
            std::filesystem::remove(path);
            const std::filesystem::path files_(path);
            const auto trash = files_.parent_path().parent_path();
            std::filesystem::remove(trash / "info" / (files_.filename().string() + ".trashinfo"));
            std::error_code ignored;
            std::filesystem::remove(trash / "files", ignored);
            std::filesystem::remove(trash / "info", ignored);
            std::filesystem::remove(trash, ignored);
        }
    });
    EXPECT_GT(failures, 8U);
}

TEST_F(TrashTest, EveryAllocationMayFailAndTheItemIsNeverLost) {
    const std::string path = place / "a";
    WriteFile(path, "abc");
    const Owned file = FileAt(path);
    bool isThere = true;
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        if (!isThere) return;
        isThere = QVFileDelete(file.Get(), 1) != QVNoErr;
        EXPECT_EQ(access(path.c_str(), F_OK) == 0, isThere);
    });
    EXPECT_GT(failures, 5U);
    EXPECT_EQ(CountTrash(), 2);
}

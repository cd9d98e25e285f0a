#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <QVFoundation/QVFileManager.h>
#include <QVFoundation/QVLibrary.h>

#include "io/QVCFileManagerMac.h"
#include "io/paths.h"
#include "runtime/Handle.h"
#include "runtime/shared_objects.h"
#include "support/failing_allocator.h"
#include "support/failing_files.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

using qv::FileError;
using qv::FromHandle;
using qv::Owned;
using qvtest::Exists;
using qvtest::FailingFiles;
using qvtest::FileOperation;
using qvtest::ReadFile;
using qvtest::SurrogateText;
using qvtest::TemporaryDirectory;
using qvtest::Text;
using qvtest::WideText;
using qvtest::WriteFile;

namespace {

class FileManager : public testing::Test {
protected:
    FileManager() { QVFoundationInit(); }
    ~FileManager() override { QVFoundationExit(); }

    int MakeDirectory(const std::string& path, bool intermediate) const {
        return QVFileManagerMakeDirectory(Text(path).Get(), intermediate);
    }
    int DeleteItem(const std::string& path) const { return QVFileManagerDeleteItem(Text(path).Get()); }
    int CopyItem(const std::string& source, const std::string& destination) const {
        return QVFileManagerCopyItem(Text(source).Get(), Text(destination).Get());
    }
    bool Is(const std::string& path) const { return QVFileManagerIsExistsAtPath(Text(path).Get()) == 1; }

    const TemporaryDirectory place;
};

}  // namespace

TEST_F(FileManager, ExistsWhatAPathLeadsTo) {
    WriteFile(place / "file", "");
    std::filesystem::create_symlink("file", place / "link");
    std::filesystem::create_symlink("nowhere", place / "dangling");
    EXPECT_TRUE(Is(place / "file"));
    EXPECT_TRUE(Is(place.Path()));
    EXPECT_TRUE(Is(place / "link"));
    EXPECT_TRUE(Is("/dev/null"));
    EXPECT_FALSE(Is(place / "absent"));
    EXPECT_FALSE(Is(place / "dangling"));
    EXPECT_FALSE(Is(place / "file/below"));
    EXPECT_FALSE(Is(""));
    EXPECT_EQ(QVFileManagerIsExistsAtPath(nullptr), 0);
    EXPECT_EQ(QVFileManagerIsExistsAtPath(SurrogateText().Get()), 0);
}

TEST_F(FileManager, TextWithAnEmbeddedZeroNamesNothing) {
    WriteFile(place / "file", "");
    Owned path = Text(place / "file");
    std::wstring text(QVStringGetBuffer(path.Get()));
    text += std::wstring(L"\0x", 2);
    const Owned zero = WideText(text);
    EXPECT_EQ(QVFileManagerIsExistsAtPath(zero.Get()), 0);
    EXPECT_EQ(QVFileManagerDeleteItem(zero.Get()), QVErrIO);
    EXPECT_EQ(QVFileManagerCopyItem(zero.Get(), Text(place.Path()).Get()), QVErrIO);
    EXPECT_EQ(QVFileManagerCopyItem(path.Get(), zero.Get()), QVErrIO);
    EXPECT_EQ(QVFileManagerMakeDirectory(zero.Get(), 0), QVErrIO);
    EXPECT_EQ(QVFileManagerMakeDirectory(zero.Get(), 1), QVErrIO);
    EXPECT_TRUE(Exists(place / "file"));
}

TEST_F(FileManager, TellsDirectoriesFromOtherItems) {
    WriteFile(place / "file", "");
    std::filesystem::create_symlink(".", place / "link");
    const Owned manager(qv::CreateSharedFileManager());
    auto* impl = FromHandle<QVCFileManagerMac>(manager.Get());
    EXPECT_TRUE(impl->IsDirectory(Text(place.Path()).Get()));
    EXPECT_TRUE(impl->IsDirectory(Text(place / "link").Get()));
    EXPECT_FALSE(impl->IsDirectory(Text(place / "file").Get()));
    EXPECT_FALSE(impl->IsDirectory(Text(place / "absent").Get()));
    EXPECT_FALSE(impl->IsDirectory(nullptr));
    EXPECT_EQ(QVGetTypeID(manager.Get()), QVTypeIDFileManager);
}

TEST_F(FileManager, MakesOneDirectory) {
    EXPECT_EQ(MakeDirectory(place / "d", false), QVNoErr);
    EXPECT_TRUE(std::filesystem::is_directory(place / "d"));
    EXPECT_EQ(MakeDirectory(place / "d", false), QVNoErr);  // there already
    EXPECT_EQ(MakeDirectory(place / "slash/", false), QVNoErr);
    EXPECT_TRUE(std::filesystem::is_directory(place / "slash"));
    EXPECT_EQ(MakeDirectory(place / "absent/d", false), QVErrFileNotFound);
    EXPECT_FALSE(Exists(place / "absent"));
}

TEST_F(FileManager, MakesTheDirectoriesOnTheWay) {
    EXPECT_EQ(MakeDirectory(place / "a/b/c", true), QVNoErr);
    EXPECT_TRUE(std::filesystem::is_directory(place / "a/b/c"));
    EXPECT_EQ(MakeDirectory(place / "a/b/c/d/", true), QVNoErr);
    EXPECT_EQ(MakeDirectory(place / "//x///y", true), QVNoErr);
    EXPECT_TRUE(std::filesystem::is_directory(place / "x/y"));
    EXPECT_EQ(MakeDirectory(place / "x/../z", true), QVNoErr);
    EXPECT_TRUE(std::filesystem::is_directory(place / "z"));
    EXPECT_EQ(MakeDirectory("/", true), QVNoErr);
    EXPECT_EQ(MakeDirectory("/", false), QVNoErr);
}

TEST_F(FileManager, ARelativeDirectoryIsMadeInTheCurrentOne) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(place.Path());
    EXPECT_EQ(MakeDirectory("one", false), QVNoErr);
    EXPECT_EQ(MakeDirectory("two/three", true), QVNoErr);
    std::filesystem::current_path(before);
    EXPECT_TRUE(std::filesystem::is_directory(place / "one"));
    EXPECT_TRUE(std::filesystem::is_directory(place / "two/three"));
}

TEST_F(FileManager, AnItemInTheWayOfADirectoryIsADuplicate) {
    WriteFile(place / "file", "");
    std::filesystem::create_symlink("nowhere", place / "dangling");
    EXPECT_EQ(MakeDirectory(place / "file", false), QVErrDuplicate);
    EXPECT_EQ(MakeDirectory(place / "file", true), QVErrDuplicate);
    EXPECT_EQ(MakeDirectory(place / "file/d", true), QVErrDuplicate);
    EXPECT_EQ(MakeDirectory(place / "dangling", false), QVErrDuplicate);
    EXPECT_EQ(MakeDirectory(place / "file/d", false), QVErrFileNotFound);
}

TEST_F(FileManager, NullAndEmptyPathsAreErrors) {
    EXPECT_EQ(QVFileManagerMakeDirectory(nullptr, 0), QVErrParam);
    EXPECT_EQ(QVFileManagerMakeDirectory(nullptr, 1), QVErrParam);
    EXPECT_EQ(QVFileManagerDeleteItem(nullptr), QVErrParam);
    EXPECT_EQ(QVFileManagerCopyItem(nullptr, nullptr), QVErrParam);
    WriteFile(place / "file", "");
    EXPECT_EQ(QVFileManagerCopyItem(Text(place / "file").Get(), nullptr), QVErrFileNotFound);
    EXPECT_EQ(MakeDirectory("", false), QVErrFileNotFound);
    EXPECT_EQ(MakeDirectory("", true), QVErrFileNotFound);
    EXPECT_EQ(DeleteItem(""), QVErrFileNotFound);
}

TEST_F(FileManager, DeletesFilesLinksAndEmptyDirectories) {
    WriteFile(place / "file", "");
    std::filesystem::create_directories(place / "full/inside");
    std::filesystem::create_symlink("nowhere", place / "dangling");
    EXPECT_EQ(DeleteItem(place / "file"), QVNoErr);
    EXPECT_EQ(DeleteItem(place / "file"), QVErrFileNotFound);
    EXPECT_EQ(DeleteItem(place / "dangling"), QVNoErr);
    EXPECT_FALSE(Exists(place / "dangling"));
    EXPECT_EQ(DeleteItem(place / "full"), QVErrIO);
    EXPECT_EQ(DeleteItem(place / "full/inside"), QVNoErr);
    EXPECT_EQ(DeleteItem(place / "full"), QVNoErr);
}

TEST_F(FileManager, CopiesIntoADirectory) {
    WriteFile(place / "file", "abc");
    std::filesystem::create_directory(place / "to");
    EXPECT_EQ(CopyItem(place / "file", place / "to"), QVNoErr);
    EXPECT_EQ(ReadFile(place / "to/file"), "abc");
    EXPECT_EQ(CopyItem(place / "file", place / "to"), QVErrDuplicate);
    EXPECT_EQ(CopyItem(place / "absent", place / "to"), QVErrFileNotFound);
    EXPECT_EQ(CopyItem(place / "file", place / "absent"), QVErrFileNotFound);
    EXPECT_EQ(CopyItem(place / "to", place / "to"), QVErrParam);
}

TEST_F(FileManager, ErrorsOfTheSystemBecomeResultCodes) {
    WriteFile(place / "file", "abc");
    std::filesystem::create_directory(place / "to");
    const struct {
        FileError error;
        int code;
    } rows[] = {{FileError::kNotFound, QVErrFileNotFound},
                {FileError::kBadArgument, QVErrParam},
                {FileError::kPermission, QVErrPermission},
                {FileError::kExists, QVErrDuplicate},
                {FileError::kOther, QVErrIO}};
    for (const auto& row : rows) {
        FailingFiles files;
        files.Fail(FileOperation::kMakeDirectory, row.error);
        EXPECT_EQ(MakeDirectory(place / "new", false), row.code);
        files.Fail(FileOperation::kMakeDirectory, row.error);
        EXPECT_EQ(MakeDirectory(place / "new/inner", true), row.code);
        files.Fail(FileOperation::kRemoveFile, row.error);
        EXPECT_EQ(DeleteItem(place / "file"), row.code);
        files.Fail(FileOperation::kCreateExclusively, row.error);
        EXPECT_EQ(CopyItem(place / "file", place / "to"), row.code);
        EXPECT_FALSE(Exists(place / "new"));
    }
}

TEST_F(FileManager, LeavesNothingInTheCallersPool) {
    const Owned path = Text(place / "a/b");
    const std::size_t before = qvtest::LiveAllocations();
    EXPECT_EQ(QVFileManagerMakeDirectory(path.Get(), 1), QVNoErr);
    EXPECT_EQ(QVFileManagerIsExistsAtPath(path.Get()), 1);
    EXPECT_EQ(QVFileManagerDeleteItem(path.Get()), QVNoErr);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST_F(FileManager, EveryAllocationMayFail) {
    const std::string last = place / "a/b/c";
    const Owned path = Text(last);
    WriteFile(place / "file", "abc");
    const Owned file = Text(place / "file");
    const qvtest::LogCapture log;  // the families tell of their failed creations
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        const int made = QVFileManagerMakeDirectory(path.Get(), 1);
        EXPECT_TRUE(made == QVErrMemory || (made == QVNoErr && access(last.c_str(), F_OK) == 0)) << made;
        QVFileManagerIsExistsAtPath(path.Get());
        const int copied = QVFileManagerCopyItem(file.Get(), path.Get());
        EXPECT_TRUE(copied == QVNoErr || copied == QVErrMemory || copied == QVErrFileNotFound ||
                    copied == QVErrDuplicate);
    });
    EXPECT_GT(failures, 10U);
    EXPECT_EQ(ReadFile(place / "a/b/c/file"), "abc");
    // No component was ever left out.
    for (const char* directory : {"a", "a/b", "a/b/c"}) {
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(place / directory), {}), 1) << directory;
    }
}

TEST(FileManagerWhileTheLibraryIsDown, SaysSo) {
    const Owned path = Text("/tmp");
    const qvtest::LogCapture log;
    EXPECT_EQ(QVFileManagerIsExistsAtPath(path.Get()), 0);
    EXPECT_EQ(QVFileManagerMakeDirectory(path.Get(), 1), QVErrMemory);
    EXPECT_EQ(QVFileManagerDeleteItem(path.Get()), QVErrMemory);
    EXPECT_EQ(QVFileManagerCopyItem(path.Get(), path.Get()), QVErrMemory);
    EXPECT_EQ(log.Messages(), std::vector<std::string>(4, "QVFoundation is not initialized."));
}

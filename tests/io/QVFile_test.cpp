#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <signal.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVString.h>

#include "io/QVFileMacImpl.h"
#include "io/paths.h"
#include "runtime/Handle.h"
#include "support/failing_allocator.h"
#include "support/failing_files.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

using qv::FileError;
using qv::Owned;
using qvtest::Exists;
using qvtest::FailingFiles;
using qvtest::FileAt;
using qvtest::FileOperation;
using qvtest::PathOf;
using qvtest::ReadFile;
using qvtest::SurrogateText;
using qvtest::TemporaryDirectory;
using qvtest::Text;
using qvtest::WideText;
using qvtest::WriteFile;

namespace {

std::string ReadSome(void* file, unsigned long size, int* code = nullptr) {
    std::string bytes(size, '\0');
    unsigned long done = 0;
    const int result = QVFileReadBytes(file, bytes.data(), size, &done, 1);
    if (code != nullptr) *code = result;
    bytes.resize(done);
    return bytes;
}

int Write(void* file, const std::string& bytes) {
    return QVFileWriteBytes(file, bytes.data(), bytes.size(), nullptr, 1);
}

mode_t ModeOf(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
}

// The directory in which relative paths start, for one test.
class CurrentDirectory {
public:
    explicit CurrentDirectory(const std::string& path) : old_(std::filesystem::current_path()) {
        std::filesystem::current_path(path);
    }
    CurrentDirectory(const CurrentDirectory&) = delete;
    CurrentDirectory& operator=(const CurrentDirectory&) = delete;
    ~CurrentDirectory() { std::filesystem::current_path(old_); }

private:
    std::filesystem::path old_;
};

}  // namespace

TEST(File, IsCreatedWithoutAPath) {
    const Owned file(QVFileCreate());
    EXPECT_EQ(QVGetTypeID(file.Get()), QVTypeIDFile);
    EXPECT_EQ(QVGetRetainCount(file.Get()), 1UL);
    EXPECT_EQ(QVFileGetPath(file.Get()), nullptr);
    EXPECT_EQ(QVFileOpenForReading(file.Get()), QVErrFileNotFound);
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVErrFileNotFound);
    EXPECT_EQ(QVFileDelete(file.Get(), 0), QVErrFileNotFound);
    EXPECT_EQ(QVFileDelete(file.Get(), 1), QVErrFileNotFound);
}

TEST(File, NullHandlesAreHarmless) {
    char byte = 0;
    EXPECT_EQ(QVFileSetPath(nullptr, nullptr), QVErrParam);
    EXPECT_EQ(QVFileGetPath(nullptr), nullptr);
    EXPECT_EQ(QVFileOpenForReading(nullptr), QVErrParam);
    EXPECT_EQ(QVFileOpenForWriting(nullptr), QVErrParam);
    EXPECT_EQ(QVFileSetMarker(nullptr, 0, 0), QVErrParam);
    EXPECT_EQ(QVFileGetMarker(nullptr), 0ULL);
    EXPECT_EQ(QVFileReadBytes(nullptr, &byte, 1, nullptr, 1), QVErrParam);
    EXPECT_EQ(QVFileWriteBytes(nullptr, &byte, 1, nullptr, 1), QVErrParam);
    EXPECT_EQ(QVFileFlush(nullptr), QVErrParam);
    EXPECT_EQ(QVFileGetSize(nullptr), 0ULL);
    EXPECT_EQ(QVFileSetSize(nullptr, 0), QVErrParam);
    EXPECT_EQ(QVFileClose(nullptr), QVErrParam);
    EXPECT_EQ(QVFileDelete(nullptr, 0), QVErrParam);
    EXPECT_EQ(QVFileCreateTemporary(nullptr), nullptr);
    EXPECT_EQ(QVFileCreateUnique(nullptr), nullptr);
}

TEST(File, EverythingButOpeningNeedsAnOpenFile) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    const Owned file = FileAt(place / "a");
    char byte = 0;
    EXPECT_EQ(QVFileSetMarker(file.Get(), 0, 0), QVErrFileNotFound);
    EXPECT_EQ(QVFileSetMarker(file.Get(), 9, 0), QVErrFileNotFound);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 0ULL);
    EXPECT_EQ(QVFileReadBytes(file.Get(), &byte, 1, nullptr, 1), QVErrFileNotFound);
    EXPECT_EQ(QVFileWriteBytes(file.Get(), &byte, 1, nullptr, 1), QVErrFileNotFound);
    EXPECT_EQ(QVFileFlush(file.Get()), QVErrFileNotFound);
    EXPECT_EQ(QVFileGetSize(file.Get()), 0ULL);
    EXPECT_EQ(QVFileSetSize(file.Get(), 0), QVErrFileNotFound);
    EXPECT_EQ(QVFileClose(file.Get()), QVNoErr);
}

TEST(FilePath, IsRetainedAndResolved) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    const Owned file(QVFileCreate());
    const Owned path = Text(place / "a");
    EXPECT_EQ(QVFileSetPath(file.Get(), path.Get()), QVNoErr);
    EXPECT_EQ(QVFileGetPath(file.Get()), path.Get());
    EXPECT_EQ(QVGetRetainCount(path.Get()), 2UL);
    EXPECT_EQ(QVFileSetPath(file.Get(), path.Get()), QVNoErr);
    EXPECT_EQ(QVGetRetainCount(path.Get()), 2UL);
    const Owned absent = Text(place / "absent");
    EXPECT_EQ(QVFileSetPath(file.Get(), absent.Get()), QVErrFileNotFound);
    EXPECT_EQ(QVFileGetPath(file.Get()), absent.Get());
    EXPECT_EQ(QVGetRetainCount(path.Get()), 1UL);
    EXPECT_EQ(QVFileSetPath(file.Get(), nullptr), QVErrFileNotFound);
    EXPECT_EQ(QVFileGetPath(file.Get()), nullptr);
    EXPECT_EQ(QVGetRetainCount(absent.Get()), 1UL);
}

TEST(FilePath, SettingTheSameStringResolvesItAgain) {
    const TemporaryDirectory place;
    const Owned file(QVFileCreate());
    const Owned path = Text(place / "a");
    EXPECT_EQ(QVFileSetPath(file.Get(), path.Get()), QVErrFileNotFound);
    WriteFile(place / "a", "abc");
    EXPECT_EQ(QVFileSetPath(file.Get(), path.Get()), QVNoErr);
}

TEST(FilePath, IsRefusedWhileTheFileIsOpen) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    const Owned other = Text(place / "b");
    EXPECT_EQ(QVFileSetPath(file.Get(), other.Get()), QVErrBusy);
    EXPECT_EQ(PathOf(file.Get()), place / "a");
    EXPECT_EQ(ReadSome(file.Get(), 3), "abc");
    ASSERT_EQ(QVFileClose(file.Get()), QVNoErr);
    EXPECT_EQ(QVFileSetPath(file.Get(), other.Get()), QVErrFileNotFound);
}

TEST(FilePath, TextThatNamesNoFileFindsNoneAndMakesNone) {
    const TemporaryDirectory place;
    const CurrentDirectory here(place.Path());
    WriteFile(place / "a", "abc");
    const Owned file(QVFileCreate());
    for (const std::wstring& text :
         {std::wstring(L"a\0b", 3), std::wstring({L'a', static_cast<wchar_t>(0xDC00)}),
          std::wstring({L'a', static_cast<wchar_t>(0x110000)})}) {
        EXPECT_EQ(QVFileSetPath(file.Get(), WideText(text).Get()), QVErrIO);
        EXPECT_EQ(QVFileOpenForReading(file.Get()), QVErrIO);
        // A new file's name without a text form counts as a file that is not there.
        EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVErrFileNotFound);
        EXPECT_EQ(QVFileSetPath(file.Get(), WideText(text + L"/name").Get()), QVErrIO);
        EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVErrIO);
    }
    EXPECT_EQ(ReadFile(place / "a"), "abc");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(place.Path()), {}), 1);
}

TEST(FilePath, AnEmptyPathIsNotFound) {
    const Owned file(QVFileCreate());
    EXPECT_EQ(QVFileSetPath(file.Get(), Text("").Get()), QVErrFileNotFound);
    EXPECT_EQ(QVFileOpenForReading(file.Get()), QVErrFileNotFound);
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVErrFileNotFound);
}

TEST(FilePath, ANameThatIsTooLongIsAnError) {
    const TemporaryDirectory place;
    const Owned file(QVFileCreate());
    EXPECT_EQ(QVFileSetPath(file.Get(), Text(place / std::string(300, 'x')).Get()), QVErrIO);
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVErrIO);
}

TEST(FilePath, CharactersBeyondAsciiAreUtf8OnDisk) {
    const TemporaryDirectory place;
    const Owned file(QVFileCreate());
    Owned path = Text(place / "");
    QVStringAppendString(path.Get(), WideText(L"\u00e9\u65e5\U0001F600").Get());
    QVFileSetPath(file.Get(), path.Get());
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    EXPECT_TRUE(Exists(place / "\xC3\xA9\xE6\x97\xA5\xF0\x9F\x98\x80"));
}

TEST(FilePath, ARelativePathStartsInTheCurrentDirectoryAndStaysThere) {
    const TemporaryDirectory place;
    const TemporaryDirectory elsewhere;
    WriteFile(place / "a", "abc");
    const Owned existing(QVFileCreate());
    const Owned made(QVFileCreate());
    {
        const CurrentDirectory here(place.Path());
        EXPECT_EQ(QVFileSetPath(existing.Get(), Text("a").Get()), QVNoErr);
        EXPECT_EQ(QVFileSetPath(made.Get(), Text("new").Get()), QVErrFileNotFound);
        ASSERT_EQ(QVFileOpenForWriting(made.Get()), QVNoErr);
    }
    const CurrentDirectory here(elsewhere.Path());
    EXPECT_EQ(QVFileOpenForReading(existing.Get()), QVNoErr);
    EXPECT_EQ(ReadSome(existing.Get(), 3), "abc");
    EXPECT_EQ(QVFileDelete(made.Get(), 0), QVNoErr);
    EXPECT_FALSE(Exists(place / "new"));
}

TEST(FileOpen, ReadingMissesAFileThatIsNotThere) {
    const TemporaryDirectory place;
    const Owned file = FileAt(place / "absent");
    EXPECT_EQ(QVFileOpenForReading(file.Get()), QVErrFileNotFound);
    EXPECT_FALSE(Exists(place / "absent"));
    WriteFile(place / "absent", "now");
    EXPECT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
}

TEST(FileOpen, WritingMakesTheFile) {
    const TemporaryDirectory place;
    const mode_t oldMask = umask(022);
    const Owned file = FileAt(place / "new");
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    umask(oldMask);
    EXPECT_EQ(ReadFile(place / "new"), "");
    EXPECT_EQ(ModeOf(place / "new"), 0644U);
    EXPECT_EQ(Write(file.Get(), "abc"), QVNoErr);
    EXPECT_EQ(ReadFile(place / "new"), "abc");
}

TEST(FileOpen, WritingNeedsTheParentDirectory) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "abc");
    EXPECT_EQ(QVFileOpenForWriting(FileAt(place / "absent/new").Get()), QVErrFileNotFound);
    EXPECT_EQ(QVFileOpenForWriting(FileAt(place / "file/new").Get()), QVErrFileNotFound);
    EXPECT_EQ(QVFileOpenForWriting(FileAt(place / "new/").Get()), QVErrFileNotFound);
    EXPECT_FALSE(Exists(place / "new"));
}

TEST(FileOpen, WritingKeepsBytesAndLength) {
    const TemporaryDirectory place;
    WriteFile(place / "a", std::string(100, 'o'));
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 0ULL);
    EXPECT_EQ(Write(file.Get(), "0123456789"), QVNoErr);
    EXPECT_EQ(QVFileClose(file.Get()), QVNoErr);
    EXPECT_EQ(ReadFile(place / "a"), "0123456789" + std::string(90, 'o'));
}

TEST(FileOpen, OpeningAgainClosesFirstAndStartsOver) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    FailingFiles files;
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    EXPECT_EQ(QVFileSetMarker(file.Get(), 0, 2), QVNoErr);
    ASSERT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    EXPECT_EQ(files.OpenDescriptors(), 1);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 0ULL);
    EXPECT_EQ(Write(file.Get(), "x"), QVErrPermission);
    EXPECT_EQ(QVFileWriteBytes(file.Get(), nullptr, 0, nullptr, 1), QVErrPermission);
    EXPECT_EQ(QVFileSetSize(file.Get(), 1), QVErrPermission);
    EXPECT_EQ(ReadFile(place / "a"), "abc");
}

TEST(FileOpen, DirectoriesFifosAndDevicesDoNotOpen) {
    const TemporaryDirectory place;
    ASSERT_EQ(mkfifo((place / "fifo").c_str(), 0600), 0);
    for (const std::string& path :
         {place.Path(), place / "fifo", std::string("/dev/null"), std::string("/")}) {
        const Owned file(QVFileCreate());
        EXPECT_EQ(QVFileSetPath(file.Get(), Text(path).Get()), QVNoErr) << path;
        EXPECT_EQ(QVFileOpenForReading(file.Get()), QVErrIO) << path;
        EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVErrIO) << path;
        EXPECT_EQ(QVFileClose(file.Get()), QVNoErr);
    }
}

TEST(FileOpen, AFifoThatTookTheFilesPlaceDoesNotOpenEither) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    const Owned file = FileAt(place / "a");
    std::filesystem::remove(place / "a");
    ASSERT_EQ(mkfifo((place / "a").c_str(), 0600), 0);
    FailingFiles files;
    EXPECT_EQ(QVFileOpenForReading(file.Get()), QVErrIO);
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVErrIO);
    EXPECT_EQ(files.OpenDescriptors(), 0);
}

TEST(FileOpen, AFileThatHasGoneIsNotMadeAgain) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    const Owned file = FileAt(place / "a");
    std::filesystem::remove(place / "a");
    EXPECT_EQ(QVFileOpenForReading(file.Get()), QVErrFileNotFound);
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVErrFileNotFound);
    EXPECT_FALSE(Exists(place / "a"));
    EXPECT_EQ(QVFileSetPath(file.Get(), Text(place / "a").Get()), QVErrFileNotFound);
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
}

TEST(FileOpen, NothingIsWrittenThroughADanglingLink) {
    const TemporaryDirectory place;
    ASSERT_EQ(symlink((place / "target").c_str(), (place / "link").c_str()), 0);
    const Owned file(QVFileCreate());
    EXPECT_EQ(QVFileSetPath(file.Get(), Text(place / "link").Get()), QVErrFileNotFound);
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVErrIO);
    EXPECT_FALSE(Exists(place / "target"));
    WriteFile(place / "target", "abc");
    EXPECT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    EXPECT_EQ(ReadSome(file.Get(), 3), "abc");
}

TEST(FileOpen, ErrorsOfTheSystemBecomeResultCodes) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    const struct {
        FileError error;
        int code;
    } rows[] = {{FileError::kNotFound, QVErrFileNotFound},
                {FileError::kBadArgument, QVErrParam},
                {FileError::kPermission, QVErrPermission},
                {FileError::kExists, QVErrIO},
                {FileError::kOther, QVErrIO}};
    for (const auto& row : rows) {
        FailingFiles files;
        const Owned file(QVFileCreate());
        files.Fail(FileOperation::kLookUp, row.error);
        EXPECT_EQ(QVFileSetPath(file.Get(), Text(place / "a").Get()), row.code);
        files.Fail(FileOperation::kLookUp, row.error);
        EXPECT_EQ(QVFileOpenForReading(file.Get()), row.code);
        files.Fail(FileOperation::kOpen, row.error);
        EXPECT_EQ(QVFileOpenForReading(file.Get()), row.code);
        files.Fail(FileOperation::kOpen, row.error);
        EXPECT_EQ(QVFileOpenForWriting(file.Get()), row.code);
        EXPECT_EQ(QVFileClose(file.Get()), QVNoErr);
        QVFileSetPath(file.Get(), Text(place / "new").Get());
        files.Fail(FileOperation::kCreateExclusively, row.error);
        EXPECT_EQ(QVFileOpenForWriting(file.Get()), row.code);
        EXPECT_FALSE(Exists(place / "new"));
        QVFileSetPath(file.Get(), Text(place / "a").Get());
        ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
        char byte = 'x';
        files.Fail(FileOperation::kReadAt, row.error);
        EXPECT_EQ(QVFileReadBytes(file.Get(), &byte, 1, nullptr, 1), row.code);
        files.Fail(FileOperation::kWriteAt, row.error);
        EXPECT_EQ(QVFileWriteBytes(file.Get(), &byte, 1, nullptr, 1), row.code);
        files.Fail(FileOperation::kGetSize, row.error);
        EXPECT_EQ(QVFileSetMarker(file.Get(), 1, 0), row.code);
        files.Fail(FileOperation::kGetSize, row.error);
        EXPECT_EQ(QVFileGetSize(file.Get()), 0ULL);
        files.Fail(FileOperation::kSetSize, row.error);
        EXPECT_EQ(QVFileSetSize(file.Get(), 1), row.code);
        files.Fail(FileOperation::kFlush, row.error);
        EXPECT_EQ(QVFileFlush(file.Get()), row.code);
        files.Fail(FileOperation::kLookUp, row.error);
        EXPECT_EQ(QVFileDelete(file.Get(), 0), row.code);
        files.Fail(FileOperation::kRemoveFile, row.error);
        EXPECT_EQ(QVFileDelete(file.Get(), 0), row.code);
        files.Fail(FileOperation::kClose, row.error);
        EXPECT_EQ(QVFileClose(file.Get()), QVErrBusy);
        EXPECT_EQ(ReadFile(place / "a"), "abc");
    }
}

TEST(FileClose, AFailedCloseStillCountsAsClosed) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    FailingFiles files;
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    files.Fail(FileOperation::kClose, FileError::kOther);
    EXPECT_EQ(QVFileClose(file.Get()), QVErrBusy);
    EXPECT_EQ(QVFileClose(file.Get()), QVNoErr);
    EXPECT_EQ(files.Calls(FileOperation::kClose), 1U);
    EXPECT_EQ(QVFileSetPath(file.Get(), Text(place / "a").Get()), QVNoErr);
}

TEST(FileClose, ReleasingTheLastReferenceCloses) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    FailingFiles files;
    {
        const Owned file = FileAt(place / "a");
        ASSERT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
        EXPECT_EQ(files.OpenDescriptors(), 1);
    }
    EXPECT_EQ(files.OpenDescriptors(), 0);
}

TEST(FileMarker, OriginsZeroAndTwoCountFromTheStartAndOneFromTheEnd) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "0123456789");
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    EXPECT_EQ(QVFileSetMarker(file.Get(), 0, 3), QVNoErr);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 3ULL);
    EXPECT_EQ(QVFileSetMarker(file.Get(), 2, 5), QVNoErr);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 5ULL);
    EXPECT_EQ(ReadSome(file.Get(), 2), "56");
    EXPECT_EQ(QVFileSetMarker(file.Get(), 1, 0), QVNoErr);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 10ULL);
    EXPECT_EQ(QVFileSetMarker(file.Get(), 1, -4), QVNoErr);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 6ULL);
    EXPECT_EQ(QVFileSetMarker(file.Get(), 1, 4), QVNoErr);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 14ULL);
}

TEST(FileMarker, RefusedPlacesDoNotMoveItButFlush) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "0123456789");
    FailingFiles files;
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    ASSERT_EQ(QVFileSetMarker(file.Get(), 0, 4), QVNoErr);
    const std::size_t flushesBefore = files.Calls(FileOperation::kFlush);
    EXPECT_EQ(QVFileSetMarker(file.Get(), 3, 0), QVErrParam);
    EXPECT_EQ(QVFileSetMarker(file.Get(), -1, 0), QVErrParam);
    EXPECT_EQ(QVFileSetMarker(file.Get(), 0, -1), QVErrParam);
    EXPECT_EQ(QVFileSetMarker(file.Get(), 1, -11), QVErrParam);
    EXPECT_EQ(QVFileSetMarker(file.Get(), 0, std::numeric_limits<long long>::min()), QVErrParam);
    EXPECT_EQ(QVFileSetMarker(file.Get(), 1, std::numeric_limits<long long>::max()), QVErrIO);
    EXPECT_EQ(files.Calls(FileOperation::kFlush), flushesBefore + 6);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 4ULL);
}

TEST(FileMarker, ReachesBeyondFourGibibytes) {
    const TemporaryDirectory place;
    const Owned file = FileAt(place / "sparse");
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    constexpr unsigned long long kFar = 5ULL << 30;
    ASSERT_EQ(QVFileSetSize(file.Get(), kFar), QVNoErr);
    EXPECT_EQ(QVFileGetSize(file.Get()), kFar);
    ASSERT_EQ(QVFileSetMarker(file.Get(), 0, static_cast<long long>(kFar)), QVNoErr);
    ASSERT_EQ(Write(file.Get(), "end"), QVNoErr);
    EXPECT_EQ(QVFileGetMarker(file.Get()), kFar + 3);
    ASSERT_EQ(QVFileSetMarker(file.Get(), 1, -4), QVNoErr);
    EXPECT_EQ(QVFileGetMarker(file.Get()), kFar - 1);
    EXPECT_EQ(ReadSome(file.Get(), 4), std::string("\0end", 4));
    EXPECT_EQ(QVFileGetSize(file.Get()), kFar + 3);
}

TEST(FileRead, MeetingTheEndTellsHowMuchCame) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "0123456789");
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    ASSERT_EQ(QVFileSetMarker(file.Get(), 1, -4), QVNoErr);
    int code = 0;
    EXPECT_EQ(ReadSome(file.Get(), 10, &code), "6789");
    EXPECT_EQ(code, QVErrEOF);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 10ULL);
    unsigned long done = 99;
    char byte = 0;
    EXPECT_EQ(QVFileReadBytes(file.Get(), &byte, 1, &done, 0), QVErrEOF);
    EXPECT_EQ(done, 0UL);
    done = 99;
    EXPECT_EQ(QVFileReadBytes(file.Get(), &byte, 0, &done, 1), QVNoErr);
    EXPECT_EQ(done, 0UL);
    EXPECT_EQ(QVFileReadBytes(file.Get(), nullptr, 0, nullptr, 1), QVNoErr);
}

TEST(FileRead, GrowthBySomeoneElseIsSeen) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    EXPECT_EQ(ReadSome(file.Get(), 10), "abc");
    WriteFile(place / "a", "abcdef");
    EXPECT_EQ(ReadSome(file.Get(), 10), "def");
}

TEST(FileTransfer, ABufferIsNeededForASize) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    EXPECT_EQ(QVFileReadBytes(file.Get(), nullptr, 1, nullptr, 1), QVErrParam);
    EXPECT_EQ(QVFileWriteBytes(file.Get(), nullptr, 1, nullptr, 1), QVErrParam);
    EXPECT_EQ(QVFileWriteBytes(file.Get(), nullptr, 0, nullptr, 1), QVNoErr);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 0ULL);
}

TEST(FileTransfer, ShortTransfersOfTheSystemAreCompleted) {
    const TemporaryDirectory place;
    FailingFiles files;
    files.LimitTransfers(3);
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    unsigned long done = 0;
    EXPECT_EQ(QVFileWriteBytes(file.Get(), "0123456789", 10, &done, 0), QVNoErr);
    EXPECT_EQ(done, 10UL);
    ASSERT_EQ(QVFileSetMarker(file.Get(), 0, 1), QVNoErr);
    EXPECT_EQ(ReadSome(file.Get(), 8), "12345678");
    int code = 0;
    EXPECT_EQ(ReadSome(file.Get(), 8, &code), "9");
    EXPECT_EQ(code, QVErrEOF);
}

TEST(FileTransfer, AFailureInTheMiddleLeavesTheMarkerBehindWhatWasMoved) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "0123456789");
    FailingFiles files;
    files.LimitTransfers(4);
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    files.Fail(FileOperation::kReadAt, FileError::kOther, 1);
    char buffer[10];
    unsigned long done = 99;
    EXPECT_EQ(QVFileReadBytes(file.Get(), buffer, 10, &done, 1), QVErrIO);
    EXPECT_EQ(done, 99UL);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 4ULL);
    files.Fail(FileOperation::kWriteAt, FileError::kOther, 1);
    EXPECT_EQ(QVFileWriteBytes(file.Get(), "abcdef", 6, &done, 1), QVErrIO);
    EXPECT_EQ(done, 99UL);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 8ULL);
    EXPECT_EQ(ReadFile(place / "a"), "0123abcd89");
}

TEST(FileTransfer, AFullDiskIsAnError) {
    const TemporaryDirectory place;
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    rlimit old;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto oldHandler = signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {1000, old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const int code = Write(file.Get(), std::string(1500, 'b'));
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
    signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(code, QVErrIO);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 1000ULL);
    EXPECT_EQ(ReadFile(place / "a"), std::string(1000, 'b'));
}

TEST(FileSize, CutsAndExtendsWithZerosAndLeavesTheMarker) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "0123456789");
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    ASSERT_EQ(QVFileSetMarker(file.Get(), 0, 8), QVNoErr);
    EXPECT_EQ(QVFileSetSize(file.Get(), 3), QVNoErr);
    EXPECT_EQ(QVFileGetSize(file.Get()), 3ULL);
    EXPECT_EQ(QVFileGetMarker(file.Get()), 8ULL);
    EXPECT_EQ(QVFileSetSize(file.Get(), 5), QVNoErr);
    EXPECT_EQ(ReadFile(place / "a"), std::string("012\0\0", 5));
    EXPECT_EQ(QVFileSetSize(file.Get(), ~0ULL), QVErrParam);
}

TEST(FileDelete, RemovesFilesAndEmptyDirectories) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    std::filesystem::create_directory(place / "empty");
    std::filesystem::create_directories(place / "full/inside");
    const Owned file = FileAt(place / "a");
    EXPECT_EQ(QVFileDelete(file.Get(), 0), QVNoErr);
    EXPECT_FALSE(Exists(place / "a"));
    EXPECT_EQ(QVFileDelete(file.Get(), 0), QVErrFileNotFound);
    EXPECT_EQ(QVFileDelete(FileAt(place / "empty").Get(), 0), QVNoErr);
    EXPECT_FALSE(Exists(place / "empty"));
    EXPECT_EQ(QVFileDelete(FileAt(place / "full").Get(), 0), QVErrIO);
    EXPECT_TRUE(Exists(place / "full/inside"));
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
}

TEST(FileDelete, TakesTheLinkAndLeavesWhatItLeadsTo) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "abc");
    std::filesystem::create_directory(place / "directory");
    std::filesystem::create_symlink("file", place / "link");
    std::filesystem::create_symlink("directory", place / "directory link");
    EXPECT_EQ(QVFileDelete(FileAt(place / "link").Get(), 0), QVNoErr);
    EXPECT_EQ(QVFileDelete(FileAt(place / "directory link").Get(), 0), QVNoErr);
    EXPECT_FALSE(Exists(place / "link"));
    EXPECT_TRUE(Exists(place / "file"));
    EXPECT_TRUE(Exists(place / "directory"));
}

TEST(FileDelete, LeavesTheFileOpen) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    const Owned file = FileAt(place / "a");
    ASSERT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    EXPECT_EQ(QVFileDelete(file.Get(), 0), QVNoErr);
    EXPECT_EQ(ReadSome(file.Get(), 3), "abc");
}

TEST(FileUnique, TakesThePathItselfOrTheFirstFreeNumber) {
    const TemporaryDirectory place;
    const Owned path = Text(place / "p");
    const Owned first(QVFileCreateUnique(path.Get()));
    EXPECT_EQ(PathOf(first.Get()), place / "p");
    EXPECT_FALSE(Exists(place / "p"));
    WriteFile(place / "p", "");
    EXPECT_EQ(PathOf(Owned(QVFileCreateUnique(path.Get())).Get()), place / "p.2");
    WriteFile(place / "p.2", "");
    EXPECT_EQ(PathOf(Owned(QVFileCreateUnique(path.Get())).Get()), place / "p.3");
    WriteFile(place / "p.4", "");
    EXPECT_EQ(PathOf(Owned(QVFileCreateUnique(path.Get())).Get()), place / "p.3");
}

TEST(FileUnique, ALinkThatLeadsNowhereIsNotAFreeName) {
    const TemporaryDirectory place;
    std::filesystem::create_symlink(place / "target", place / "p");
    const Owned file(QVFileCreateUnique(Text(place / "p").Get()));
    EXPECT_EQ(PathOf(file.Get()), place / "p.2");
}

TEST(FileUnique, LeavesNothingInTheCallersPool) {
    const TemporaryDirectory place;
    WriteFile(place / "p", "");
    const Owned path = Text(place / "p");
    const qvtest::LogCapture log;  // a temporary without a pool would be logged
    Owned file(QVFileCreateUnique(path.Get()));
    EXPECT_TRUE(file);
    EXPECT_EQ(log.Text(), "");
    EXPECT_EQ(QVGetRetainCount(path.Get()), 1UL);
    EXPECT_EQ(QVGetRetainCount(QVFileGetPath(file.Get())), 1UL);
}

TEST(FileUnique, AnyOtherAnswerEndsTheSearch) {
    const TemporaryDirectory place;
    EXPECT_EQ(QVFileCreateUnique(SurrogateText().Get()), nullptr);
    EXPECT_EQ(QVFileCreateUnique(Text(place / std::string(300, 'x')).Get()), nullptr);
    FailingFiles files;
    for (const FileError error : {FileError::kPermission, FileError::kOther, FileError::kBadArgument}) {
        files.Fail(FileOperation::kLookUp, error, 0, true);
        EXPECT_EQ(QVFileCreateUnique(Text(place / "p").Get()), nullptr);
        Owned file(QVFileCreate());
        auto* impl = qv::FromHandle<QVFileMacImpl>(file.Get());
        EXPECT_EQ(impl->SetPathForUnique(Text(place / "p").Get(), false), QVErrPermission);
    }
}

TEST(FileUnique, TheFirstOpeningMakesTheFileOrFails) {
    const TemporaryDirectory place;
    const Owned file(QVFileCreateUnique(Text(place / "p").Get()));
    WriteFile(place / "p", "someone else's");
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVErrIO);
    // Reading it is allowed, and does not make it ours.
    EXPECT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVErrIO);
    EXPECT_EQ(ReadFile(place / "p"), "someone else's");
    std::filesystem::remove(place / "p");
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    EXPECT_EQ(Write(file.Get(), "ours"), QVNoErr);
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    EXPECT_EQ(ReadFile(place / "p"), "ours");
}

TEST(FileUnique, TheFileStaysWhenTheObjectGoes) {
    const TemporaryDirectory place;
    const mode_t oldMask = umask(022);
    Owned file(QVFileCreateUnique(Text(place / "p").Get()));
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    umask(oldMask);
    EXPECT_EQ(ModeOf(place / "p"), 0644U);
    file.Reset();
    EXPECT_TRUE(Exists(place / "p"));
}

TEST(FileTemporary, IsPrivateAndGoesWithTheObject) {
    const TemporaryDirectory place;
    Owned file(QVFileCreateTemporary(Text(place / "t").Get()));
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    EXPECT_EQ(ModeOf(place / "t"), 0600U);
    EXPECT_EQ(Write(file.Get(), "abc"), QVNoErr);
    ASSERT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    EXPECT_EQ(ReadSome(file.Get(), 3), "abc");
    file.Reset();
    EXPECT_FALSE(Exists(place / "t"));
}

TEST(FileTemporary, OnlyAFileThatTheObjectMadeGoesWithIt) {
    const TemporaryDirectory place;
    Owned file(QVFileCreateTemporary(Text(place / "t").Get()));
    WriteFile(place / "t", "someone else's");
    EXPECT_EQ(QVFileOpenForReading(file.Get()), QVNoErr);
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVErrIO);
    file.Reset();
    EXPECT_EQ(ReadFile(place / "t"), "someone else's");
}

TEST(FileTemporary, AFileThatReplacedOursStays) {
    const TemporaryDirectory place;
    WriteFile(place / "other", "someone else's");
    Owned file(QVFileCreateTemporary(Text(place / "t").Get()));
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    std::filesystem::rename(place / "other", place / "t");
    file.Reset();
    EXPECT_EQ(ReadFile(place / "t"), "someone else's");
}

TEST(FileTemporary, ThePathOfAnotherFileDoesNotDeleteThatFile) {
    const TemporaryDirectory place;
    WriteFile(place / "mine", "keep");
    Owned file(QVFileCreateTemporary(Text(place / "t").Get()));
    EXPECT_EQ(QVFileSetPath(file.Get(), Text(place / "mine").Get()), QVNoErr);
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    file.Reset();
    EXPECT_EQ(ReadFile(place / "mine"), "keep");
}

TEST(FileTemporary, MayBeMadeAgainAfterItWasDeleted) {
    const TemporaryDirectory place;
    Owned file(QVFileCreateTemporary(Text(place / "t").Get()));
    ASSERT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    ASSERT_EQ(QVFileClose(file.Get()), QVNoErr);
    EXPECT_EQ(QVFileDelete(file.Get(), 0), QVNoErr);
    EXPECT_FALSE(Exists(place / "t"));
    EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
    EXPECT_TRUE(Exists(place / "t"));
    file.Reset();
    EXPECT_FALSE(Exists(place / "t"));
}

TEST(FileTemporary, TwoObjectsNeverShareAFile) {
    const TemporaryDirectory place;
    const Owned path = Text(place / "t");
    const Owned first(QVFileCreateTemporary(path.Get()));
    const Owned second(QVFileCreateTemporary(path.Get()));
    EXPECT_EQ(PathOf(first.Get()), PathOf(second.Get()));
    EXPECT_EQ(QVFileOpenForWriting(first.Get()), QVNoErr);
    EXPECT_EQ(QVFileOpenForWriting(second.Get()), QVErrIO);
}

TEST(FileMemory, EveryAllocationMayFail) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "abc");
    WriteFile(place / "u", "");
    const Owned path = Text(place / "a");
    const Owned uniquePath = Text(place / "u");
    const qvtest::LogCapture log;
    FailingFiles files;
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        const Owned file(QVFileCreate());
        const int set = QVFileSetPath(file.Get(), path.Get());
        EXPECT_TRUE(set != QVNoErr || QVFileOpenForReading(file.Get()) == QVNoErr);
        const Owned temporary(QVFileCreateTemporary(uniquePath.Get()));
        const int opened = QVFileOpenForWriting(temporary.Get());
        EXPECT_TRUE(opened == QVNoErr || opened == QVErrMemory || opened == QVErrParam) << opened;
    });
    EXPECT_GT(failures, 3U);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
    EXPECT_EQ(files.OpenDescriptors(), 0);
    EXPECT_FALSE(Exists(place / "u.2"));
}

TEST(FileMemory, AFailedCreationIsLogged) {
    const qvtest::LogCapture log;
    {
        const qvtest::FailAllocation failing(0);
        EXPECT_EQ(QVFileCreate(), nullptr);
    }
    EXPECT_EQ(log.Messages(), std::vector<std::string>{"Couldn't allocate the buffer for the QVFile."});
}

TEST(FileFailures, EveryFileSystemCallMayFail) {
    const TemporaryDirectory place;
    const Owned path = Text(place / "t");
    const std::size_t failures = qvtest::FailEachFileCall(FileError::kOther, [&](FailingFiles& files) {
        {
            const Owned file(QVFileCreateTemporary(path.Get()));
            if (QVFileOpenForWriting(file.Get()) == QVNoErr) {
                Write(file.Get(), "abc");
                QVFileSetMarker(file.Get(), 1, -1);
                ReadSome(file.Get(), 2);
                QVFileSetSize(file.Get(), 1);
                QVFileClose(file.Get());
            }
        }
        EXPECT_EQ(files.OpenDescriptors(), 0);
        std::filesystem::remove(place / "t");  // left behind when the deletion itself failed
    });
    EXPECT_GT(failures, 10U);
}

#include "platform/file_system.h"

#include <algorithm>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "support/temporary_directory.h"

using qv::FileAccess;
using qv::FileError;
using qv::Files;
using qv::ItemInfo;
using qv::ItemKind;
using qv::LinkRule;
using qvtest::Exists;
using qvtest::ReadFile;
using qvtest::TemporaryDirectory;
using qvtest::WriteFile;

namespace {

// A file open through the interface, closed with it.
class OpenFile {
public:
    OpenFile(const std::string& path, FileAccess access)
        : error(Files().Open(path, access, descriptor, info)) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (descriptor == -1) return;
        EXPECT_EQ(Files().Close(descriptor), FileError::kNone);
    }

    int descriptor = -1;
    ItemInfo info;
    FileError error;
};

}  // namespace

TEST(FileSystemLookUp, TellsFilesDirectoriesLinksAndOthersApart) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "12345");
    ASSERT_EQ(symlink("file", (place / "link").c_str()), 0);
    ASSERT_EQ(mkfifo((place / "fifo").c_str(), 0600), 0);
    ItemInfo info;
    ASSERT_EQ(Files().LookUp(place / "file", LinkRule::kFollow, info), FileError::kNone);
    EXPECT_EQ(info.kind, ItemKind::kRegularFile);
    EXPECT_EQ(info.size, 5U);
    EXPECT_EQ(info.owner, getuid());
    const qv::ItemIdentity identity = info.identity;
    ASSERT_EQ(Files().LookUp(place / "link", LinkRule::kFollow, info), FileError::kNone);
    EXPECT_EQ(info.kind, ItemKind::kRegularFile);
    EXPECT_EQ(info.identity, identity);
    ASSERT_EQ(Files().LookUp(place / "link", LinkRule::kLookAtLink, info), FileError::kNone);
    EXPECT_EQ(info.kind, ItemKind::kLink);
    EXPECT_NE(info.identity, identity);
    ASSERT_EQ(Files().LookUp(place.Path(), LinkRule::kFollow, info), FileError::kNone);
    EXPECT_EQ(info.kind, ItemKind::kDirectory);
    ASSERT_EQ(Files().LookUp(place / "fifo", LinkRule::kFollow, info), FileError::kNone);
    EXPECT_EQ(info.kind, ItemKind::kOther);
}

TEST(FileSystemLookUp, NothingIsThereBehindAFileOrADanglingLink) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "");
    ASSERT_EQ(symlink("nowhere", (place / "link").c_str()), 0);
    ItemInfo info;
    EXPECT_EQ(Files().LookUp(place / "absent", LinkRule::kFollow, info), FileError::kNotFound);
    EXPECT_EQ(Files().LookUp(place / "file/below", LinkRule::kFollow, info), FileError::kNotFound);
    EXPECT_EQ(Files().LookUp(place / "link", LinkRule::kFollow, info), FileError::kNotFound);
    EXPECT_EQ(Files().LookUp(place / "link", LinkRule::kLookAtLink, info), FileError::kNone);
    EXPECT_EQ(Files().LookUp("", LinkRule::kFollow, info), FileError::kNotFound);
}

TEST(FileSystemLookUp, ANameThatIsTooLongIsAnotherError) {
    ItemInfo info;
    EXPECT_EQ(Files().LookUp(std::string(300, 'x'), LinkRule::kFollow, info), FileError::kOther);
}

TEST(FileSystemOpen, OnlyRegularFilesOpenAndNothingBlocks) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "abc");
    ASSERT_EQ(mkfifo((place / "fifo").c_str(), 0600), 0);
    for (const FileAccess access : {FileAccess::kRead, FileAccess::kReadAndWrite}) {
        EXPECT_EQ(OpenFile(place / "file", access).error, FileError::kNone);
        EXPECT_EQ(OpenFile(place / "fifo", access).error, FileError::kOther);
        EXPECT_EQ(OpenFile(place.Path(), access).error, FileError::kOther);
        EXPECT_EQ(OpenFile("/dev/null", access).error, FileError::kOther);
        EXPECT_EQ(OpenFile(place / "absent", access).error, FileError::kNotFound);
    }
}

TEST(FileSystemOpen, DescriptorsAreNotInheritedByOtherPrograms) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "abc");
    const OpenFile file(place / "file", FileAccess::kRead);
    EXPECT_EQ(fcntl(file.descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(FileSystemOpen, TellsSizeAndIdentity) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "abc");
    const OpenFile file(place / "file", FileAccess::kRead);
    ItemInfo info;
    ASSERT_EQ(Files().LookUp(place / "file", LinkRule::kFollow, info), FileError::kNone);
    EXPECT_EQ(file.info.size, 3U);
    EXPECT_EQ(file.info.identity, info.identity);
}

TEST(FileSystemCreate, NeverOpensWhatIsThere) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "abc");
    ASSERT_EQ(symlink("target", (place / "link").c_str()), 0);
    int descriptor = -1;
    ItemInfo info;
    EXPECT_EQ(Files().CreateExclusively(place / "file", 0666, descriptor, info), FileError::kExists);
    EXPECT_EQ(Files().CreateExclusively(place / "link", 0666, descriptor, info), FileError::kExists);
    EXPECT_EQ(descriptor, -1);
    EXPECT_FALSE(Exists(place / "target"));
    EXPECT_EQ(ReadFile(place / "file"), "abc");
}

TEST(FileSystemCreate, GivesTheAskedAccessBits) {
    const TemporaryDirectory place;
    int descriptor = -1;
    ItemInfo info;
    ASSERT_EQ(Files().CreateExclusively(place / "file", qv::kPrivateFile, descriptor, info),
              FileError::kNone);
    EXPECT_EQ(info.permissions, 0600U);
    EXPECT_EQ(Files().Close(descriptor), FileError::kNone);
}

TEST(FileSystemTransfer, ReadsAndWritesAtOffsets) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "0123456789");
    const OpenFile file(place / "file", FileAccess::kReadAndWrite);
    std::size_t moved = 0;
    ASSERT_EQ(Files().WriteAt(file.descriptor, "XY", 2, 9, moved), FileError::kNone);
    EXPECT_EQ(moved, 2U);
    char buffer[8] = {};
    ASSERT_EQ(Files().ReadAt(file.descriptor, buffer, 8, 7, moved), FileError::kNone);
    EXPECT_EQ(std::string(buffer, moved), "78XY");
    ASSERT_EQ(Files().ReadAt(file.descriptor, buffer, 8, 11, moved), FileError::kNone);
    EXPECT_EQ(moved, 0U);
}

TEST(FileSystemTransfer, OffsetsReachBeyondFourGibibytes) {
    const TemporaryDirectory place;
    WriteFile(place / "sparse", "");
    const OpenFile file(place / "sparse", FileAccess::kReadAndWrite);
    constexpr std::uint64_t kFar = (std::uint64_t{5} << 30) + 1;
    ASSERT_EQ(Files().SetSize(file.descriptor, kFar), FileError::kNone);
    std::size_t moved = 0;
    ASSERT_EQ(Files().WriteAt(file.descriptor, "end", 3, kFar, moved), FileError::kNone);
    std::uint64_t size = 0;
    ASSERT_EQ(Files().GetSize(file.descriptor, size), FileError::kNone);
    EXPECT_EQ(size, kFar + 3);
    char buffer[4] = {};
    ASSERT_EQ(Files().ReadAt(file.descriptor, buffer, 4, kFar - 1, moved), FileError::kNone);
    EXPECT_EQ(std::string(buffer, moved), std::string("\0end", 4));
}

TEST(FileSystemTransfer, OffsetsThatNoFileHasAreBadArguments) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "abc");
    const OpenFile file(place / "file", FileAccess::kReadAndWrite);
    constexpr std::uint64_t kTooFar = std::uint64_t{1} << 63;
    char byte = 'x';
    std::size_t moved = 7;
    EXPECT_EQ(Files().ReadAt(file.descriptor, &byte, 1, kTooFar, moved), FileError::kBadArgument);
    EXPECT_EQ(moved, 0U);
    EXPECT_EQ(Files().WriteAt(file.descriptor, &byte, 1, kTooFar, moved), FileError::kBadArgument);
    EXPECT_EQ(Files().SetSize(file.descriptor, kTooFar), FileError::kBadArgument);
    EXPECT_EQ(ReadFile(place / "file"), "abc");
}

TEST(FileSystemTransfer, AFileOpenForReadingRefusesWrites) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "abc");
    const OpenFile file(place / "file", FileAccess::kRead);
    std::size_t moved = 0;
    EXPECT_EQ(Files().WriteAt(file.descriptor, "x", 1, 0, moved), FileError::kPermission);
}

TEST(FileSystemTransfer, AFullFileSystemIsAnError) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "");
    const OpenFile file(place / "file", FileAccess::kReadAndWrite);
    // A limit on the size of files stands in for the full disk: the write up to it is short, the next one
    // fails.
    rlimit old;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto oldHandler = signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {1000, old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::string bytes(1500, 'b');
    std::size_t moved = 0;
    const FileError first = Files().WriteAt(file.descriptor, bytes.data(), bytes.size(), 0, moved);
    const std::size_t movedFirst = moved;
    const FileError second = Files().WriteAt(file.descriptor, bytes.data(), 500, 1000, moved);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
    signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(first, FileError::kNone);
    EXPECT_EQ(movedFirst, 1000U);
    EXPECT_EQ(second, FileError::kOther);
    EXPECT_EQ(moved, 0U);
}

TEST(FileSystemClose, AClosedDescriptorIsRefused) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "abc");
    int descriptor = -1;
    ItemInfo info;
    ASSERT_EQ(Files().Open(place / "file", FileAccess::kRead, descriptor, info), FileError::kNone);
    ASSERT_EQ(Files().Close(descriptor), FileError::kNone);
    EXPECT_EQ(Files().Close(descriptor), FileError::kPermission);
}

TEST(FileSystemDirectories, AreMadeListedAndRemoved) {
    const TemporaryDirectory place;
    ASSERT_EQ(Files().MakeDirectory(place / "d", 0700), FileError::kNone);
    EXPECT_EQ(Files().MakeDirectory(place / "d", 0700), FileError::kExists);
    EXPECT_EQ(Files().MakeDirectory(place / "absent/d", 0700), FileError::kNotFound);
    WriteFile(place / "d/one", "");
    WriteFile(place / "d/\xFF\xFE not text", "");
    std::vector<std::string> names = {"left over"};
    ASSERT_EQ(Files().ListDirectory(place / "d", names), FileError::kNone);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"one", "\xFF\xFE not text"}));
    EXPECT_EQ(Files().RemoveDirectory(place / "d"), FileError::kOther);
    for (const std::string& name : names)
        EXPECT_EQ(Files().RemoveFile(place / "d/" + name), FileError::kNone);
    EXPECT_EQ(Files().RemoveDirectory(place / "d"), FileError::kNone);
    EXPECT_EQ(Files().RemoveDirectory(place / "d"), FileError::kNotFound);
    EXPECT_EQ(Files().ListDirectory(place / "d", names), FileError::kNotFound);
}

TEST(FileSystemLinks, AreMadeReadAndRemovedThemselves) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "abc");
    ASSERT_EQ(Files().MakeLink("file", place / "link"), FileError::kNone);
    EXPECT_EQ(Files().MakeLink("file", place / "link"), FileError::kExists);
    std::string target;
    ASSERT_EQ(Files().ReadLink(place / "link", target), FileError::kNone);
    EXPECT_EQ(target, "file");
    EXPECT_EQ(Files().ReadLink(place / "file", target), FileError::kBadArgument);
    std::string canonical;
    ASSERT_EQ(Files().Canonicalise(place / "./link", canonical), FileError::kNone);
    EXPECT_EQ(canonical, place / "file");
    EXPECT_EQ(Files().Canonicalise(place / "absent", canonical), FileError::kNotFound);
    ASSERT_EQ(Files().RemoveFile(place / "link"), FileError::kNone);
    EXPECT_EQ(ReadFile(place / "file"), "abc");
}

TEST(FileSystemMove, NeverReplaces) {
    const TemporaryDirectory place;
    WriteFile(place / "a", "A");
    WriteFile(place / "b", "B");
    EXPECT_EQ(Files().MoveWithoutReplacing(place / "a", place / "b"), FileError::kExists);
    EXPECT_EQ(ReadFile(place / "a"), "A");
    EXPECT_EQ(ReadFile(place / "b"), "B");
    EXPECT_EQ(Files().MoveWithoutReplacing(place / "a", place / "c"), FileError::kNone);
    EXPECT_FALSE(Exists(place / "a"));
    EXPECT_EQ(ReadFile(place / "c"), "A");
    EXPECT_EQ(Files().MoveWithoutReplacing(place / "a", place / "d"), FileError::kNotFound);
    ASSERT_EQ(Files().MakeDirectory(place / "directory", 0700), FileError::kNone);
    EXPECT_EQ(Files().MoveWithoutReplacing(place / "directory", place / "c"), FileError::kExists);
    EXPECT_EQ(Files().MoveWithoutReplacing(place / "directory", place / "moved"), FileError::kNone);
    EXPECT_TRUE(Exists(place / "moved"));
}

TEST(FileSystemAttributes, AccessBitsAndTimeGoOver) {
    const TemporaryDirectory place;
    WriteFile(place / "file", "");
    ItemInfo wanted;
    wanted.permissions = 0451;
    wanted.modified = 5'000'000'000;  // 2128: beyond 32 bits
    wanted.modifiedNanoseconds = 123'000'000;
    ASSERT_EQ(Files().SetAttributes(place / "file", wanted), FileError::kNone);
    ItemInfo info;
    ASSERT_EQ(Files().LookUp(place / "file", LinkRule::kFollow, info), FileError::kNone);
    EXPECT_EQ(info.permissions, 0451U);
    EXPECT_EQ(info.modified, wanted.modified);
    EXPECT_EQ(info.modifiedNanoseconds, wanted.modifiedNanoseconds);
    EXPECT_EQ(Files().SetAttributes(place / "absent", wanted), FileError::kNotFound);
}

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

#include <QVFoundation/QVData.h>
#include <QVFoundation/QVString.h>

#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/failing_files.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

using qv::FileError;
using qv::Owned;
using qvtest::Exists;
using qvtest::FailingFiles;
using qvtest::FileOperation;
using qvtest::ReadFile;
using qvtest::TemporaryDirectory;
using qvtest::WriteFile;

namespace {

Owned Text(const std::string& utf8) {
    return Owned(QVStringCreateWithCString(utf8.c_str()));
}

Owned DataOf(const std::string& bytes) {
    return Owned(QVDataCreate(bytes.data(), bytes.size()));
}

std::string BytesOf(void* data) {
    return {static_cast<const char*>(QVDataGetImutableBuffer(data)), QVDataGetSize(data)};
}

class DataFile : public testing::Test {
protected:
    const qv::LocalPool pool;
    const TemporaryDirectory place;
    const std::string path = place / "file";
    const Owned pathText = Text(path);
};

}  // namespace

TEST_F(DataFile, MakesTheFile) {
    EXPECT_EQ(QVDataWriteToFile(DataOf("abc").Get(), pathText.Get()), QVNoErr);
    EXPECT_EQ(ReadFile(path), "abc");
}

TEST_F(DataFile, ReplacesLongerAndShorterFiles) {
    WriteFile(path, "a much longer file");
    EXPECT_EQ(QVDataWriteToFile(DataOf("abc").Get(), pathText.Get()), QVNoErr);
    EXPECT_EQ(ReadFile(path), "abc");
    EXPECT_EQ(QVDataWriteToFile(DataOf("abcdef").Get(), pathText.Get()), QVNoErr);
    EXPECT_EQ(ReadFile(path), "abcdef");
}

TEST_F(DataFile, EmptyAndNullDataMakeAFileButLeaveAnOlderOneAsItIs) {
    EXPECT_EQ(QVDataWriteToFile(nullptr, pathText.Get()), QVNoErr);
    EXPECT_EQ(ReadFile(path), "");
    WriteFile(path, "old");
    EXPECT_EQ(QVDataWriteToFile(nullptr, pathText.Get()), QVNoErr);
    EXPECT_EQ(QVDataWriteToFile(DataOf("").Get(), pathText.Get()), QVNoErr);
    EXPECT_EQ(ReadFile(path), "old");
}

TEST_F(DataFile, WritingTellsTheFilesCode) {
    const Owned data = DataOf("abc");
    EXPECT_EQ(QVDataWriteToFile(data.Get(), nullptr), QVErrFileNotFound);
    EXPECT_EQ(QVDataWriteToFile(data.Get(), Text("").Get()), QVErrFileNotFound);
    EXPECT_EQ(QVDataWriteToFile(data.Get(), Text(place / "absent/file").Get()), QVErrFileNotFound);
    EXPECT_EQ(QVDataWriteToFile(data.Get(), Text(place.Path()).Get()), QVErrIO);
    FailingFiles files;
    files.Fail(FileOperation::kCreateExclusively, FileError::kPermission);
    EXPECT_EQ(QVDataWriteToFile(data.Get(), pathText.Get()), QVErrPermission);
    EXPECT_FALSE(Exists(path));
}

TEST_F(DataFile, AFileWhoseWritingFailedIsCutThere) {
    WriteFile(path, "a much longer file");
    FailingFiles files;
    files.LimitDisk(2);
    EXPECT_EQ(QVDataWriteToFile(DataOf("abcdef").Get(), pathText.Get()), QVErrIO);
    EXPECT_EQ(ReadFile(path), "ab");
    EXPECT_EQ(files.OpenDescriptors(), 0);
}

TEST_F(DataFile, ReadsTheWholeFileIntoATemporary) {
    const std::string bytes = "some\0bytes\xFF" + std::string(100'000, 'b');
    WriteFile(path, bytes);
    void* data = QVDataCreateFromFile(pathText.Get());
    EXPECT_EQ(BytesOf(data), bytes);
    EXPECT_EQ(QVGetRetainCount(data), 1UL);  // the pool's
    EXPECT_TRUE(QVDataAppendBuffer(data, "x", 1));
}

TEST_F(DataFile, AnEmptyFileIsEmptyData) {
    WriteFile(path, "");
    void* data = QVDataCreateFromFile(pathText.Get());
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(QVDataGetSize(data), 0UL);
}

TEST_F(DataFile, WhatCannotBeReadIsNull) {
    EXPECT_EQ(QVDataCreateFromFile(nullptr), nullptr);
    EXPECT_EQ(QVDataCreateFromFile(pathText.Get()), nullptr);
    EXPECT_EQ(QVDataCreateFromFile(Text(place.Path()).Get()), nullptr);
    ASSERT_EQ(mkfifo((place / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(QVDataCreateFromFile(Text(place / "fifo").Get()), nullptr);
}

TEST_F(DataFile, AFileThatIsTooLargeIsNull) {
    WriteFile(path, "");
    std::filesystem::resize_file(path, 0xFFFFFFFF);
    EXPECT_EQ(QVDataCreateFromFile(pathText.Get()), nullptr);
    std::filesystem::resize_file(path, std::uintmax_t{5} << 30);
    EXPECT_EQ(QVDataCreateFromFile(pathText.Get()), nullptr);
}

TEST_F(DataFile, EveryFileSystemCallMayFail) {
    WriteFile(path, "contents");
    const Owned target = Text(place / "target");
    const std::size_t failures = qvtest::FailEachFileCall(FileError::kOther, [&](FailingFiles& files) {
        void* data = QVDataCreateFromFile(pathText.Get());
        // A size that cannot be told counts as 0.
        const bool isWhole = data != nullptr && BytesOf(data) == "contents";
        EXPECT_TRUE(data == nullptr || isWhole || QVDataGetSize(data) == 0);
        QVDataWriteToFile(data, target.Get());
        EXPECT_EQ(files.OpenDescriptors(), 0);
    });
    EXPECT_GT(failures, 8U);
    EXPECT_EQ(ReadFile(place / "target"), "contents");
}

TEST_F(DataFile, EveryAllocationMayFail) {
    WriteFile(path, "contents");
    const Owned data = DataOf("abc");
    const Owned target = Text(place / "target");
    const qvtest::LogCapture log;
    FailingFiles files;
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        QVDataCreateFromFile(pathText.Get());
        QVDataWriteToFile(data.Get(), target.Get());
    });
    EXPECT_GT(failures, 4U);
    EXPECT_EQ(files.OpenDescriptors(), 0);
    EXPECT_EQ(ReadFile(place / "target"), "abc");
}

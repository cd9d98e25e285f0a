// The "Compress" option: bodies in the compressed block format, made through a temporary file beside the
// source.
#include "archive/archive_test_tools.h"
#include "models/plain_block_encoder.h"
#include "support/failing_allocator.h"
#include "support/failing_files.h"
#include "support/log_capture.h"

namespace {

using qv::FileError;
using qv::Owned;
using qvmodel::ArchiveItem;
using qvtest::FailingFiles;
using qvtest::FileOperation;
using qvtest::NoiseBytes;
using qvtest::PathString;

// Text with repetitions near and far.
std::string Prose(std::size_t size) {
    std::string text;
    for (int line = 0; text.size() < size; ++line) {
        text += "line " + std::to_string(line * line % 97) + " of the archive's compression test\n";
    }
    text.resize(size);
    return text;
}

std::string CompressedByTheModel(const std::string& plain) {
    const std::vector<std::uint8_t> body = model::Compress({plain.begin(), plain.end()});
    return {body.begin(), body.end()};
}

class ArchiveCompression : public qvtest::ArchiveTest {
protected:
    ArchiveCompression() : options_(QVDictionaryCreate()) { SetCompression(true); }

    void SetCompression(bool on) {
        const Owned value(QVNumberCreateWithBool(on ? 1 : 0));
        QVDictionarySetObject(options_.Get(), value.Get(), L"Compress");
    }

    Owned options_;
};

TEST_F(ArchiveCompression, BodiesAreTheCompressorsOutput) {
    ASSERT_EQ(New(options_.Get()), QVNoErr);
    std::vector<ArchiveItem> expected;
    for (const std::string& plain : {std::string(), std::string("x"), Prose(100), std::string(100, 'a'),
                                     Prose(40000), NoiseBytes(33000, 1)}) {
        const auto id = static_cast<std::uint32_t>(expected.size() + 2);
        expected.push_back({id, 1, "", CompressedByTheModel(plain)});
        EXPECT_EQ(AddBytes(plain), id);
        EXPECT_EQ(qvtest::ReadFile(directory_ / "source"), plain) << "the source stays as it was";
        ExpectDirectoryHolds(2);
    }
    EXPECT_EQ(Items(), expected);
}

TEST_F(ArchiveCompression, TheOptionIsReadForEveryFile) {
    ASSERT_EQ(New(options_.Get()), QVNoErr);
    AddBytes(Prose(500));
    SetCompression(false);
    AddBytes(Prose(500));
    QVDictionaryRemoveObject(options_.Get(), L"Compress");
    AddBytes("third");
    EXPECT_EQ(Items(), (std::vector<ArchiveItem>{{2, 1, "", CompressedByTheModel(Prose(500))},
                                                 {3, 1, "", Prose(500)},
                                                 {4, 1, "", "third"}}));
}

TEST_F(ArchiveCompression, ASourceThatCannotBeReadLeavesNothingBehind) {
    ASSERT_EQ(New(options_.Get()), QVNoErr);
    EXPECT_EQ(AddPath(directory_ / "missing"), QVErrFileNotFound);
    EXPECT_EQ(AddPath(directory_ / "missing/file"), QVErrFileNotFound);
    EXPECT_EQ(Bytes().size(), 30U);
    ExpectDirectoryHolds(1);
}

TEST_F(ArchiveCompression, ATemporaryFileThatCannotBeMadeIsToldAsPermission) {
    ASSERT_EQ(New(options_.Get()), QVNoErr);
    qvtest::WriteFile(directory_ / "f", "text");
    FailingFiles files;
    files.Fail(FileOperation::kLookUp, FileError::kPermission, 1);  // the first look is at the source itself
    EXPECT_EQ(AddPath(directory_ / "f"), QVErrPermission);
    EXPECT_EQ(Bytes().size(), 30U);
}

TEST_F(ArchiveCompression, AFullDiskIsNeverSilent) {
    const std::string plain = NoiseBytes(5000, 3);
    const std::size_t needed = 2 * CompressedByTheModel(plain).size() + 18;
    qvtest::WriteFile(directory_ / "f", plain);
    ASSERT_EQ(New(options_.Get()), QVNoErr);
    for (std::size_t room = 0; room < needed; room += 509) {
        FailingFiles files;
        files.LimitDisk(room);
        EXPECT_EQ(AddPath(directory_ / "f"), QVErrIO) << room;
        EXPECT_EQ(Bytes().size(), 30U);
        ExpectDirectoryHolds(2);
    }
}

TEST_F(ArchiveCompression, EveryCallFailingLeavesTheArchiveWholeOrAsItWas) {
    const std::string plain = Prose(40000);
    const std::string body = CompressedByTheModel(plain);
    qvtest::WriteFile(directory_ / "f", plain);
    std::size_t filesLeft = 0;
    const std::size_t calls = qvtest::FailEachFileCall(FileError::kOther, [&](FailingFiles& files) {
        qv::ReplaceFiles(nullptr);
        ASSERT_EQ(New(options_.Get()), QVNoErr);
        qv::ReplaceFiles(&files);
        const int result = AddPath(directory_ / "f");
        qv::ReplaceFiles(nullptr);
        if (result == QVNoErr) {
            EXPECT_EQ(Items(), (std::vector<ArchiveItem>{{2, 1, "", body}}));
        } else {
            EXPECT_EQ(Bytes().size(), 30U);
        }
        filesLeft += std::filesystem::remove(directory_ / "f.2");
        ExpectDirectoryHolds(2);
    });
    EXPECT_GT(calls, 10U);
    EXPECT_LE(filesLeft, 3U)
        << "only where deleting the temporary file fails: two looks at it, and the removal";
}

// A size that cannot be told reads as 0; the compressor then makes nothing of a file that holds something.
TEST_F(ArchiveCompression, ASourceWhoseSizeCannotBeToldIsRefused) {
    ASSERT_EQ(New(options_.Get()), QVNoErr);
    qvtest::WriteFile(directory_ / "f", Prose(100));
    for (const bool always : {false, true}) {
        FailingFiles files;
        files.Fail(FileOperation::kGetSize, FileError::kOther, 0, always);
        EXPECT_EQ(AddPath(directory_ / "f"), QVErrIO);
    }
    EXPECT_EQ(Bytes().size(), 30U);
}

TEST_F(ArchiveCompression, WithoutMemoryNothingIsLeftBehind) {
    qvtest::WriteFile(directory_ / "f", Prose(300));
    const Owned path = PathString(directory_ / "f");
    const qvtest::LogCapture log;  // families below say that they could not allocate
    ASSERT_EQ(New(options_.Get()), QVNoErr);
    std::size_t items = 0;
    qvtest::FailEachAllocation(
        [&] { items += QVArchiveAddFile(archive_.Get(), path.Get(), nullptr) == QVNoErr; });
    const std::vector<ArchiveItem> stored = Items();
    EXPECT_EQ(stored.size(), items);
    for (const ArchiveItem& item : stored)
        EXPECT_EQ(item.body, CompressedByTheModel(Prose(300)));
    ExpectDirectoryHolds(2);
}

}  // namespace

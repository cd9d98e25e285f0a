#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDeflate.h>
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVStream.h>
#include <QVFoundation/QVString.h>

#include "codec/coder_inputs.h"
#include "codec/token_list.h"
#include "golden/golden_blocks.h"
#include "models/plain_block_encoder.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/failing_files.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace {

using qv::Owned;
using qvtest::Bytes;
using qvtest::Shape;
using qvtest::ShapedInput;

Owned MakeData(const Bytes& bytes) {
    return Owned{QVDataCreate(bytes.data(), static_cast<unsigned long>(bytes.size()))};
}

Bytes Contents(void* data) {
    const auto* bytes = static_cast<const std::uint8_t*>(QVDataGetImutableBuffer(data));
    return Bytes(bytes, bytes + QVDataGetSize(data));
}

Bytes FileContents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

Bytes Compress(const Bytes& bytes) {
    const Owned encoder{QVDeflateCreate()};
    const Owned input = MakeData(bytes);
    const Owned output{QVDataCreate(nullptr, 0)};
    const Owned source{QVStreamCreateWithMemory(input.Get())};
    const Owned destination{QVStreamCreateWithMemory(output.Get())};
    EXPECT_EQ(QVDeflateEncode(encoder.Get(), destination.Get(), source.Get()), 0);
    return Contents(output.Get());
}

TEST(Deflate, AnEmptySourceMakesNoOutput) {
    EXPECT_EQ(Compress({}), Bytes{});
    EXPECT_EQ(QVGetTypeID(Owned{QVDeflateCreate()}.Get()), QVTypeIDDeflate);
}

TEST(Deflate, EqualsTheGoldenFiles) {
    for (const qvtest::GoldenBlocks& golden : qvtest::kGoldenBlocks) {
        SCOPED_TRACE(golden.name);
        const Bytes expected = FileContents(std::string(GOLDEN_DIRECTORY "/") + golden.FileName());
        ASSERT_FALSE(expected.empty());
        EXPECT_EQ(Compress(golden.Input()), expected);
    }
}

TEST(Deflate, EqualsThePlainModelAroundTheChunkSize) {
    ShapedInput input(41);
    for (const std::size_t size : {1, 2, 3, 4, 32767, 32768, 32769, 40000, 65536}) {
        SCOPED_TRACE(size);
        const Bytes bytes = input.Make(Shape::kProse, size);
        EXPECT_EQ(Compress(bytes), model::Compress(bytes));
    }
}

TEST(Deflate, AHundredEqualBytesHaveAMatchLessTableOfOneClass) {
    const Bytes bytes(100, 'x');
    const Bytes block = Compress(bytes);
    EXPECT_EQ(block, model::Compress(bytes));
    // 3 literals and matches of 3, 4, ..., 13 bytes and one of the 9 left.
    EXPECT_EQ(block[0], 3 + 11 + 1);
    EXPECT_EQ(block[1], 0);
}

TEST(Deflate, BeginsAtTheSourcesMarker) {
    const Bytes bytes = ShapedInput(42).Make(Shape::kProse, 5000);
    const Owned encoder{QVDeflateCreate()};
    const Owned input = MakeData(bytes);
    const Owned output{QVDataCreate("before", 6)};
    const Owned source{QVStreamCreateWithMemory(input.Get())};
    const Owned destination{QVStreamCreateWithMemory(output.Get())};
    QVStreamSetMarker(source.Get(), 0, 4000);
    QVStreamSetMarker(destination.Get(), 1, 0);
    EXPECT_EQ(QVDeflateEncode(encoder.Get(), destination.Get(), source.Get()), 0);
    Bytes expected{'b', 'e', 'f', 'o', 'r', 'e'};
    const Bytes blocks = model::Compress(Bytes(bytes.begin() + 4000, bytes.end()));
    expected.insert(expected.end(), blocks.begin(), blocks.end());
    EXPECT_EQ(Contents(output.Get()), expected);
}

TEST(Deflate, NullAndEqualStreamsAreRefused) {
    const Owned encoder{QVDeflateCreate()};
    const Owned data = MakeData({1, 2, 3});
    const Owned stream{QVStreamCreateWithMemory(data.Get())};
    const Owned other{QVStreamCreateWithMemory(data.Get())};
    EXPECT_EQ(QVDeflateEncode(encoder.Get(), stream.Get(), stream.Get()), QVErrParam);
    EXPECT_EQ(QVDeflateEncode(encoder.Get(), stream.Get(), nullptr), QVErrParam);
    EXPECT_EQ(QVDeflateEncode(encoder.Get(), nullptr, stream.Get()), QVErrParam);
    EXPECT_EQ(QVDeflateEncode(nullptr, stream.Get(), other.Get()), QVErrParam);
    EXPECT_EQ(Contents(data.Get()), (Bytes{1, 2, 3}));
}

TEST(Deflate, ASourceThatYieldsNothingEndsWithTheExactReadsCode) {
    // A data stream announces its Data's size and reads none of it.
    const Owned encoder{QVDeflateCreate()};
    const Owned input = MakeData({1, 2, 3});
    const Owned output{QVDataCreate(nullptr, 0)};
    const Owned source{QVStreamCreateWithData(input.Get())};
    const Owned destination{QVStreamCreateWithMemory(output.Get())};
    EXPECT_EQ(QVDeflateEncode(encoder.Get(), destination.Get(), source.Get()), QVErrReadShort);
    EXPECT_EQ(Contents(output.Get()), Bytes{});
}

// ---- Files

Owned OpenFile(const std::string& path, bool forWriting) {
    const Owned text{QVStringCreateWithCString(path.c_str())};
    Owned file{QVFileCreate()};
    QVFileSetPath(file.Get(), text.Get());
    const int code = forWriting ? QVFileOpenForWriting(file.Get()) : QVFileOpenForReading(file.Get());
    return code == 0 ? std::move(file) : Owned{};
}

int CompressFile(const std::string& from, const std::string& to) {
    const Owned input = OpenFile(from, false);
    const Owned output = OpenFile(to, true);
    if (!input || !output) return QVErrFileNotFound;
    const Owned encoder{QVDeflateCreate()};
    const Owned source{QVStreamCreateWithFile(input.Get())};
    const Owned destination{QVStreamCreateWithFile(output.Get())};
    const int code = QVDeflateEncode(encoder.Get(), destination.Get(), source.Get());
    const int closed = QVFileClose(output.Get());
    return code != 0 ? code : closed;
}

class DeflateFiles : public testing::Test {
protected:
    DeflateFiles() { qvtest::WriteFile(from_, std::string(bytes_.begin(), bytes_.end())); }

    const qvtest::TemporaryDirectory directory_;
    const std::string from_ = directory_ / "source";
    const std::string to_ = directory_ / "compressed";
    const Bytes bytes_ = ShapedInput(43).Make(Shape::kRecords, 40000);
};

TEST_F(DeflateFiles, FileToFile) {
    EXPECT_EQ(CompressFile(from_, to_), 0);
    EXPECT_EQ(FileContents(to_), model::Compress(bytes_));
}

TEST_F(DeflateFiles, EveryFailingCallIsReported) {
    const Bytes expected = model::Compress(bytes_);
    int failedRuns = 0;
    const std::size_t failures =
        qvtest::FailEachFileCall(qv::FileError::kOther, [&](qvtest::FailingFiles& files) {
            const int code = CompressFile(from_, to_);
            if (code == 0) {
                EXPECT_EQ(FileContents(to_), expected);
            }
            if (code != 0) ++failedRuns;
            EXPECT_EQ(files.OpenDescriptors(), 0);
        });
    EXPECT_GT(failures, 10u);
    EXPECT_GT(failedRuns, 10);
}

TEST_F(DeflateFiles, AFullDiskIsReportedWhereverItHappens) {
    const std::size_t needed = model::Compress(bytes_).size();
    for (const std::size_t room :
         {std::size_t{0}, std::size_t{1}, std::size_t{1024}, needed / 2, needed - 1, needed}) {
        SCOPED_TRACE(room);
        std::filesystem::remove(to_);
        qvtest::FailingFiles files;
        files.LimitDisk(room);
        EXPECT_EQ(CompressFile(from_, to_) == 0, room == needed);
    }
}

TEST_F(DeflateFiles, ShortTransfersChangeNothing) {
    qvtest::FailingFiles files;
    files.LimitTransfers(1000);
    EXPECT_EQ(CompressFile(from_, to_), 0);
    EXPECT_EQ(FileContents(to_), model::Compress(bytes_));
}

TEST_F(DeflateFiles, ACallTakesLessThanAMebibyteBeyondTheTokenList) {
    constexpr std::size_t kMost = 1024 * 1024 + sizeof(qv::TokenList);
    for (const Shape shape : qvtest::kAllShapes) {
        const Bytes bytes = ShapedInput(47).Make(shape, 70'000);
        qvtest::WriteFile(from_, std::string(bytes.begin(), bytes.end()));
        EXPECT_LT(qvtest::PeakBytes([&] { EXPECT_EQ(CompressFile(from_, to_), 0); }), kMost);
    }
}

TEST(Deflate, WithoutMemoryItEndsAndNothingLeaks) {
    const qvtest::LogCapture log;
    const Bytes bytes = ShapedInput(44).Make(Shape::kProse, 500);
    const Bytes expected = model::Compress(bytes);
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        const Owned encoder{QVDeflateCreate()};
        const Owned input{QVDataCreate(bytes.data(), static_cast<unsigned long>(bytes.size()))};
        const Owned output{QVDataCreate(nullptr, 0)};
        const Owned source{QVStreamCreateWithMemory(input.Get())};
        const Owned destination{QVStreamCreateWithMemory(output.Get())};
        const int code = QVDeflateEncode(encoder.Get(), destination.Get(), source.Get());
        if (code == 0) {
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(),
                                   static_cast<const std::uint8_t*>(QVDataGetImutableBuffer(output.Get()))));
        } else {
            EXPECT_TRUE(code == QVErrMemory || code == QVErrParam);
        }
    });
    EXPECT_GT(failures, 10u);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

}  // namespace

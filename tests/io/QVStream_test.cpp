#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <signal.h>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVStream.h>

#include "io/QVCDataStream.h"
#include "io/QVFileStreamImpl.h"
#include "io/paths.h"
#include "models/stream_model.h"
#include "runtime/Handle.h"
#include "support/failing_allocator.h"
#include "support/failing_files.h"
#include "support/temporary_directory.h"

using qv::FileError;
using qv::FromHandle;
using qv::Owned;
using qvtest::FailingFiles;
using qvtest::FileAt;
using qvtest::FileOperation;
using qvtest::ReadFile;
using qvtest::TemporaryDirectory;
using qvtest::WriteFile;

namespace {

std::string Pattern(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>('a' + (i * 7 + i / 26) % 26);
    return bytes;
}

std::string BytesOf(void* data) {
    return {static_cast<const char*>(QVDataGetImutableBuffer(data)), QVDataGetSize(data)};
}

Owned DataOf(const std::string& bytes) {
    return Owned(QVDataCreate(bytes.data(), bytes.size()));
}

int Put(void* stream, const std::string& bytes, unsigned long* done = nullptr, bool exact = true) {
    return QVStreamPutBytes(stream, bytes.data(), bytes.size(), done, exact);
}

std::string Get(void* stream, unsigned long size, int* code = nullptr, bool exact = true) {
    std::string bytes(size, '?');
    unsigned long done = 0;
    const int result = QVStreamGetBytes(stream, bytes.data(), size, &done, exact);
    if (code != nullptr) *code = result;
    bytes.resize(done);
    return bytes;
}

// A file open for writing in a directory of its own, with a stream over it.
class OpenStream {
public:
    explicit OpenStream(const std::string& contents = "", bool forReading = false) : path(place / "file") {
        WriteFile(path, contents);
        file = FileAt(path);
        EXPECT_EQ(forReading ? QVFileOpenForReading(file.Get()) : QVFileOpenForWriting(file.Get()), QVNoErr);
        stream = Owned(QVStreamCreateWithFile(file.Get()));
    }
    [[nodiscard]] std::string OnDisk() const { return ReadFile(path); }

    const TemporaryDirectory place;
    const std::string path;
    Owned file;
    Owned stream;
};

}  // namespace

// ---- All streams

TEST(Stream, NullHandlesAreHarmless) {
    unsigned int word = 7;
    double real = 7;
    EXPECT_EQ(QVStreamCreateWithData(nullptr), nullptr);
    EXPECT_EQ(QVStreamCreateWithMemory(nullptr), nullptr);
    EXPECT_EQ(QVStreamGetBytes(nullptr, &word, 4, nullptr, 1), QVErrParam);
    EXPECT_EQ(QVStreamPutBytes(nullptr, &word, 4, nullptr, 1), QVErrParam);
    QVStreamSetMarker(nullptr, 0, 0);
    EXPECT_EQ(QVStreamGetMarker(nullptr), 0);
    EXPECT_EQ(QVStreamFlush(nullptr), QVErrParam);
    EXPECT_EQ(QVStreamGetSize(nullptr), 0ULL);
    EXPECT_EQ(QVStreamPutUInt8(nullptr, 1), QVErrParam);
    EXPECT_EQ(QVStreamPutUInt32(nullptr, 1), QVErrParam);
    EXPECT_EQ(QVStreamPutDouble(nullptr, 1), QVErrParam);
    EXPECT_EQ(QVStreamGetUInt32(nullptr, &word), QVErrParam);
    EXPECT_EQ(QVStreamGetDouble(nullptr, &real), QVErrParam);
    EXPECT_EQ(word, 7U);
    EXPECT_EQ(real, 7);
}

TEST(Stream, ABufferIsNeededForASize) {
    OpenStream over("0123456789");
    const Owned data = DataOf("0123456789");
    const Owned dataStream(QVStreamCreateWithData(data.Get()));
    const Owned memoryStream(QVStreamCreateWithMemory(data.Get()));
    for (void* stream : {over.stream.Get(), dataStream.Get(), memoryStream.Get()}) {
        EXPECT_EQ(QVStreamGetBytes(stream, nullptr, 1, nullptr, 1), QVErrParam);
        EXPECT_EQ(QVStreamPutBytes(stream, nullptr, 1, nullptr, 1), QVErrParam);
        EXPECT_EQ(QVStreamGetBytes(stream, nullptr, 0, nullptr, 1), QVNoErr);
        EXPECT_EQ(QVStreamPutBytes(stream, nullptr, 0, nullptr, 1), QVNoErr);
        EXPECT_EQ(QVStreamGetUInt32(stream, nullptr), QVErrParam);
        EXPECT_EQ(QVStreamGetMarker(stream), 0);
    }
}

TEST(Stream, HoldsItsStore) {
    OpenStream over;
    const Owned data = DataOf("");
    EXPECT_EQ(QVGetRetainCount(over.file.Get()), 2UL);
    {
        const Owned dataStream(QVStreamCreateWithData(data.Get()));
        const Owned memoryStream(QVStreamCreateWithMemory(data.Get()));
        EXPECT_EQ(QVGetRetainCount(data.Get()), 3UL);
        EXPECT_EQ(QVGetTypeID(over.stream.Get()), QVTypeIDFileStream);
        EXPECT_EQ(QVGetTypeID(dataStream.Get()), QVTypeIDDataStream);
        EXPECT_EQ(QVGetTypeID(memoryStream.Get()), QVTypeIDUnregistered);
    }
    EXPECT_EQ(QVGetRetainCount(data.Get()), 1UL);
    over.stream.Reset();
    EXPECT_EQ(QVGetRetainCount(over.file.Get()), 1UL);
}

TEST(Stream, CreationMayRunOutOfMemory) {
    OpenStream over;
    const Owned data = DataOf("");
    void* const file = over.file.Get();
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        const Owned streams[] = {Owned(QVStreamCreateWithFile(file)),
                                 Owned(QVStreamCreateWithData(data.Get())),
                                 Owned(QVStreamCreateWithMemory(data.Get()))};
    });
    EXPECT_GE(failures, 3U);
    EXPECT_EQ(QVGetRetainCount(data.Get()), 1UL);
    EXPECT_EQ(QVGetRetainCount(file), 2UL);
}

// Every kind of stream gives back what was put, type by type, in native byte order.
TEST(StreamTypes, GoThroughEveryStreamUnchanged) {
    OpenStream over;
    const Owned data = DataOf("");
    const Owned memoryStream(QVStreamCreateWithMemory(data.Get()));
    for (void* stream : {over.stream.Get(), memoryStream.Get()}) {
        for (int round = 0; round < 100; ++round) {  // 4200 bytes: values lie across the buffer's ends
            EXPECT_EQ(QVStreamPutUInt8(stream, 0xF1), QVNoErr);
            EXPECT_EQ(QVStreamPutSInt8(stream, -2), QVNoErr);
            EXPECT_EQ(QVStreamPutUInt16(stream, 0xF123), QVNoErr);
            EXPECT_EQ(QVStreamPutSInt16(stream, -3000), QVNoErr);
            EXPECT_EQ(QVStreamPutUInt32(stream, 0xF1234567), QVNoErr);
            EXPECT_EQ(QVStreamPutSInt32(stream, -300000), QVNoErr);
            EXPECT_EQ(QVStreamPutUInt64(stream, 0xF123456789ABCDEF), QVNoErr);
            EXPECT_EQ(QVStreamPutSInt64(stream, -(1LL << 40)), QVNoErr);
            EXPECT_EQ(QVStreamPutFloat(stream, 1.5F), QVNoErr);
            EXPECT_EQ(QVStreamPutDouble(stream, -round / 7.0), QVNoErr);
        }
        EXPECT_EQ(QVStreamGetMarker(stream), 4200);
        QVStreamFlush(stream);
        QVStreamSetMarker(stream, 0, 0);
        for (int round = 0; round < 100; ++round) {
            unsigned char u8 = 0;
            signed char s8 = 0;
            unsigned short u16 = 0;
            short s16 = 0;
            unsigned int u32 = 0;
            int s32 = 0;
            unsigned long long u64 = 0;
            long long s64 = 0;
            float single = 0;
            double real = 0;
            EXPECT_EQ(QVStreamGetUInt8(stream, &u8), QVNoErr);
            EXPECT_EQ(QVStreamGetSInt8(stream, &s8), QVNoErr);
            EXPECT_EQ(QVStreamGetUInt16(stream, &u16), QVNoErr);
            EXPECT_EQ(QVStreamGetSInt16(stream, &s16), QVNoErr);
            EXPECT_EQ(QVStreamGetUInt32(stream, &u32), QVNoErr);
            EXPECT_EQ(QVStreamGetSInt32(stream, &s32), QVNoErr);
            EXPECT_EQ(QVStreamGetUInt64(stream, &u64), QVNoErr);
            EXPECT_EQ(QVStreamGetSInt64(stream, &s64), QVNoErr);
            EXPECT_EQ(QVStreamGetFloat(stream, &single), QVNoErr);
            EXPECT_EQ(QVStreamGetDouble(stream, &real), QVNoErr);
            EXPECT_EQ(u8, 0xF1);
            EXPECT_EQ(s8, -2);
            EXPECT_EQ(u16, 0xF123);
            EXPECT_EQ(s16, -3000);
            EXPECT_EQ(u32, 0xF1234567);
            EXPECT_EQ(s32, -300000);
            EXPECT_EQ(u64, 0xF123456789ABCDEF);
            EXPECT_EQ(s64, -(1LL << 40));
            EXPECT_EQ(single, 1.5F);
            EXPECT_EQ(real, -round / 7.0);
        }
    }
    EXPECT_EQ(over.OnDisk(), BytesOf(data.Get()));
}

TEST(StreamTypes, LieInNativeByteOrder) {
    OpenStream over;
    EXPECT_EQ(QVStreamPutUInt32(over.stream.Get(), 0x11223344), QVNoErr);
    EXPECT_EQ(QVStreamFlush(over.stream.Get()), QVNoErr);
    const unsigned int value = 0x11223344;
    EXPECT_EQ(over.OnDisk(), std::string(reinterpret_cast<const char*>(&value), 4));
}

TEST(StreamTypes, FloatsKeepTheirBits) {
    OpenStream over;
    void* stream = over.stream.Get();
    const float floats[] = {-0.0F, std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::denorm_min(), std::nanf("3")};
    for (const float f : floats)
        EXPECT_EQ(QVStreamPutFloat(stream, f), QVNoErr);
    EXPECT_EQ(QVStreamFlush(stream), QVNoErr);
    EXPECT_EQ(over.OnDisk(), std::string(reinterpret_cast<const char*>(floats), sizeof floats));
}

TEST(StreamTypes, ShortReadsLeaveTheVariableAlone) {
    OpenStream over("abc");
    const Owned data = DataOf("abc");
    const Owned memoryStream(QVStreamCreateWithMemory(data.Get()));
    const struct {
        void* stream;
        int code;
    } rows[] = {{over.stream.Get(), QVErrEOF}, {memoryStream.Get(), QVErrReadShort}};
    for (const auto& row : rows) {
        unsigned int word = 77;
        EXPECT_EQ(QVStreamGetUInt32(row.stream, &word), row.code);
        EXPECT_EQ(word, 77U);
        EXPECT_EQ(QVStreamGetMarker(row.stream), 3);
        unsigned char byte = 77;
        EXPECT_EQ(QVStreamGetUInt8(row.stream, &byte), row.code);
        EXPECT_EQ(byte, 77);
    }
}

// ---- File streams

TEST(FileStream, StartsAtTheBeginning) {
    OpenStream over("0123456789");
    QVFileSetMarker(over.file.Get(), 0, 5);
    over.stream = Owned(QVStreamCreateWithFile(over.file.Get()));
    EXPECT_EQ(QVStreamGetMarker(over.stream.Get()), 0);
    EXPECT_EQ(QVStreamGetSize(over.stream.Get()), 10ULL);
    EXPECT_EQ(Get(over.stream.Get(), 4), "0123");
    EXPECT_EQ(QVStreamGetMarker(over.stream.Get()), 4);
}

TEST(FileStream, ALongPutPassesTheBufferBy) {
    OpenStream over;
    const std::string bytes = Pattern(1500);
    unsigned long done = 0;
    EXPECT_EQ(Put(over.stream.Get(), bytes, &done), QVNoErr);
    EXPECT_EQ(done, 1500UL);
    EXPECT_EQ(QVStreamGetMarker(over.stream.Get()), 1500);
    EXPECT_EQ(QVFileGetMarker(over.file.Get()), 1500ULL);
    EXPECT_EQ(over.OnDisk(), bytes);  // no flush needed
}

TEST(FileStream, ReadingPastTheEndIsAnErrorOnlyWhenExact) {
    OpenStream over("0123456789");
    int code = 1;
    EXPECT_EQ(Get(over.stream.Get(), 20, &code, false), "0123456789");
    EXPECT_EQ(code, QVNoErr);
    QVStreamSetMarker(over.stream.Get(), 0, 6);
    EXPECT_EQ(Get(over.stream.Get(), 20, &code, true), "6789");
    EXPECT_EQ(code, QVErrEOF);
    EXPECT_EQ(Get(over.stream.Get(), 1, &code, true), "");
    EXPECT_EQ(code, QVErrEOF);
    EXPECT_EQ(Get(over.stream.Get(), 1, &code, false), "");
    EXPECT_EQ(code, QVNoErr);
}

TEST(FileStream, ReleasingWithoutAFlushLosesTheBuffer) {
    OpenStream over("old");
    EXPECT_EQ(Put(over.stream.Get(), "new bytes"), QVNoErr);
    over.stream.Reset();
    EXPECT_EQ(over.OnDisk(), "old");
}

TEST(FileStream, SetMarkerKnowsThreeOrigins) {
    OpenStream over(Pattern(3000));
    void* stream = over.stream.Get();
    QVStreamSetMarker(stream, 0, 2000);
    EXPECT_EQ(QVStreamGetMarker(stream), 2000);
    EXPECT_EQ(Get(stream, 10), Pattern(3000).substr(2000, 10));
    QVStreamSetMarker(stream, 2, -10);
    EXPECT_EQ(QVStreamGetMarker(stream), 2000);
    QVStreamSetMarker(stream, 1, -5);
    EXPECT_EQ(Get(stream, 5), Pattern(3000).substr(2995));
}

TEST(FileStream, ARefusedPlaceGoesOnBehindTheBuffer) {
    OpenStream over(Pattern(3000));
    void* stream = over.stream.Get();
    for (const auto& [origin, offset] : {std::pair{3, 0LL}, std::pair{0, -1LL}, std::pair{2, -5000LL}}) {
        QVStreamSetMarker(stream, 0, 0);
        EXPECT_EQ(Get(stream, 10), Pattern(10));
        QVStreamSetMarker(stream, origin, offset);
        EXPECT_EQ(QVStreamGetMarker(stream), 1024);
    }
    QVStreamSetMarker(stream, 0, 1);
    QVStreamSetMarker(stream, 2, std::numeric_limits<long long>::max());
    EXPECT_EQ(QVStreamGetMarker(stream), 1025);
}

TEST(FileStream, ALongReadRightAfterAWriteEndsBehindTheFlushedBuffer) {
    OpenStream over(Pattern(100));
    void* stream = over.stream.Get();
    QVStreamSetMarker(stream, 1, 0);
    EXPECT_EQ(Put(stream, "abcd"), QVNoErr);
    QVFileSetSize(over.file.Get(), 200);
    // Zeros come from the file as it stands; the four bytes go there afterwards.
    EXPECT_EQ(Get(stream, 50), std::string(50, '\0'));
    EXPECT_EQ(QVStreamGetMarker(stream), 104);
    EXPECT_EQ(over.OnDisk(), Pattern(100) + "abcd" + std::string(96, '\0'));
}

TEST(FileStream, MarkersReachBeyondFourGibibytes) {
    OpenStream over;
    void* stream = over.stream.Get();
    constexpr long long kFar = (5LL << 30) + 3;
    ASSERT_EQ(QVFileSetSize(over.file.Get(), kFar), QVNoErr);
    QVStreamSetMarker(stream, 1, 0);
    EXPECT_EQ(QVStreamGetMarker(stream), kFar);
    EXPECT_EQ(QVStreamPutUInt64(stream, 0x1122334455667788), QVNoErr);
    EXPECT_EQ(QVStreamFlush(stream), QVNoErr);
    EXPECT_EQ(QVStreamGetSize(stream), static_cast<unsigned long long>(kFar) + 8);
    QVStreamSetMarker(stream, 2, -8);
    unsigned long long value = 0;
    EXPECT_EQ(QVStreamGetUInt64(stream, &value), QVNoErr);
    EXPECT_EQ(value, 0x1122334455667788ULL);
}

TEST(FileStream, WithoutAFileThereIsNothing) {
    const Owned stream(QVStreamCreateWithFile(nullptr));
    ASSERT_TRUE(stream);
    unsigned int word = 7;
    unsigned long done = 9;
    EXPECT_EQ(QVStreamGetBytes(stream.Get(), &word, 4, &done, 1), QVErrFileNotFound);
    EXPECT_EQ(done, 0UL);
    EXPECT_EQ(QVStreamPutBytes(stream.Get(), &word, 4, nullptr, 1), QVErrFileNotFound);
    EXPECT_EQ(QVStreamPutUInt32(stream.Get(), 1), QVErrFileNotFound);
    EXPECT_EQ(QVStreamGetUInt32(stream.Get(), &word), QVErrFileNotFound);
    EXPECT_EQ(word, 7U);
    QVStreamSetMarker(stream.Get(), 0, 5);
    EXPECT_EQ(QVStreamGetMarker(stream.Get()), 0);
    EXPECT_EQ(QVStreamFlush(stream.Get()), QVNoErr);
    EXPECT_EQ(QVStreamGetSize(stream.Get()), 0ULL);
}

TEST(FileStream, AClosedFileIsAnError) {
    OpenStream over("0123456789");
    void* stream = over.stream.Get();
    ASSERT_EQ(QVFileClose(over.file.Get()), QVNoErr);
    int code = 0;
    EXPECT_EQ(Get(stream, 20, &code, false), "0123456789");  // the buffer was filled before
    EXPECT_EQ(code, QVErrFileNotFound);
    EXPECT_EQ(Put(stream, "abc"), QVNoErr);
    EXPECT_EQ(QVStreamFlush(stream), QVErrFileNotFound);
    EXPECT_EQ(Put(stream, Pattern(2000)), QVErrFileNotFound);
    EXPECT_EQ(QVStreamGetSize(stream), 0ULL);
}

TEST(FileStream, AFileOpenForReadingIsNeverWritten) {
    OpenStream over(Pattern(3000), true);
    void* stream = over.stream.Get();
    EXPECT_EQ(Get(stream, 10), Pattern(10));
    EXPECT_EQ(QVStreamFlush(stream), QVNoErr);
    EXPECT_EQ(QVStreamGetMarker(stream), 10);
    EXPECT_EQ(Put(stream, "xyz"), QVNoErr);
    EXPECT_EQ(QVStreamFlush(stream), QVNoErr);
    EXPECT_EQ(QVFileGetMarker(over.file.Get()), 1024ULL);
    EXPECT_EQ(Put(stream, Pattern(2000)), QVErrPermission);
    EXPECT_EQ(QVStreamFlush(stream), QVNoErr);
    EXPECT_EQ(over.OnDisk(), Pattern(3000));
}

TEST(FileStream, GoesOverToAnotherFile) {
    OpenStream over("first file");
    OpenStream other("other file");
    void* stream = over.stream.Get();
    auto* impl = FromHandle<QVFileStreamImpl>(stream);
    EXPECT_EQ(Put(stream, "FIRST"), QVNoErr);
    QVFileSetMarker(other.file.Get(), 0, 5);
    EXPECT_EQ(impl->SetFile(other.file.Get()), QVNoErr);
    EXPECT_EQ(over.OnDisk(), "FIRST file");
    EXPECT_EQ(QVGetRetainCount(over.file.Get()), 1UL);
    EXPECT_EQ(QVFileGetMarker(other.file.Get()), 0ULL);
    EXPECT_EQ(QVStreamGetMarker(stream), 5);  // buffer and marker stay
    EXPECT_EQ(Get(stream, 5), " file");
    EXPECT_EQ(impl->SetFile(nullptr), QVNoErr);
    EXPECT_EQ(QVStreamGetMarker(stream), 0);
    EXPECT_EQ(QVStreamPutUInt8(stream, 1), QVErrFileNotFound);
}

TEST(FileStream, AppendingReadsNothingBehindTheEnd) {
    FailingFiles files;
    OpenStream over;
    const std::size_t readsBefore = files.Calls(FileOperation::kReadAt);
    for (unsigned int i = 0; i < 4096; ++i)
        ASSERT_EQ(QVStreamPutUInt32(over.stream.Get(), i), QVNoErr);
    EXPECT_EQ(files.Calls(FileOperation::kReadAt), readsBefore);
    EXPECT_EQ(files.Calls(FileOperation::kWriteAt), 16U);
    EXPECT_EQ(QVStreamGetMarker(over.stream.Get()), 16384);
}

TEST(FileStream, OverwritingKeepsWhatLiesBehind) {
    OpenStream over(Pattern(3000));
    for (int i = 0; i < 300; ++i)
        ASSERT_EQ(QVStreamPutUInt32(over.stream.Get(), 0x2D2D2D2D), QVNoErr);
    EXPECT_EQ(QVStreamFlush(over.stream.Get()), QVNoErr);
    EXPECT_EQ(over.OnDisk(), std::string(1200, '-') + Pattern(3000).substr(1200));
}

// Random operations, step by step against the model; file contents and the file's own marker too.
TEST(FileStream, FollowsTheModel) {
    for (const unsigned seed : {1U, 2U, 3U, 4U, 5U, 6U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const auto pick = [&](std::size_t bound) { return static_cast<std::size_t>(random() % bound); };
        const bool isReadOnly = seed == 6;
        const std::string start = Pattern(pick(5000));
        OpenStream over(start, isReadOnly);
        void* stream = over.stream.Get();
        qvmodel::File file{{start.begin(), start.end()}, 0, isReadOnly};
        qvmodel::FileStream model(file);
        unsigned char bytes[5000];
        unsigned char expected[5000];
        for (int step = 0; step < 20'000; ++step) {
            const std::size_t sizes[] = {pick(9), pick(200), 1000 + pick(60), pick(4000)};
            const std::size_t size = sizes[pick(10) < 8 ? pick(2) : 2 + pick(2)];
            const bool exact = pick(2) == 0;
            unsigned long done = 12345;
            std::size_t modelDone = 12345;
            const std::size_t operation = pick(100);
            if (operation < 30) {
                for (std::size_t i = 0; i < size; ++i)
                    bytes[i] = static_cast<unsigned char>(random());
                ASSERT_EQ(QVStreamPutBytes(stream, bytes, size, &done, exact),
                          model.Put(bytes, size, modelDone, exact))
                    << step;
                ASSERT_EQ(done, modelDone) << step;
            } else if (operation < 45) {
                const auto value = static_cast<unsigned int>(random());
                ASSERT_EQ(QVStreamPutUInt32(stream, value),
                          model.Put(reinterpret_cast<const unsigned char*>(&value), 4, modelDone, true))
                    << step;
            } else if (operation < 70) {
                ASSERT_EQ(QVStreamGetBytes(stream, bytes, size, &done, exact),
                          model.Get(expected, size, modelDone, exact))
                    << step;
                ASSERT_EQ(done, modelDone) << step;
                ASSERT_EQ(std::memcmp(bytes, expected, done), 0) << step;
            } else if (operation < 85) {
                unsigned long long value = 0;
                unsigned long long wanted = 0;
                const int code = QVStreamGetUInt64(stream, &value);
                ASSERT_EQ(code, model.Get(expected, 8, modelDone, true)) << step;
                if (code == QVNoErr) std::memcpy(&wanted, expected, 8);
                ASSERT_EQ(value, wanted) << step;
            } else if (operation < 93) {
                const int origin = static_cast<int>(pick(5)) - 1;
                const auto offset = static_cast<long long>(pick(6000)) - (origin == 0 ? 200 : 3000);
                QVStreamSetMarker(stream, origin, offset);
                model.SetMarker(origin, offset);
            } else if (operation < 97) {
                ASSERT_EQ(QVStreamFlush(stream), model.Flush()) << step;
            } else if (operation < 98 && !isReadOnly) {
                const std::size_t newSize = pick(6000);
                ASSERT_EQ(QVFileSetSize(over.file.Get(), newSize), QVNoErr);
                file.bytes.resize(newSize);
            } else if (operation < 99) {
                const auto offset = static_cast<long long>(pick(6000));
                ASSERT_EQ(QVFileSetMarker(over.file.Get(), 0, offset), file.SetMarker(0, offset));
            }
            ASSERT_EQ(QVStreamGetMarker(stream), model.GetMarker()) << step;
            ASSERT_EQ(QVFileGetMarker(over.file.Get()), static_cast<unsigned long long>(file.marker)) << step;
            if (step % 50 == 0) {
                ASSERT_EQ(over.OnDisk(), std::string(file.bytes.begin(), file.bytes.end())) << step;
            }
            if (file.bytes.size() > 100'000) {
                ASSERT_EQ(isReadOnly ? QVNoErr : QVFileSetSize(over.file.Get(), 100), QVNoErr);
                file.bytes.resize(100);
            }
        }
    }
}

TEST(FileStream, ShortTransfersOfTheSystemChangeNothing) {
    FailingFiles files;
    files.LimitTransfers(100);
    OpenStream over;
    const std::string bytes = Pattern(5000);
    EXPECT_EQ(Put(over.stream.Get(), bytes), QVNoErr);
    EXPECT_EQ(QVStreamFlush(over.stream.Get()), QVNoErr);
    QVStreamSetMarker(over.stream.Get(), 0, 0);
    EXPECT_EQ(Get(over.stream.Get(), 5000), bytes);
}

TEST(FileStreamLostWrite, IsToldByTheNextFlushOnce) {
    FailingFiles files;
    OpenStream over;
    void* stream = over.stream.Get();
    files.LimitDisk(500);
    for (unsigned int i = 0; i < 256; ++i)
        EXPECT_EQ(QVStreamPutUInt32(stream, i), QVNoErr);
    EXPECT_EQ(over.OnDisk().size(), 500U);
    EXPECT_EQ(QVStreamFlush(stream), QVErrIO);
    EXPECT_EQ(QVStreamFlush(stream), QVNoErr);
}

TEST(FileStreamLostWrite, IsToldByTheFlushThatMeetsIt) {
    FailingFiles files;
    OpenStream over;
    void* stream = over.stream.Get();
    EXPECT_EQ(Put(stream, "abcdef"), QVNoErr);
    files.LimitDisk(0);
    EXPECT_EQ(QVStreamFlush(stream), QVErrIO);
    files.LimitDisk(1000);
    EXPECT_EQ(QVStreamFlush(stream), QVNoErr);  // the buffer is still there
    EXPECT_EQ(over.OnDisk(), "abcdef");
}

TEST(FileStreamLostWrite, OfMovingAndReadingIsToldToo) {
    for (const bool byMoving : {true, false}) {
        FailingFiles files;
        OpenStream over;
        void* stream = over.stream.Get();
        EXPECT_EQ(Put(stream, "abcdef"), QVNoErr);
        files.Fail(FileOperation::kWriteAt, FileError::kPermission);
        if (byMoving) {
            QVStreamSetMarker(stream, 0, 0);
        } else {
            EXPECT_EQ(Get(stream, 1, nullptr, false), "");
        }
        EXPECT_TRUE(files.HasFailed());
        EXPECT_EQ(QVStreamFlush(stream), QVErrPermission);
        EXPECT_EQ(QVStreamFlush(stream), QVNoErr);
        EXPECT_EQ(over.OnDisk(), "");
    }
}

TEST(FileStreamLostWrite, OfBytesThatPassedTheBufferByIsToldAtOnce) {
    FailingFiles files;
    OpenStream over;
    void* stream = over.stream.Get();
    files.LimitDisk(1200);
    unsigned long done = 0;
    EXPECT_EQ(Put(stream, Pattern(1500), &done), QVErrIO);
    EXPECT_EQ(done, 1024UL);
    EXPECT_EQ(QVStreamFlush(stream), QVNoErr);
    EXPECT_EQ(over.OnDisk(), Pattern(1200));
}

TEST(FileStreamLostWrite, OnARealFullFileSystemIsTold) {
    OpenStream over;
    void* stream = over.stream.Get();
    rlimit old;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto oldHandler = signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {2500, old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    for (unsigned int i = 0; i < 1000; ++i)
        EXPECT_EQ(QVStreamPutUInt32(stream, i), QVNoErr);
    const int code = QVStreamFlush(stream);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
    signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(code, QVErrIO);
}

TEST(FileStream, EveryFileSystemCallMayFail) {
    const TemporaryDirectory place;
    const std::string path = place / "file";
    const std::size_t failures = qvtest::FailEachFileCall(FileError::kOther, [&](FailingFiles& files) {
        {
            WriteFile(path, Pattern(3000));
            const Owned file = FileAt(path);
            if (QVFileOpenForWriting(file.Get()) == QVNoErr) {
                const Owned stream(QVStreamCreateWithFile(file.Get()));
                Put(stream.Get(), Pattern(1500));
                Get(stream.Get(), 700);
                QVStreamSetMarker(stream.Get(), 1, -100);
                Put(stream.Get(), Pattern(90));
                Get(stream.Get(), 200);
                QVStreamFlush(stream.Get());
                EXPECT_GE(QVStreamGetMarker(stream.Get()), 0);
            }
        }
        EXPECT_EQ(files.OpenDescriptors(), 0);
    });
    EXPECT_GT(failures, 20U);
}

// ---- Data streams

TEST(DataStream, CarriesABufferIntoTheData) {
    const Owned data = DataOf("0123456789");
    const Owned stream(QVStreamCreateWithData(data.Get()));
    EXPECT_EQ(Put(stream.Get(), "abc"), QVNoErr);
    EXPECT_EQ(QVStreamGetMarker(stream.Get()), 3);
    EXPECT_EQ(BytesOf(data.Get()), "0123456789");
    EXPECT_EQ(QVStreamFlush(stream.Get()), 1);
    EXPECT_EQ(BytesOf(data.Get()), "abc3456789");
    EXPECT_EQ(QVStreamGetSize(stream.Get()), 10ULL);
}

TEST(DataStream, AFlushMakesTheDataLonger) {
    const Owned data = DataOf("");
    const Owned stream(QVStreamCreateWithData(data.Get()));
    EXPECT_EQ(QVStreamFlush(stream.Get()), 0);  // nothing to flush
    EXPECT_EQ(QVStreamPutUInt32(stream.Get(), 0x64636261), QVNoErr);
    EXPECT_EQ(QVStreamFlush(stream.Get()), 1);
    EXPECT_EQ(BytesOf(data.Get()), "abcd");
}

TEST(DataStream, GivesNothingToRead) {
    const Owned data = DataOf("0123456789");
    const Owned stream(QVStreamCreateWithData(data.Get()));
    int code = 0;
    EXPECT_EQ(Get(stream.Get(), 5, &code, true), "");
    EXPECT_EQ(code, QVErrReadShort);
    EXPECT_EQ(Get(stream.Get(), 5, &code, false), "");
    EXPECT_EQ(code, QVNoErr);
}

TEST(DataStream, TheMarkerStaysInTheData) {
    const Owned data = DataOf("0123456789");
    const Owned stream(QVStreamCreateWithData(data.Get()));
    const struct {
        int origin;
        long long offset;
        long long marker;
    } rows[] = {{1, -4, 6},
                {0, 50, 10},
                {0, -3, 0},
                {0, 4, 4},
                {2, 3, 7},
                {2, -9, 0},
                {7, 5, 5},
                {-1, 2, 2},
                {1, 1, 10},
                {1, -99, 0},
                {0, std::numeric_limits<long long>::min(), 0},
                {1, std::numeric_limits<long long>::max(), 10}};
    for (const auto& row : rows) {
        QVStreamSetMarker(stream.Get(), row.origin, row.offset);
        EXPECT_EQ(QVStreamGetMarker(stream.Get()), row.marker) << row.origin << " " << row.offset;
    }
}

TEST(DataStream, AReadOnlyDataRefusesTheFlush) {
    char bytes[10] = {};
    const Owned data(QVDataCreateNoCopy(bytes, 10, 0));
    const Owned stream(QVStreamCreateWithData(data.Get()));
    EXPECT_EQ(Put(stream.Get(), "abc"), QVNoErr);
    EXPECT_EQ(QVStreamFlush(stream.Get()), 0);
    EXPECT_EQ(Put(stream.Get(), Pattern(2000)), QVErrMemory);
    EXPECT_EQ(std::string(bytes, 10), std::string(10, '\0'));
}

TEST(DataStream, NeverMakesTheDataLongerBehindTheBuffer) {
    const Owned data = DataOf(Pattern(1100));
    const Owned stream(QVStreamCreateWithData(data.Get()));
    unsigned long done = 0;
    EXPECT_EQ(Put(stream.Get(), std::string(3000, '-'), &done), QVErrWriteShort);
    EXPECT_EQ(done, 1024UL + 1100);
    EXPECT_EQ(QVDataGetSize(data.Get()), 1100UL);
}

TEST(DataStream, GoesOverToAnotherData) {
    const Owned data = DataOf("first");
    const Owned other = DataOf("other");
    const Owned stream(QVStreamCreateWithData(data.Get()));
    auto* impl = FromHandle<QVCDataStream>(stream.Get());
    EXPECT_EQ(Put(stream.Get(), "FI"), QVNoErr);
    impl->SetData(other.Get());
    EXPECT_EQ(BytesOf(data.Get()), "FIrst");
    EXPECT_EQ(QVGetRetainCount(data.Get()), 1UL);
    EXPECT_EQ(QVStreamFlush(stream.Get()), 1);
    EXPECT_EQ(BytesOf(other.Get()), "FIher");
    impl->SetData(nullptr);
    unsigned char byte = 7;
    unsigned long done = 9;
    EXPECT_EQ(QVStreamGetBytes(stream.Get(), &byte, 1, &done, 0), QVErrParam);
    EXPECT_EQ(done, 0UL);
    EXPECT_EQ(QVStreamPutUInt8(stream.Get(), 1), QVErrParam);
    EXPECT_EQ(QVStreamFlush(stream.Get()), 0);
    EXPECT_EQ(QVStreamGetSize(stream.Get()), 0ULL);
}

TEST(DataStream, FollowsTheModel) {
    for (const unsigned seed : {1U, 2U, 3U, 4U, 5U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const auto pick = [&](std::size_t bound) { return static_cast<std::size_t>(random() % bound); };
        unsigned char bytes[5000];
        unsigned char expected[5000];
        for (int round = 0; round < 500; ++round) {
            const std::string start = Pattern(pick(2) == 0 ? pick(3000) : pick(20));
            const Owned data = DataOf(start);
            const Owned stream(QVStreamCreateWithData(data.Get()));
            qvmodel::Bytes modelData(start.begin(), start.end());
            qvmodel::DataStream model(modelData);
            for (int step = 0; step < 60; ++step) {
                const std::size_t size = pick(10) == 0 ? pick(2000) : pick(40);
                const bool exact = pick(2) == 0;
                unsigned long done = 12345;
                std::size_t modelDone = 12345;
                const std::size_t operation = pick(100);
                if (operation < 40) {
                    for (std::size_t i = 0; i < size; ++i)
                        bytes[i] = static_cast<unsigned char>(random());
                    ASSERT_EQ(QVStreamPutBytes(stream.Get(), bytes, size, &done, exact),
                              model.Put(bytes, size, modelDone, exact))
                        << round << " " << step;
                    ASSERT_EQ(done, modelDone) << round << " " << step;
                } else if (operation < 65) {
                    const unsigned short value = static_cast<unsigned short>(random());
                    ASSERT_EQ(QVStreamPutUInt16(stream.Get(), value),
                              model.Put(reinterpret_cast<const unsigned char*>(&value), 2, modelDone, true))
                        << round << " " << step;
                } else if (operation < 80) {
                    ASSERT_EQ(QVStreamGetBytes(stream.Get(), bytes, size, &done, exact),
                              model.Get(expected, size, modelDone, exact))
                        << round << " " << step;
                    ASSERT_EQ(done, modelDone) << round << " " << step;
                } else if (operation < 90) {
                    const int origin = static_cast<int>(pick(5)) - 1;
                    const auto offset = static_cast<long long>(pick(4000)) - 2000;
                    QVStreamSetMarker(stream.Get(), origin, offset);
                    model.SetMarker(origin, offset);
                } else {
                    ASSERT_EQ(QVStreamFlush(stream.Get()), model.Flush()) << round << " " << step;
                }
                ASSERT_EQ(QVStreamGetMarker(stream.Get()), model.GetMarker()) << round << " " << step;
                ASSERT_EQ(BytesOf(data.Get()), std::string(modelData.begin(), modelData.end()))
                    << round << " " << step;
            }
        }
    }
}

// ---- Streams over memory

TEST(MemoryStream, ReadsOverwritesAndGrows) {
    const Owned data = DataOf("0123456789");
    const Owned stream(QVStreamCreateWithMemory(data.Get()));
    EXPECT_EQ(Get(stream.Get(), 4), "0123");
    EXPECT_EQ(Put(stream.Get(), "abc"), QVNoErr);
    EXPECT_EQ(BytesOf(data.Get()), "0123abc789");
    EXPECT_EQ(Get(stream.Get(), 1), "7");
    EXPECT_EQ(Put(stream.Get(), "wxyz"), QVNoErr);
    EXPECT_EQ(BytesOf(data.Get()), "0123abc7wxyz");
    EXPECT_EQ(QVStreamGetMarker(stream.Get()), 12);
    EXPECT_EQ(QVStreamGetSize(stream.Get()), 12ULL);
    EXPECT_EQ(QVStreamFlush(stream.Get()), QVNoErr);
    int code = 0;
    EXPECT_EQ(Get(stream.Get(), 1, &code), "");
    EXPECT_EQ(code, QVErrReadShort);
    EXPECT_EQ(Get(stream.Get(), 1, &code, false), "");
    EXPECT_EQ(code, QVNoErr);
}

TEST(MemoryStream, BytesThatTheDataCannotTakeDoNotCount) {
    char bytes[8] = {};
    unsigned long done = 9;
    const Owned readOnly(QVDataCreateNoCopy(bytes, 8, 0));
    const Owned readOnlyStream(QVStreamCreateWithMemory(readOnly.Get()));
    EXPECT_EQ(Put(readOnlyStream.Get(), "abc", &done), QVErrMemory);
    EXPECT_EQ(done, 0UL);
    const Owned fixed(QVDataCreateNoCopy(bytes, 8, 1));
    const Owned fixedStream(QVStreamCreateWithMemory(fixed.Get()));
    EXPECT_EQ(Put(fixedStream.Get(), "abcdefgh", &done), QVNoErr);
    EXPECT_EQ(done, 8UL);
    EXPECT_EQ(QVStreamPutUInt8(fixedStream.Get(), 1), QVErrMemory);
    EXPECT_EQ(QVStreamGetMarker(fixedStream.Get()), 8);
    EXPECT_EQ(std::string(bytes, 8), "abcdefgh");
}

TEST(MemoryStream, FollowsDataThatOthersChange) {
    const Owned data = DataOf("0123456789");
    const Owned stream(QVStreamCreateWithMemory(data.Get()));
    QVStreamSetMarker(stream.Get(), 0, 8);
    ASSERT_TRUE(QVDataSetSize(data.Get(), 4));
    EXPECT_EQ(Get(stream.Get(), 1, nullptr, false), "");
    EXPECT_EQ(Put(stream.Get(), "xy"), QVNoErr);
    EXPECT_EQ(BytesOf(data.Get()), "0123xy");
    EXPECT_EQ(QVStreamGetMarker(stream.Get()), 6);
    ASSERT_TRUE(QVDataAppendBuffer(data.Get(), "more", 4));
    EXPECT_EQ(Get(stream.Get(), 4), "more");
}

TEST(MemoryStream, PutsItsOwnBytes) {
    const Owned data = DataOf("0123456789");
    const Owned stream(QVStreamCreateWithMemory(data.Get()));
    QVStreamSetMarker(stream.Get(), 0, 5);
    EXPECT_EQ(QVStreamPutBytes(stream.Get(), QVDataGetImutableBuffer(data.Get()), 10, nullptr, 1), QVNoErr);
    EXPECT_EQ(BytesOf(data.Get()), "012340123456789");
}

TEST(MemoryStream, GrowthMayRunOutOfMemory) {
    const Owned data = DataOf("ab");
    const Owned stream(QVStreamCreateWithMemory(data.Get()));
    const std::string bytes = Pattern(5000);
    {
        const qvtest::FailAllocation failing(0, true);
        QVStreamSetMarker(stream.Get(), 1, 0);
        EXPECT_EQ(Put(stream.Get(), bytes), QVErrMemory);
    }
    EXPECT_EQ(BytesOf(data.Get()), "ab");
    EXPECT_EQ(Put(stream.Get(), bytes), QVNoErr);
    EXPECT_EQ(BytesOf(data.Get()), "ab" + bytes);
}

TEST(MemoryStream, FollowsTheModel) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const auto pick = [&](std::size_t bound) { return static_cast<std::size_t>(random() % bound); };
        const Owned data = DataOf("");
        const Owned stream(QVStreamCreateWithMemory(data.Get()));
        qvmodel::Bytes modelData;
        qvmodel::MemoryStream model(modelData);
        unsigned char bytes[3000];
        unsigned char expected[3000];
        for (int step = 0; step < 40'000; ++step) {
            const std::size_t size = pick(20) == 0 ? pick(3000) : pick(20);
            const bool exact = pick(2) == 0;
            unsigned long done = 12345;
            std::size_t modelDone = 12345;
            const std::size_t operation = pick(100);
            if (operation < 30) {
                for (std::size_t i = 0; i < size; ++i)
                    bytes[i] = static_cast<unsigned char>(random());
                ASSERT_EQ(QVStreamPutBytes(stream.Get(), bytes, size, &done, exact),
                          model.Put(bytes, size, modelDone));
                ASSERT_EQ(done, modelDone);
            } else if (operation < 50) {
                const auto value = static_cast<unsigned int>(random());
                ASSERT_EQ(QVStreamPutUInt32(stream.Get(), value),
                          model.Put(reinterpret_cast<const unsigned char*>(&value), 4, modelDone));
            } else if (operation < 75) {
                ASSERT_EQ(QVStreamGetBytes(stream.Get(), bytes, size, &done, exact),
                          model.Get(expected, size, modelDone, exact));
                ASSERT_EQ(done, modelDone);
                ASSERT_EQ(std::memcmp(bytes, expected, done), 0);
            } else if (operation < 95) {
                const int origin = static_cast<int>(pick(4));
                const auto offset = static_cast<long long>(pick(4000)) - 2000;
                QVStreamSetMarker(stream.Get(), origin, offset);
                model.SetMarker(origin, offset);
            } else {
                const std::size_t newSize = pick(2000);
                ASSERT_TRUE(QVDataSetSize(data.Get(), newSize));
                modelData.resize(newSize);
            }
            ASSERT_EQ(QVStreamGetMarker(stream.Get()), static_cast<long long>(model.marker)) << step;
            if (step % 20 == 0) {
                ASSERT_EQ(BytesOf(data.Get()), std::string(modelData.begin(), modelData.end())) << step;
            }
        }
    }
}

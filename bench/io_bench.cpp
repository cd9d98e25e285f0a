// Byte streams.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <unistd.h>

#include <QVFoundation/QVData.h>
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVStream.h>
#include <QVFoundation/QVString.h>

#include "bench.h"
#include "files.h"

namespace bench {

namespace {

constexpr std::uint32_t kValues = 1 << 16;

void* FileAt(const std::filesystem::path& path) {
    void* text = QVStringCreateWithCString(path.c_str());
    void* file = QVFileCreate();
    QVFileSetPath(file, text);
    QVRelease(text);
    return file;
}

// Up to 1024 bytes, which is what a stream over Data carries.
constexpr std::uint32_t kMemoryValues = 256;

void* PutToData() {
    void* data = QVDataCreate(nullptr, 0);
    void* stream = QVStreamCreateWithData(data);
    for (std::uint32_t i = 0; i < kMemoryValues; ++i)
        QVStreamPutUInt32(stream, i);
    QVStreamFlush(stream);
    QVRelease(stream);
    return data;
}

Comparison ComparePuttingToMemory() {
    void* data = PutToData();
    std::uint32_t expected[kMemoryValues];
    for (std::uint32_t i = 0; i < kMemoryValues; ++i)
        expected[i] = i;
    Require(QVDataGetSize(data) == sizeof(expected) &&
                std::memcmp(QVDataGetImutableBuffer(data), expected, sizeof(expected)) == 0,
            "other bytes");
    QVRelease(data);
    return {Times([] {
                void* made = PutToData();
                Keep(made);
                QVRelease(made);
            }),
            Times([] {
                auto* bytes = static_cast<char*>(std::malloc(kMemoryValues * 4 + 1));
                std::FILE* stream = fmemopen(bytes, kMemoryValues * 4 + 1, "w");
                for (std::uint32_t i = 0; i < kMemoryValues; ++i)
                    std::fwrite(&i, 4, 1, stream);
                std::fclose(stream);
                Keep(bytes[0]);
                std::free(bytes);
            }),
            "fwrite to fmemopen", kMemoryValues};
}

void PutToFile(const std::filesystem::path& path) {
    void* file = FileAt(path);
    Require(QVFileOpenForWriting(file) == QVNoErr, "the file does not open");
    void* stream = QVStreamCreateWithFile(file);
    for (std::uint32_t i = 0; i < kValues; ++i)
        QVStreamPutUInt32(stream, i);
    Require(QVStreamFlush(stream) == QVNoErr, "the file is not written");
    QVRelease(stream);
    QVFileClose(file);
    QVRelease(file);
}

void PutToStdio(const std::filesystem::path& path) {
    std::FILE* file = std::fopen(path.c_str(), "w");
    std::setvbuf(file, nullptr, _IOFBF, 1024);
    for (std::uint32_t i = 0; i < kValues; ++i)
        std::fwrite(&i, 4, 1, file);
    std::fclose(file);
}

constexpr const char* kStdio = "stdio, 1 KiB buffer";

Comparison ComparePuttingToFile() {
    const auto folder = std::make_shared<const TemporaryFolder>();
    // Each side begins with no file, so that both write at a file's end.
    const auto ours = folder->Path() / "ours";
    const auto peers = folder->Path() / "peers";
    PutToFile(ours);
    PutToStdio(peers);
    Require(ReadFile(ours) == ReadFile(peers), "other bytes");
    return {Times([folder, ours] {
                unlink(ours.c_str());
                PutToFile(ours);
            }),
            Times([folder, peers] {
                unlink(peers.c_str());
                PutToStdio(peers);
            }),
            kStdio, kValues};
}

std::uint32_t SumOfFile(const std::filesystem::path& path) {
    void* file = FileAt(path);
    Require(QVFileOpenForReading(file) == QVNoErr, "the file does not open");
    void* stream = QVStreamCreateWithFile(file);
    std::uint32_t sum = 0;
    for (std::uint32_t i = 0; i < kValues; ++i) {
        unsigned int value = 0;
        QVStreamGetUInt32(stream, &value);
        sum = sum * 31 + value;
    }
    QVRelease(stream);
    QVFileClose(file);
    QVRelease(file);
    return sum;
}

std::uint32_t SumOfStdio(const std::filesystem::path& path) {
    std::FILE* file = std::fopen(path.c_str(), "r");
    std::setvbuf(file, nullptr, _IOFBF, 1024);
    std::uint32_t sum = 0;
    for (std::uint32_t i = 0; i < kValues; ++i) {
        std::uint32_t value = 0;
        if (std::fread(&value, 4, 1, file) == 1) sum = sum * 31 + value;
    }
    std::fclose(file);
    return sum;
}

Comparison CompareGettingFromFile() {
    const auto folder = std::make_shared<const TemporaryFolder>();
    const auto path = folder->Path() / "values";
    PutToStdio(path);
    Require(SumOfFile(path) == SumOfStdio(path), "other values");
    return {Times([folder, path] { Keep(SumOfFile(path)); }),
            Times([folder, path] { Keep(SumOfStdio(path)); }), kStdio, kValues};
}

}  // namespace

void AddIoComparisons(Suite& suite) {
    suite.Add("stream.put4.memory", ComparePuttingToMemory);
    suite.Add("stream.put4.file", ComparePuttingToFile);
    suite.Add("stream.get4.file", CompareGettingFromFile);
}

}  // namespace bench

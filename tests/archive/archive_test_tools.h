// What the archive's tests share: an archive in a directory of its own, and short ways to fill and to read
// it.
#pragma once

#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <QVFoundation/QVArchive.h>
#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVObject.h>
#include <QVFoundation/QVString.h>

#include "models/archive_model.h"
#include "runtime/Owned.h"
#include "support/temporary_directory.h"

namespace qvtest {

inline qv::Owned PathString(const std::string& path) {
    return qv::Owned(QVStringCreateWithCString(path.c_str()));
}

inline qv::Owned NumberArray(const std::vector<std::uint32_t>& numbers) {
    qv::Owned array(QVArrayCreateWithCapacity(numbers.size()));
    for (const std::uint32_t number : numbers) {
        const qv::Owned object(QVNumberCreateWithUInt32(number));
        QVArrayAddObject(array.Get(), object.Get());
    }
    return array;
}

// Bytes without a pattern, the same in every run.
inline std::string NoiseBytes(std::size_t size, unsigned seed) {
    std::minstd_rand random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random() >> 8);
    }
    return bytes;
}

// The little-endian bytes of a number.
template <class Number>
std::string LittleEndian(Number number) {
    std::string bytes;
    for (std::size_t i = 0; i < sizeof number; ++i) {
        bytes += static_cast<char>(number >> 8 * i & 0xFF);
    }
    return bytes;
}

class ArchiveTest : public ::testing::Test {
protected:
    ArchiveTest() : archive_(QVArchiveCreate()), archivePath_(directory_ / "a.qva") {}

    int New(void* options = nullptr) {
        return QVArchiveNew(archive_.Get(), PathString(archivePath_).Get(), options);
    }
    int MakeRoot(unsigned long capacity) { return QVArchiveMakeRootDirectory(archive_.Get(), capacity); }

    // Writes a source file and adds it; answers its ID, or 0 when that failed.
    std::uint32_t AddBytes(const std::string& contents) {
        WriteFile(directory_ / "source", contents);
        unsigned int id = 0;
        EXPECT_EQ(AddPath(directory_ / "source", &id), QVNoErr);
        return id;
    }
    int AddPath(const std::string& path, unsigned int* id = nullptr) {
        return QVArchiveAddFile(archive_.Get(), PathString(path).Get(), id);
    }
    int Enter(std::uint32_t directory, const std::vector<std::uint32_t>& ids) {
        return QVArchiveAddItemIntoDirectory(archive_.Get(), directory, NumberArray(ids).Get());
    }

    [[nodiscard]] std::string Bytes() const { return ReadFile(archivePath_); }
    [[nodiscard]] std::vector<qvmodel::ArchiveItem> Items() const {
        const std::optional<qvmodel::Archive> archive = qvmodel::DecodeArchive(Bytes());
        EXPECT_TRUE(archive.has_value());
        return archive ? archive->items : std::vector<qvmodel::ArchiveItem>{};
    }
    // Replaces bytes of the archive on disk, as damage or somebody else would.
    void Patch(std::size_t offset, const std::string& bytes) const {
        std::string all = Bytes();
        all.replace(offset, bytes.size(), bytes);
        WriteFile(archivePath_, all);
    }
    // The archive is the only item in its directory besides these.
    void ExpectDirectoryHolds(std::size_t count) const {
        std::size_t found = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(directory_.Path()))
            ++found;
        EXPECT_EQ(found, count);
    }

    TemporaryDirectory directory_;
    qv::Owned archive_;
    std::string archivePath_;
};

}  // namespace qvtest

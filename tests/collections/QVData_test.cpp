#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include <QVFoundation/QVData.h>

#include "collections/raw_data.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;
using Messages = std::vector<std::string>;
using Bytes = std::vector<unsigned char>;

constexpr bool kLongIsWide = sizeof(unsigned long) > 4;

std::string TextOf(void* data) {
    const auto* bytes = static_cast<const char*>(QVDataGetImutableBuffer(data));
    return bytes == nullptr ? std::string() : std::string(bytes, QVDataGetSize(data));
}

Owned DataOf(const std::string& text) {
    return Owned{QVDataCreate(text.data(), text.size())};
}

// ---- Owned bytes ----

TEST(Data, IsACopyOfTheBytes) {
    char bytes[] = {'a', 'b', 'c'};
    const Owned data{QVDataCreate(bytes, 3)};
    bytes[0] = 'x';
    EXPECT_EQ(TextOf(data.Get()), "abc");
    EXPECT_EQ(QVDataGetSize(data.Get()), 3UL);
    EXPECT_EQ(QVDataGetMutableBuffer(data.Get()), QVDataGetImutableBuffer(data.Get()));
    EXPECT_EQ(QVGetTypeID(data.Get()), 4);
    EXPECT_EQ(QVGetRetainCount(data.Get()), 1UL);
    EXPECT_EQ(QVGetNSObject(data.Get()), nullptr);
    EXPECT_EQ(QVCreateCFObject(data.Get()), nullptr);
}

TEST(Data, WithoutBytesIsZeros) {
    const Owned data{QVDataCreate(nullptr, 5)};
    EXPECT_EQ(TextOf(data.Get()), std::string(5, '\0'));
}

TEST(Data, EmptyHasNoBuffers) {
    const char byte = 'x';
    for (const void* bytes : {static_cast<const void*>(&byte), static_cast<const void*>(nullptr)}) {
        const Owned data{QVDataCreate(bytes, 0)};
        ASSERT_TRUE(data);
        EXPECT_EQ(QVDataGetSize(data.Get()), 0UL);
        EXPECT_EQ(QVDataGetImutableBuffer(data.Get()), nullptr);
        EXPECT_EQ(QVDataGetMutableBuffer(data.Get()), nullptr);
    }
}

TEST(Data, SizeChangesKeepTheBytesAndAddZeros) {
    const Owned data = DataOf("abcdef");
    EXPECT_EQ(QVDataSetSize(data.Get(), 3), 1);
    EXPECT_EQ(TextOf(data.Get()), "abc");
    EXPECT_EQ(QVDataSetSize(data.Get(), 5), 1);
    EXPECT_EQ(TextOf(data.Get()), std::string("abc\0\0", 5));
    EXPECT_EQ(QVDataSetSize(data.Get(), 0), 1);
    EXPECT_EQ(QVDataGetImutableBuffer(data.Get()), nullptr);
    EXPECT_EQ(QVDataSetSize(data.Get(), 1000), 1);
    EXPECT_EQ(TextOf(data.Get()), std::string(1000, '\0'));
}

TEST(Data, ReservedRoomIsUsedInPlace) {
    const Owned data = DataOf("a");
    EXPECT_EQ(QVDataReserve(data.Get(), 1000), 1);
    EXPECT_EQ(QVDataGetSize(data.Get()), 1UL);
    const void* place = QVDataGetImutableBuffer(data.Get());
    const qvtest::FailAllocation failing(0, true);
    EXPECT_EQ(QVDataSetSize(data.Get(), 1000), 1);
    EXPECT_EQ(QVDataGetImutableBuffer(data.Get()), place);
    EXPECT_EQ(QVDataReserve(data.Get(), 10), 1);
    EXPECT_EQ(QVDataGetSize(data.Get()), 1000UL);
}

TEST(Data, AppendingGoesToTheEnd) {
    const Owned data{QVDataCreate(nullptr, 0)};
    EXPECT_EQ(QVDataAppendBuffer(data.Get(), "ab", 2), 1);
    EXPECT_EQ(QVDataAppendBuffer(data.Get(), "x", 0), 1);
    EXPECT_EQ(QVDataAppendBuffer(data.Get(), nullptr, 0), 1);
    EXPECT_EQ(QVDataAppendBuffer(data.Get(), nullptr, 1), 0);
    const Owned other = DataOf("cd");
    EXPECT_EQ(QVDataAppendData(data.Get(), other.Get()), 1);
    const Owned empty{QVDataCreate(nullptr, 0)};
    EXPECT_EQ(QVDataAppendData(data.Get(), empty.Get()), 1);
    EXPECT_EQ(QVDataAppendData(data.Get(), nullptr), 0);
    EXPECT_EQ(TextOf(data.Get()), "abcd");
    EXPECT_EQ(TextOf(other.Get()), "cd");
}

TEST(Data, CanBeAppendedToItself) {
    const Owned data = DataOf("abc");
    std::string expected = "abc";
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(QVDataAppendData(data.Get(), data.Get()), 1);
        expected += expected;
    }
    EXPECT_EQ(TextOf(data.Get()), expected);
}

TEST(Data, PiecesOfItselfCanBeAppended) {
    const Owned data = DataOf("0123456789");
    std::string expected = "0123456789";
    for (int i = 0; i < 200; ++i) {
        const auto* bytes = static_cast<const char*>(QVDataGetImutableBuffer(data.Get()));
        EXPECT_EQ(QVDataAppendBuffer(data.Get(), bytes + i, 9), 1);
        expected += expected.substr(static_cast<std::size_t>(i), 9);
    }
    EXPECT_EQ(TextOf(data.Get()), expected);
}

// ---- SetBytes and GetBytes ----

TEST(DataBytes, OverwriteThenAppendTheRest) {
    const Owned data = DataOf("AB");
    EXPECT_EQ(QVDataSetBytes(data.Get(), "XYZ", 1, 3), 1);
    EXPECT_EQ(TextOf(data.Get()), "AXYZ");
    EXPECT_EQ(QVDataSetBytes(data.Get(), "12", 0, 2), 1);
    EXPECT_EQ(TextOf(data.Get()), "12YZ");
    EXPECT_EQ(QVDataSetBytes(data.Get(), "!", 4, 1), 1);
    EXPECT_EQ(TextOf(data.Get()), "12YZ!");
}

TEST(DataBytes, AnOffsetBeyondTheSizeIsIgnored) {
    const Owned data = DataOf("AB");
    EXPECT_EQ(QVDataSetBytes(data.Get(), "XYZ", 10, 3), 1);
    EXPECT_EQ(TextOf(data.Get()), "ABXYZ");
    EXPECT_EQ(QVDataSetBytes(data.Get(), "!", ULONG_MAX, 1), 1);
    EXPECT_EQ(TextOf(data.Get()), "ABXYZ!");
}

TEST(DataBytes, NothingToSetIsRefused) {
    const Owned data = DataOf("AB");
    EXPECT_EQ(QVDataSetBytes(data.Get(), "X", 0, 0), 0);
    EXPECT_EQ(QVDataSetBytes(data.Get(), nullptr, 0, 1), 0);
    EXPECT_EQ(TextOf(data.Get()), "AB");
}

// Every source, offset and length inside the same Data gives what a copy of the source would give.
TEST(DataBytes, TheSourceMayLieInsideTheData) {
    const std::string text = "0123456789";
    for (std::size_t from = 0; from < text.size(); ++from) {
        for (std::size_t length = 1; from + length <= text.size(); ++length) {
            for (std::size_t offset = 0; offset <= text.size() + 1; ++offset) {
                const Owned data = DataOf(text);
                const auto* bytes = static_cast<const char*>(QVDataGetImutableBuffer(data.Get()));
                ASSERT_EQ(QVDataSetBytes(data.Get(), bytes + from, offset, length), 1);
                std::string expected = text;
                expected.replace(std::min(offset, text.size()), length, text, from, length);
                ASSERT_EQ(TextOf(data.Get()), expected) << from << ' ' << length << ' ' << offset;
            }
        }
    }
}

TEST(DataBytes, AreCopiedOutUpToTheEnd) {
    const Owned data = DataOf("abcde");
    char buffer[11] = "..........";
    unsigned long copied = 77;
    EXPECT_EQ(QVDataGetBytes(data.Get(), buffer, 2, 10, &copied), 1);
    EXPECT_EQ(copied, 3UL);
    EXPECT_STREQ(buffer, "cde.......");
    EXPECT_EQ(QVDataGetBytes(data.Get(), buffer, 1, 2, &copied), 1);
    EXPECT_EQ(copied, 2UL);
    EXPECT_STREQ(buffer, "bce.......");
    EXPECT_EQ(QVDataGetBytes(data.Get(), buffer, 0, ULONG_MAX, nullptr), 1);
    EXPECT_STREQ(buffer, "abcde.....");
}

TEST(DataBytes, NothingToCopyLeavesTheOutsAlone) {
    const Owned data = DataOf("abcde");
    char buffer[2] = "x";
    unsigned long copied = 77;
    EXPECT_EQ(QVDataGetBytes(data.Get(), buffer, 5, 1, &copied), 0);
    EXPECT_EQ(QVDataGetBytes(data.Get(), buffer, ULONG_MAX, 1, &copied), 0);
    EXPECT_EQ(QVDataGetBytes(data.Get(), buffer, 0, 0, &copied), 0);
    EXPECT_EQ(QVDataGetBytes(data.Get(), nullptr, 0, 1, &copied), 0);
    EXPECT_EQ(copied, 77UL);
    EXPECT_STREQ(buffer, "x");
}

// ---- Borrowed bytes ----

TEST(DataNoCopy, StandsOverItsCallersMemory) {
    char bytes[] = "abc";
    {
        const Owned data{QVDataCreateNoCopy(bytes, 3, 1)};
        EXPECT_EQ(QVGetTypeID(data.Get()), 4);
        EXPECT_EQ(QVDataGetImutableBuffer(data.Get()), bytes);
        EXPECT_EQ(QVDataGetMutableBuffer(data.Get()), bytes);
        EXPECT_EQ(QVDataGetSize(data.Get()), 3UL);
        bytes[1] = 'x';
        EXPECT_EQ(TextOf(data.Get()), "axc");
        EXPECT_EQ(QVGetNSObject(data.Get()), nullptr);
        EXPECT_EQ(QVCreateCFObject(data.Get()), nullptr);
    }
    EXPECT_STREQ(bytes, "axc");
}

TEST(DataNoCopy, AnyNonZeroFlagMakesItWritable) {
    char bytes[] = "abc";
    for (const QVBoolean flag : {QVBoolean{1}, QVBoolean{2}, QVBoolean{128}}) {
        const Owned data{QVDataCreateNoCopy(bytes, 3, flag)};
        EXPECT_EQ(QVDataGetMutableBuffer(data.Get()), bytes);
    }
}

TEST(DataNoCopy, NeverChangesSize) {
    char bytes[] = "abc";
    for (const QVBoolean writable : {QVBoolean{0}, QVBoolean{1}}) {
        const Owned data{QVDataCreateNoCopy(bytes, 3, writable)};
        EXPECT_EQ(QVDataSetSize(data.Get(), 2), 0);
        EXPECT_EQ(QVDataSetSize(data.Get(), 3), 0);
        EXPECT_EQ(QVDataReserve(data.Get(), 1), 0);
        EXPECT_EQ(QVDataAppendBuffer(data.Get(), "x", 1), 0);
        EXPECT_EQ(QVDataAppendBuffer(data.Get(), "x", 0), 0);
        EXPECT_EQ(QVDataAppendData(data.Get(), data.Get()), 0);
        EXPECT_EQ(QVDataGetSize(data.Get()), 3UL);
    }
    EXPECT_STREQ(bytes, "abc");
}

TEST(DataNoCopy, IsWrittenThroughOnlyWhenWritable) {
    char bytes[] = "abc";
    const Owned readOnly{QVDataCreateNoCopy(bytes, 3, 0)};
    EXPECT_EQ(QVDataGetMutableBuffer(readOnly.Get()), nullptr);
    EXPECT_EQ(QVDataGetImutableBuffer(readOnly.Get()), bytes);
    EXPECT_EQ(QVDataSetBytes(readOnly.Get(), "xyz", 0, 3), 0);
    EXPECT_EQ(QVDataSetBytes(readOnly.Get(), "xyz", 3, 3), 0);
    EXPECT_STREQ(bytes, "abc");

    const Owned writable{QVDataCreateNoCopy(bytes, 3, 1)};
    EXPECT_EQ(QVDataSetBytes(writable.Get(), "xy", 1, 2), 1);
    EXPECT_STREQ(bytes, "axy");
    EXPECT_EQ(QVDataSetBytes(writable.Get(), "123", 1, 3), 0);  // what fits has been written
    EXPECT_STREQ(bytes, "a12");
    EXPECT_EQ(QVDataSetBytes(writable.Get(), "!", 3, 1), 0);
    unsigned long copied = 0;
    char buffer[4] = "";
    EXPECT_EQ(QVDataGetBytes(readOnly.Get(), buffer, 0, 3, &copied), 1);
    EXPECT_STREQ(buffer, "a12");
}

TEST(DataNoCopy, NullIsForEmptyMemoryOnly) {
    const qvtest::LogCapture log;
    const Owned empty{QVDataCreateNoCopy(nullptr, 0, 1)};
    ASSERT_TRUE(empty);
    EXPECT_EQ(QVDataGetImutableBuffer(empty.Get()), nullptr);
    EXPECT_EQ(QVDataCreateNoCopy(nullptr, 1, 1), nullptr);
    const Owned owned{QVDataCreate(nullptr, 0)};
    EXPECT_EQ(QVDataAppendData(owned.Get(), empty.Get()), 1);
    EXPECT_TRUE(log.Messages().empty());
}

// ---- Null, limits, memory ----

TEST(Data, NullHandlesGiveNothing) {
    const qvtest::LogCapture log;
    char buffer[1];
    unsigned long copied = 0;
    EXPECT_EQ(QVDataGetImutableBuffer(nullptr), nullptr);
    EXPECT_EQ(QVDataGetMutableBuffer(nullptr), nullptr);
    EXPECT_EQ(QVDataGetSize(nullptr), 0UL);
    EXPECT_EQ(QVDataSetSize(nullptr, 1), 0);
    EXPECT_EQ(QVDataReserve(nullptr, 1), 0);
    EXPECT_EQ(QVDataAppendData(nullptr, nullptr), 0);
    EXPECT_EQ(QVDataAppendBuffer(nullptr, "x", 1), 0);
    EXPECT_EQ(QVDataSetBytes(nullptr, "x", 0, 1), 0);
    EXPECT_EQ(QVDataGetBytes(nullptr, buffer, 0, 1, &copied), 0);
    EXPECT_TRUE(log.Messages().empty());
}

TEST(Data, HoldsFewerThanFourGigabytes) {
    const Owned data = DataOf("abc");
    EXPECT_EQ(QVDataSetSize(data.Get(), ULONG_MAX), 0);
    EXPECT_EQ(QVDataReserve(data.Get(), ULONG_MAX), 0);
    EXPECT_EQ(QVDataAppendBuffer(data.Get(), "x", ULONG_MAX), 0);
    EXPECT_EQ(TextOf(data.Get()), "abc");
    if (!kLongIsWide) return;
    const auto tooMany = static_cast<unsigned long>(0x100000000ULL);
    const qvtest::LogCapture log;
    EXPECT_EQ(QVDataCreate(nullptr, tooMany), nullptr);
    EXPECT_EQ(QVDataCreate("x", tooMany), nullptr);
    char bytes[] = "abc";
    EXPECT_EQ(QVDataCreateNoCopy(bytes, tooMany, 0), nullptr);
    EXPECT_EQ(log.Messages(), Messages(3, "Can't allocate the object for the QVDataRef. (size=0)"));
    const Owned large{QVDataCreateNoCopy(bytes, tooMany - 1, 0)};
    EXPECT_EQ(QVDataGetSize(large.Get()), tooMany - 1);
    EXPECT_EQ(QVDataSetSize(data.Get(), tooMany), 0);
    EXPECT_EQ(QVDataReserve(data.Get(), tooMany), 0);
    EXPECT_EQ(QVDataAppendBuffer(data.Get(), "x", tooMany - 3), 0);
    EXPECT_EQ(TextOf(data.Get()), "abc");
}

TEST(DataWithoutMemory, CreationGivesNullAndLogs) {
    const qvtest::LogCapture log;
    std::size_t nulls = 0;
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t owned = qvtest::FailEachAllocation([&nulls] {
        const Owned data{QVDataCreate("abcdef", 6)};
        if (!data) ++nulls;
    });
    const std::size_t zeros = qvtest::FailEachAllocation([&nulls] {
        const Owned data{QVDataCreate(nullptr, 6)};
        if (!data) ++nulls;
    });
    char bytes[6];
    const std::size_t borrowed = qvtest::FailEachAllocation([&nulls, &bytes] {
        const Owned data{QVDataCreateNoCopy(bytes, 6, 0)};
        if (!data) ++nulls;
    });
    EXPECT_EQ(qvtest::LiveAllocations(), before);
    EXPECT_EQ(owned, 2U);
    EXPECT_EQ(zeros, 2U);
    EXPECT_EQ(borrowed, 1U);
    EXPECT_EQ(nulls, 5U);
    EXPECT_EQ(log.Messages(), Messages(5, "Can't allocate the object for the QVDataRef. (size=6)"));
}

TEST(DataWithoutMemory, GrowingFailsAndKeepsTheBytes) {
    const Owned data = DataOf("abcdef");
    const qvtest::LogCapture log;
    {
        const qvtest::FailAllocation failing(0, true);
        EXPECT_EQ(QVDataSetSize(data.Get(), 1000), 0);
        EXPECT_EQ(QVDataReserve(data.Get(), 1000), 0);
        EXPECT_EQ(QVDataAppendBuffer(data.Get(), "0123456789", 10), 0);
        EXPECT_EQ(QVDataAppendData(data.Get(), data.Get()), 0);
        EXPECT_EQ(TextOf(data.Get()), "abcdef");
        EXPECT_EQ(QVDataSetBytes(data.Get(), "123", 4, 3), 0);  // what fits has been written
        EXPECT_EQ(TextOf(data.Get()), "abcd12");
        const void* own = QVDataGetImutableBuffer(data.Get());
        EXPECT_EQ(QVDataSetBytes(data.Get(), own, 4, 4), 0);  // not even a copy of the source
    }
    EXPECT_EQ(TextOf(data.Get()), "abcd12");
    EXPECT_TRUE(log.Messages().empty());
}

// ---- Inside the library: growing without filling ----

TEST(RawData, IsDataOfTheSizeAskedFor) {
    const Owned data{qv::CreateDataToFill(5)};
    ASSERT_EQ(QVDataGetSize(data.Get()), 5UL);
    std::copy_n("hello", 5, static_cast<char*>(QVDataGetMutableBuffer(data.Get())));
    unsigned char* added = qv::ExtendData(data.Get(), 3);
    ASSERT_NE(added, nullptr);
    std::copy_n("you", 3, added);
    EXPECT_EQ(TextOf(data.Get()), "helloyou");
    EXPECT_EQ(QVDataSetSize(data.Get(), 2), 1);
    EXPECT_EQ(TextOf(data.Get()), "he");
    const Owned empty{qv::CreateDataToFill(0)};
    EXPECT_EQ(QVDataGetSize(empty.Get()), 0UL);
    EXPECT_EQ(QVDataGetImutableBuffer(empty.Get()), nullptr);
}

TEST(RawData, CannotGrowBorrowedMemoryOrBeyondTheLimit) {
    char bytes[] = "abc";
    const Owned borrowed{QVDataCreateNoCopy(bytes, 3, 1)};
    EXPECT_EQ(qv::ExtendData(borrowed.Get(), 1), nullptr);
    EXPECT_EQ(qv::ExtendData(nullptr, 1), nullptr);
    const Owned data = DataOf("abc");
    EXPECT_EQ(qv::ExtendData(data.Get(), static_cast<std::size_t>(0xFFFFFFFFU)), nullptr);
    EXPECT_EQ(TextOf(data.Get()), "abc");
}

TEST(RawData, WithoutMemoryIsNullAndSilent) {
    const qvtest::LogCapture log;
    std::size_t nulls = 0;
    const std::size_t failures = qvtest::FailEachAllocation([&nulls] {
        const Owned data{qv::CreateDataToFill(100)};
        if (!data) ++nulls;
    });
    EXPECT_EQ(failures, 2U);
    EXPECT_EQ(nulls, 2U);
    const Owned data{qv::CreateDataToFill(10)};
    const qvtest::FailAllocation failing(0, true);
    EXPECT_EQ(qv::ExtendData(data.Get(), 1000), nullptr);
    EXPECT_EQ(QVDataGetSize(data.Get()), 10UL);
    EXPECT_TRUE(log.Messages().empty());
}

// ---- Everything together, against a plain vector ----

class DataModel {
public:
    explicit DataModel(unsigned seed) : random_(seed) {}

    void Step() {
        const std::size_t size = model_.size();
        const std::size_t offset = Below(size + 5);
        const Bytes bytes = RandomBytes();
        const bool hasBytes = !bytes.empty();
        switch (Below(size > 5000 ? 6 : 5)) {
            case 0:
                EXPECT_EQ(QVDataAppendBuffer(data_.Get(), bytes.data(), bytes.size()), 1);
                model_.insert(model_.end(), bytes.begin(), bytes.end());
                break;
            case 1:
                EXPECT_EQ(QVDataSetBytes(data_.Get(), bytes.data(), offset, bytes.size()), hasBytes);
                Overwrite(std::min(offset, size), bytes);
                break;
            case 2:
                EXPECT_EQ(QVDataSetSize(data_.Get(), offset), 1);
                model_.resize(offset);
                break;
            case 3:
                CheckReading(offset, Below(30));
                break;
            case 4:
                EXPECT_EQ(QVDataReserve(data_.Get(), offset), 1);
                break;
            case 5:
                EXPECT_EQ(QVDataSetSize(data_.Get(), Below(50)), 1);
                model_.resize(QVDataGetSize(data_.Get()));
                break;
        }
    }

    void Check() {
        const auto* bytes = static_cast<const unsigned char*>(QVDataGetImutableBuffer(data_.Get()));
        ASSERT_EQ(QVDataGetSize(data_.Get()), model_.size());
        ASSERT_EQ(bytes == nullptr, model_.empty());
        ASSERT_TRUE(std::equal(model_.begin(), model_.end(), bytes));
    }

private:
    std::size_t Below(std::size_t limit) { return random_() % limit; }

    Bytes RandomBytes() {
        Bytes bytes(Below(20));
        for (unsigned char& byte : bytes)
            byte = static_cast<unsigned char>(random_());
        return bytes;
    }

    void Overwrite(std::size_t offset, const Bytes& bytes) {
        if (offset + bytes.size() > model_.size()) model_.resize(offset + bytes.size());
        std::copy(bytes.begin(), bytes.end(), model_.begin() + static_cast<std::ptrdiff_t>(offset));
    }

    void CheckReading(std::size_t offset, std::size_t length) {
        Bytes buffer(length + 1);
        unsigned long copied = 0;
        const bool expected = offset < model_.size() && length > 0;
        ASSERT_EQ(QVDataGetBytes(data_.Get(), buffer.data(), offset, length, &copied), expected);
        if (!expected) return;
        ASSERT_EQ(copied, std::min(length, model_.size() - offset));
        ASSERT_TRUE(std::equal(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(copied),
                               model_.begin() + static_cast<std::ptrdiff_t>(offset)));
    }

    std::mt19937 random_;
    Bytes model_;
    Owned data_{QVDataCreate(nullptr, 0)};
};

TEST(Data, BehavesAsAVectorOfBytes) {
    constexpr unsigned kSeed = 3204;
    DataModel model(kSeed);
    for (int step = 0; step < 120000; ++step) {
        model.Step();
        if (step % 101 == 0) {
            ASSERT_NO_FATAL_FAILURE(model.Check()) << "seed " << kSeed << " step " << step;
        }
    }
    model.Check();
}

}  // namespace

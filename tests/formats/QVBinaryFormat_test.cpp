#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <pthread.h>
#include <random>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVBinaryFormat.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDate.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVLinkedList.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVStream.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "models/binary_encoder.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace {

using qv::Owned;
using namespace std::string_literals;

std::string Bytes(void* data) {
    if (data == nullptr) return "null";
    return {static_cast<const char*>(QVDataGetImutableBuffer(data)), QVDataGetSize(data)};
}

// The same without memory of its own, for tests in which memory fails.
bool HoldsBytes(void* data, const std::string& bytes) {
    return QVDataGetSize(data) == bytes.size() &&
           std::memcmp(QVDataGetImutableBuffer(data), bytes.data(), bytes.size()) == 0;
}

class BinaryFormat : public testing::Test {
protected:
    const Owned pool_{QVTemporaryObjectsPoolCreate()};

    static std::string Written(void* object) {
        const Owned data{QVBinaryFormatCreateData(object)};
        return Bytes(data.Get());
    }
    static std::string WrittenNew(void* created) { return Written(QVTEMPOBJ(created)); }

    // Reads from Data and from a stream over the same bytes: both must agree. Answers the object of the
    // first.
    static void* Read(const std::string& bytes, int expectedResult) {
        const Owned data{QVDataCreate(bytes.data(), bytes.size())};
        void* object = data.Get();  // must be overwritten
        EXPECT_EQ(QVBinaryFormatReadFromData(data.Get(), &object), expectedResult);
        const Owned stream{QVStreamCreateWithMemory(data.Get())};
        void* streamed = nullptr;
        EXPECT_EQ(QVBinaryFormatReadFromStream(stream.Get(), &streamed), expectedResult);
        EXPECT_EQ(streamed == nullptr, object == nullptr);
        if (streamed != nullptr) {
            EXPECT_EQ(Written(streamed), Written(object));
        }
        return object;
    }

    static void* DateOf(int year, int month, int day, int hour, int minutes, int seconds, int offset) {
        void* date = QVDateNow();
        QVDateSetYear(date, year);
        QVDateSetMonthOfYear(date, month);
        QVDateSetDayOfMonth(date, day);
        QVDateSetHour(date, hour);
        QVDateSetMinutes(date, minutes);
        QVDateSetSeconds(date, seconds);
        QVDateSetOffsetFromUTC(date, offset);
        return date;
    }
};

TEST_F(BinaryFormat, NumbersKeepTheirNativeType) {
    const struct {
        void* number;
        std::string bytes;
        int type;
    } cases[] = {
        {QVNumberCreateWithUInt8(0xFE), "\x04\xFE", QVNumberTypeUInt8},
        {QVNumberCreateWithSInt8(-2), "\x05\xFE", QVNumberTypeSInt8},
        {QVNumberCreateWithUInt16(0x1234), "\x06\x34\x12", QVNumberTypeUInt16},
        {QVNumberCreateWithSInt16(-2), "\x07\xFE\xFF", QVNumberTypeSInt16},
        {QVNumberCreateWithUInt32(0x12345678), "\x08\x78\x56\x34\x12", QVNumberTypeUInt32},
        {QVNumberCreateWithSInt32(-2), "\x09\xFE\xFF\xFF\xFF", QVNumberTypeSInt32},
        {QVNumberCreateWithUInt64(0x123456789ABCDEF0ULL), "\x0A\xF0\xDE\xBC\x9A\x78\x56\x34\x12",
         QVNumberTypeUInt64},
        {QVNumberCreateWithSInt64(-2), "\x0B\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF", QVNumberTypeSInt64},
        {QVNumberCreateWithFloat(1.5F), "\x0C\x00\x00\xC0\x3F"s, QVNumberTypeFloat},
        {QVNumberCreateWithDouble(1.5), "\x0D\x00\x00\x00\x00\x00\x00\xF8\x3F"s, QVNumberTypeDouble},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(WrittenNew(c.number), c.bytes);
        void* read = Read(c.bytes, 0);
        EXPECT_EQ(QVNumberGetNativeType(read), c.type);
        EXPECT_EQ(Written(read), c.bytes);
        EXPECT_EQ(QVGetRetainCount(read), 1UL);
    }
}

TEST_F(BinaryFormat, ABooleanComesBackTogetherWithAFailure) {
    EXPECT_EQ(WrittenNew(QVNumberCreateWithBool(1)), "\x01");
    EXPECT_EQ(WrittenNew(QVNumberCreateWithBool(0)), "\x02");
    void* yes = Read("\x01", -5);
    EXPECT_EQ(QVNumberGetNativeType(yes), QVNumberTypeBool);
    EXPECT_EQ(QVNumberGetBoolValue(yes), 1);
    EXPECT_EQ(QVNumberGetBoolValue(Read("\x02", -5)), 0);
    EXPECT_EQ(Read("\x22\x01\x00"s, -5), nullptr);
    EXPECT_EQ(Read("\x23\x03k\x00\x02\x00"s, -5), nullptr);
}

TEST_F(BinaryFormat, StringsAreUTF8EndedByAZero) {
    EXPECT_EQ(Written(QVSTR(L"")), "\x03\x00"s);
    EXPECT_EQ(Written(QVSTR(L"caf\u00E9\U0001F600")), "\x03"s + "caf\xC3\xA9\xF0\x9F\x98\x80" + "\0"s);
    void* empty = Read("\x03\x00"s, 0);
    EXPECT_EQ(QVGetTypeID(empty), 3);
    EXPECT_EQ(QVStringGetLength(empty), 0UL);
    EXPECT_STREQ(QVStringGetBuffer(Read("\x03"s + "\xF0\x9F\x98\x80" + "\0"s, 0)), L"\U0001F600");
    // Bytes behind the object are not looked at.
    EXPECT_STREQ(QVStringGetBuffer(Read("\x03"s + "a\0bc"s, 0)), L"a");
    EXPECT_EQ(Read("\x03\xFF\x00"s, -4), nullptr);
    EXPECT_EQ(Read("\x03\xED\xA0\x80\x00"s, -4), nullptr);
}

TEST_F(BinaryFormat, WhatUTF8CannotHoldIsReplaced) {
    const wchar_t text[] = {L'a', static_cast<wchar_t>(0xD800), L'b', 0, L'c'};
    const Owned string{QVStringCreateWithWideStringAndLength(text, 5)};
    EXPECT_EQ(Written(string.Get()), "\x03"s + "a?b\0c\0"s);
}

TEST_F(BinaryFormat, DataCarriesItsLength) {
    EXPECT_EQ(WrittenNew(QVDataCreate(nullptr, 0)), "\x20\x00\x00\x00\x00"s);
    EXPECT_EQ(WrittenNew(QVDataCreate("\0\1\2", 3)), "\x20\x03\x00\x00\x00\x00\x01\x02"s);
    void* data = Read("\x20\x03\x00\x00\x00\x00\x01\x02"s, 0);
    EXPECT_EQ(QVGetTypeID(data), 4);
    EXPECT_EQ(Bytes(data), "\0\1\2"s);
    EXPECT_EQ(QVDataGetSize(Read("\x20\x00\x00\x00\x00"s, 0)), 0UL);
}

TEST_F(BinaryFormat, ContainersEndWithAZero) {
    const Owned array{QVArrayCreateWithCapacity(0)};
    EXPECT_EQ(Written(array.Get()), "\x22\x00"s);
    const Owned dictionary{QVDictionaryCreate()};
    EXPECT_EQ(Written(dictionary.Get()), "\x23\x00"s);
    QVArrayAddObject(array.Get(), QVSTR(L"x"));
    QVArrayAddObject(array.Get(), dictionary.Get());
    const std::string arrayBytes = "\x22\x03x\x00\x23\x00\x00"s;
    EXPECT_EQ(Written(array.Get()), arrayBytes);
    QVDictionarySetObject(dictionary.Get(), QVSTR(L"2"), L"b");
    QVDictionarySetObject(dictionary.Get(), QVSTR(L"1"), L"B");
    const std::string bytes = "\x23\x03"s + "B\0\3"s + "1\0\3"s + "b\0\3"s + "2\0\0"s;
    EXPECT_EQ(Written(dictionary.Get()), bytes);

    void* read = Read(arrayBytes, 0);
    ASSERT_EQ(QVArrayGetCount(read), 2UL);
    EXPECT_EQ(QVGetRetainCount(QVArrayGetObjectAtIndex(read, 0)), 1UL);
    read = Read(bytes, 0);
    EXPECT_EQ(QVDictionaryCount(read), 2U);
    EXPECT_STREQ(QVStringGetBuffer(QVDictionaryGetObject(read, L"b")), L"2");
    EXPECT_EQ(QVGetRetainCount(QVDictionaryGetObject(read, L"b")), 1UL);
}

TEST_F(BinaryFormat, ADictionaryEndsAtEitherPositionAndKeepsTheLastOfEqualKeys) {
    EXPECT_EQ(QVDictionaryCount(Read("\x23\x03k\x00\x00"s, 0)), 0U);
    void* read = Read("\x23\x03k\0\4\1\3k\0\4\2\0"s, 0);
    EXPECT_EQ(QVDictionaryCount(read), 1U);
    EXPECT_EQ(QVNumberGetUInt8Value(QVDictionaryGetObject(read, L"k")), 2);
}

TEST_F(BinaryFormat, AKeyMustBeAString) {
    EXPECT_EQ(Read("\x23\x04\x01\x04\x01\x00"s, -5), nullptr);
    EXPECT_EQ(Read("\x23\x22\x00\x04\x01\x00"s, -5), nullptr);
}

TEST_F(BinaryFormat, DatesSplitTheirOffsetIntoHoursAndALowByte) {
    setenv("TZ", "UTC0", 1);
    const std::string prefix = "\x24\xEA\x07\x00\x00\x0B\x0F\x0F\x08\x1E"s;
    EXPECT_EQ(Written(DateOf(2026, 11, 15, 15, 8, 30, 9 * 3600)), prefix + "\x09\x00"s);
    EXPECT_EQ(Written(DateOf(2026, 11, 15, 15, 8, 30, 5 * 3600 + 1800)), prefix + "\x05\x08"s);
    EXPECT_EQ(Written(DateOf(2026, 11, 15, 15, 8, 30, -(3 * 3600 + 1800))), prefix + "\xFD\xF8"s);
    EXPECT_EQ(QVDateGetOffsetFromUTC(Read(prefix + "\x09\x00"s, 0)), 9 * 3600);
    EXPECT_EQ(QVDateGetOffsetFromUTC(Read(prefix + "\x05\x08"s, 0)), 5 * 3600 + 8 * 60);
    EXPECT_EQ(QVDateGetOffsetFromUTC(Read(prefix + "\xFD\xF8"s, 0)), -3 * 3600 - 8 * 60);
    void* date = Read(prefix + "\x00\x00"s, 0);
    EXPECT_EQ(QVGetTypeID(date), 29);
    EXPECT_EQ(QVDateGetYear(date), 2026);
    EXPECT_EQ(QVDateGetMonthOfYear(date), 11);
    EXPECT_EQ(QVDateGetDayOfMonth(date), 15);
    EXPECT_EQ(QVDateGetHour(date), 15);
    EXPECT_EQ(QVDateGetMinutes(date), 8);
    EXPECT_EQ(QVDateGetSeconds(date), 30);
    EXPECT_EQ(QVDateGetDayOfWeek(date), 0);
    unsetenv("TZ");
}

TEST_F(BinaryFormat, TheReaderOfDatesChoosesTheSummerFlagAndNormalises) {
    setenv("TZ", "Europe/Berlin", 1);
    void* summer = Read("\x24\xEA\x07\x00\x00\x07\x0F\x0F\x08\x1E\x02\x00"s, 0);
    EXPECT_TRUE(QVDateIsSummerTime(summer));
    EXPECT_EQ(QVDateGetHour(summer), 15);
    void* winter = Read("\x24\xEA\x07\x00\x00\x01\x0F\x0F\x08\x1E\x01\x00"s, 0);
    EXPECT_FALSE(QVDateIsSummerTime(winter));
    EXPECT_EQ(QVDateGetHour(winter), 15);
    void* wild = Read("\x24\xEA\x07\x00\x00\x0D\x01\x00\x00\x00\x01\x00"s, 0);  // month 13
    EXPECT_EQ(QVDateGetYear(wild), 2027);
    EXPECT_EQ(QVDateGetMonthOfYear(wild), 1);
    unsetenv("TZ");
}

TEST_F(BinaryFormat, WhatHasNoEncodingIsRefused) {
    const Owned null{QVNullCreate()};
    const Owned list{QVLinkedListCreate()};
    const Owned holder{QVArrayCreateWithCapacity(0)};
    QVArrayInsertObjectAtIndex(holder.Get(), nullptr, 0);
    for (void* object : {null.Get(), list.Get(), holder.Get()}) {
        EXPECT_EQ(Written(object), "null");
        const Owned array{QVArrayCreateWithObject(object)};
        EXPECT_EQ(Written(array.Get()), "null");
        const Owned data{QVDataCreate(nullptr, 0)};
        const Owned stream{QVStreamCreateWithMemory(data.Get())};
        EXPECT_EQ(QVBinaryFormatWriteToStream(stream.Get(), array.Get()), -2);
    }
}

TEST_F(BinaryFormat, AFailureKeepsWhatWasWrittenBefore) {
    const Owned null{QVNullCreate()};
    const Owned array{QVArrayCreateWithObject(QVSTR(L"x"))};
    QVArrayAddObject(array.Get(), null.Get());
    const Owned data{QVDataCreate(nullptr, 0)};
    const Owned stream{QVStreamCreateWithMemory(data.Get())};
    EXPECT_EQ(QVBinaryFormatWriteToStream(stream.Get(), array.Get()), -2);
    EXPECT_EQ(Bytes(data.Get()), "\x22\x03x\x00"s);
}

TEST_F(BinaryFormat, AContainerInsideItselfIsRefused) {
    const Owned array{QVArrayCreateWithCapacity(0)};
    const Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), array.Get(), L"k");
    QVArrayAddObject(array.Get(), dictionary.Get());
    EXPECT_EQ(Written(array.Get()), "null");
    QVArrayRemoveAllObjects(array.Get());
    QVArrayAddObject(array.Get(), QVSTR(L"x"));
    const Owned twice{QVArrayCreateWithObject(array.Get())};
    QVArrayAddObject(twice.Get(), array.Get());
    EXPECT_NE(Written(twice.Get()), "null");
}

TEST_F(BinaryFormat, DeepNestingIsReadAndWrittenUpToItsLimitOnASmallStack) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 256 * 1024);
    const auto work = [](void*) -> void* {
        const Owned pool{QVTemporaryObjectsPoolCreate()};
        const std::string deepest = std::string(10000, '\x22') + std::string(10000, '\0');
        EXPECT_EQ(Written(Read(deepest, 0)), deepest);
        EXPECT_EQ(Read('\x22' + deepest + '\0', -5), nullptr);
        EXPECT_EQ(Read(std::string(100000, '\x22'), -5), nullptr);
        const Owned deeper{QVArrayCreateWithObject(Read(deepest, 0))};
        EXPECT_EQ(Written(deeper.Get()), "null");
        return nullptr;
    };
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, work, nullptr), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST_F(BinaryFormat, EveryUnknownTagIsRefused) {
    for (int tag = 0; tag < 256; ++tag) {
        const bool known = tag <= 13 || tag == 32 || (tag >= 34 && tag <= 36);
        if (known) continue;
        EXPECT_EQ(Read(std::string(1, static_cast<char>(tag)) + std::string(20, '\0'), -5), nullptr) << tag;
    }
    EXPECT_EQ(Read("\0"s, -700), nullptr);
    EXPECT_EQ(Read("\0\4\1"s, -700), nullptr);
}

TEST_F(BinaryFormat, NothingIsBelievedBeyondWhatIsThere) {
    const std::size_t before = qvtest::AllocatedBytes();
    EXPECT_EQ(Read("\x20\xFF\xFF\xFF\xFF"s + std::string(1000, 'x'), -502), nullptr);
    EXPECT_LT(qvtest::AllocatedBytes() - before, 1U << 20);
}

TEST_F(BinaryFormat, NullArgumentsAreRefused) {
    const Owned data{QVDataCreate(nullptr, 0)};
    const Owned stream{QVStreamCreateWithMemory(data.Get())};
    void* object = nullptr;
    EXPECT_EQ(QVBinaryFormatCreateData(nullptr), nullptr);
    EXPECT_EQ(QVBinaryFormatWriteToStream(nullptr, data.Get()), -2);
    EXPECT_EQ(QVBinaryFormatWriteToStream(stream.Get(), nullptr), -2);
    EXPECT_EQ(QVBinaryFormatWriteToFile(nullptr, data.Get()), -2);
    EXPECT_EQ(QVBinaryFormatWriteToFile(QVSTR(L"x"), nullptr), -2);
    EXPECT_EQ(QVBinaryFormatReadFromStream(nullptr, &object), -2);
    EXPECT_EQ(QVBinaryFormatReadFromStream(stream.Get(), nullptr), -2);
    EXPECT_EQ(QVBinaryFormatReadFromData(nullptr, &object), -2);
    EXPECT_EQ(QVBinaryFormatReadFromData(data.Get(), nullptr), -2);
    EXPECT_EQ(QVBinaryFormatReadFromFile(nullptr, &object), -2);
    void* path = QVSTR(L"x");
    EXPECT_EQ(QVBinaryFormatReadFromFile(path, nullptr), -2);
    EXPECT_EQ(QVGetRetainCount(path), 1UL);
    EXPECT_EQ(QVBinaryFormatReadFromData(data.Get(), &object), -502);
}

// Random objects, as the library's and as an independent encoder sees them.
class RandomObjects {
public:
    explicit RandomObjects(unsigned seed) : random_(seed) {}

    // A temporary object; its bytes are appended to `expected`.
    void* Make(std::string& expected, int depth = 0) {
        switch (Below(depth < 4 ? 8 : 5)) {
            case 0: {
                const auto value = static_cast<unsigned short>(random_());
                qvtest::EncodeUInt16(expected, value);
                return QVTEMPOBJ(QVNumberCreateWithUInt16(value));
            }
            case 1: {
                const auto value = static_cast<long long>(random_() * 0x9E3779B97F4A7C15ULL);
                qvtest::EncodeSInt64(expected, value);
                return QVTEMPOBJ(QVNumberCreateWithSInt64(value));
            }
            case 2: {
                const double value = static_cast<double>(random_()) / 7;
                qvtest::EncodeDouble(expected, value);
                return QVTEMPOBJ(QVNumberCreateWithDouble(value));
            }
            case 3: {
                const std::wstring text = Text();
                qvtest::EncodeString(expected, text);
                return QVTEMPOBJ(QVStringCreateWithWideString(text.c_str()));
            }
            case 4: {
                const std::string bytes(Below(20) == 0 ? Below(3000) : Below(40),
                                        static_cast<char>(random_()));
                qvtest::EncodeData(expected, bytes);
                return QVTEMPOBJ(QVDataCreate(bytes.data(), bytes.size()));
            }
            case 5:
            case 6: {
                void* array = QVTEMPOBJ(QVArrayCreateWithCapacity(0));
                qvtest::BeginArray(expected);
                for (std::size_t i = Below(6); i > 0; --i)
                    QVArrayAddObject(array, Make(expected, depth + 1));
                qvtest::End(expected);
                return array;
            }
            default: {
                void* dictionary = QVTEMPOBJ(QVDictionaryCreate());
                qvtest::BeginDictionary(expected);
                std::wstring key;
                for (std::size_t i = Below(6); i > 0; --i) {
                    key += static_cast<wchar_t>(L'a' + Below(26));  // each key sorts behind the one before
                    qvtest::EncodeString(expected, key);
                    QVDictionarySetObject(dictionary, Make(expected, depth + 1), key.c_str());
                }
                qvtest::End(expected);
                return dictionary;
            }
        }
    }

    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(random_() % bound); }

private:
    std::wstring Text() {
        // Every other text is plain ASCII, and some are long.
        static constexpr wchar_t kCharacters[] = {L'a',          0x7F,      L'\u00E9', L'\u65E5',
                                                  L'\U0001F600', L'\u07FF', L'\u0800'};
        const std::size_t kinds = Below(2) == 0 ? 2 : std::size(kCharacters);
        std::wstring text(Below(20) == 0 ? Below(600) : Below(30), L'x');
        for (wchar_t& character : text)
            character = kCharacters[Below(kinds)];
        return text;
    }

    std::mt19937_64 random_;
};

TEST_F(BinaryFormat, AgreesWithAnIndependentEncoderAndReadsItBack) {
    RandomObjects objects(8);
    for (int round = 0; round < 1500; ++round) {
        const Owned inner{QVTemporaryObjectsPoolCreate()};
        std::string expected;
        void* object = objects.Make(expected);
        ASSERT_EQ(Written(object), expected);
        ASSERT_EQ(Written(Read(expected, 0)), expected);
    }
}

TEST_F(BinaryFormat, EveryTruncationIsACodeAndEveryMutationIsHarmless) {
    RandomObjects objects(9);
    for (int round = 0; round < 200; ++round) {
        const Owned inner{QVTemporaryObjectsPoolCreate()};
        std::string bytes;
        objects.Make(bytes);
        const std::size_t step = 1 + bytes.size() / 200;
        for (std::size_t size = 0; size < bytes.size(); size += step) {
            const Owned data{QVDataCreate(bytes.data(), size)};
            void* object = nullptr;
            ASSERT_EQ(QVBinaryFormatReadFromData(data.Get(), &object), -502);
            ASSERT_EQ(object, nullptr);
        }
        for (int mutation = 0; mutation < 50; ++mutation) {
            std::string changed = bytes;
            changed[objects.Below(changed.size())] = static_cast<char>(objects.Below(256));
            const Owned data{QVDataCreate(changed.data(), changed.size())};
            void* object = nullptr;
            const int result = QVBinaryFormatReadFromData(data.Get(), &object);
            ASSERT_TRUE(result == 0 || result == -4 || result == -5 || result == -502 || result == -700)
                << result;
        }
    }
}

TEST_F(BinaryFormat, FilesAreCreatedCutAndReadBack) {
    char directory[] = "/tmp/qv_binary_XXXXXX";
    ASSERT_NE(mkdtemp(directory), nullptr);
    const std::string path = std::string(directory) + "/object";
    const Owned pathText{QVStringCreateWithCString(path.c_str())};
    RandomObjects objects(10);
    const Owned large{QVArrayCreateWithCapacity(0)};
    std::string largeBytes;
    qvtest::BeginArray(largeBytes);
    for (int i = 0; i < 500; ++i)
        QVArrayAddObject(large.Get(), objects.Make(largeBytes));
    qvtest::End(largeBytes);
    ASSERT_GT(largeBytes.size(), 4096U);

    EXPECT_EQ(QVBinaryFormatWriteToFile(pathText.Get(), large.Get()), 0);
    EXPECT_EQ(Bytes(QVDataCreateFromFile(pathText.Get())), largeBytes);
    void* read = nullptr;
    EXPECT_EQ(QVBinaryFormatReadFromFile(QVRetain(pathText.Get()), &read), 0);
    EXPECT_EQ(Written(read), largeBytes);
    EXPECT_EQ(QVGetRetainCount(pathText.Get()), 1UL);

    // A shorter object leaves no tail of the longer one.
    EXPECT_EQ(QVBinaryFormatWriteToFile(pathText.Get(), QVSTR(L"short")), 0);
    EXPECT_EQ(Bytes(QVDataCreateFromFile(pathText.Get())), "\x03short\x00"s);
    EXPECT_EQ(QVGetRetainCount(pathText.Get()), 1UL);

    unlink(path.c_str());
    EXPECT_EQ(QVBinaryFormatReadFromFile(QVRetain(pathText.Get()), &read), -100);
    EXPECT_EQ(read, nullptr);
    EXPECT_EQ(QVGetRetainCount(pathText.Get()), 1UL);
    rmdir(directory);
    EXPECT_EQ(QVBinaryFormatWriteToFile(pathText.Get(), large.Get()), -100);
}

// More than 1 KiB outgrows every small buffer on the way, more than 100 MiB every step of growth.
TEST_F(BinaryFormat, LargeObjectsGoThroughDataStreamsAndFiles) {
    const qvtest::TemporaryDirectory directory;
    const Owned path{QVStringCreateWithCString((directory / "object").c_str())};
    const std::string pattern = "0123456789abcdefghijklmnopqrstuvw";
    for (const std::size_t size : {std::size_t{1'100}, std::size_t{101} << 20}) {
        std::string content;
        while (content.size() < size)
            content += pattern;
        const std::wstring text(size / 32, L'\u00E9');
        std::string expected;
        qvtest::BeginArray(expected);
        qvtest::EncodeData(expected, content);
        qvtest::EncodeString(expected, text);
        qvtest::End(expected);

        const Owned array{QVArrayCreateWithCapacity(0)};
        QVArrayAddObject(array.Get(), QVTEMPOBJ(QVDataCreate(content.data(), content.size())));
        QVArrayAddObject(array.Get(), QVTEMPOBJ(QVStringCreateWithWideString(text.c_str())));
        const Owned data{QVBinaryFormatCreateData(array.Get())};
        EXPECT_TRUE(HoldsBytes(data.Get(), expected));
        const Owned streamed{QVDataCreate(nullptr, 0)};
        const Owned stream{QVStreamCreateWithMemory(streamed.Get())};
        EXPECT_EQ(QVBinaryFormatWriteToStream(stream.Get(), array.Get()), 0);
        EXPECT_TRUE(HoldsBytes(streamed.Get(), expected));
        EXPECT_EQ(QVBinaryFormatWriteToFile(path.Get(), array.Get()), 0);
        EXPECT_TRUE(qvtest::ReadFile(directory / "object") == expected);

        const auto expectWhole = [&](auto readInto) {
            const Owned pool{QVTemporaryObjectsPoolCreate()};
            void* read = nullptr;
            EXPECT_EQ(readInto(&read), 0);
            EXPECT_EQ(QVArrayGetCount(read), 2UL);
            EXPECT_TRUE(HoldsBytes(QVArrayGetObjectAtIndex(read, 0), content));
            EXPECT_TRUE(QVStringGetBuffer(QVArrayGetObjectAtIndex(read, 1)) == text);
        };
        expectWhole([&](void** read) { return QVBinaryFormatReadFromData(data.Get(), read); });
        QVStreamSetMarker(stream.Get(), 0, 0);
        expectWhole([&](void** read) { return QVBinaryFormatReadFromStream(stream.Get(), read); });
        expectWhole([&](void** read) { return QVBinaryFormatReadFromFile(QVRetain(path.Get()), read); });
    }
}

TEST_F(BinaryFormat, EveryFailingAllocationLeavesNothingBehind) {
    std::string bytes;
    RandomObjects objects(11);
    const Owned array{QVArrayCreateWithCapacity(0)};
    qvtest::BeginArray(bytes);
    for (int i = 0; i < 12; ++i)
        QVArrayAddObject(array.Get(), objects.Make(bytes));
    QVArrayAddObject(array.Get(), DateOf(2026, 1, 1, 1, 1, 1, 0));
    const std::string whole = Written(array.Get());
    const Owned data{QVDataCreate(whole.data(), whole.size())};
    const std::size_t before = qvtest::LiveAllocations();
    const qvtest::LogCapture log;
    qvtest::FailEachAllocation([&] {
        const Owned written{QVBinaryFormatCreateData(array.Get())};
        if (written) {
            EXPECT_TRUE(HoldsBytes(written.Get(), whole));
        }
    });
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        const Owned pool{QVTemporaryObjectsPoolCreate()};
        if (!pool) return;
        void* object = nullptr;
        const int result = QVBinaryFormatReadFromData(data.Get(), &object);
        EXPECT_TRUE(result == 0 ? object != nullptr : result == -4 && object == nullptr) << result;
    });
    EXPECT_GE(failures, 20U);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

}  // namespace

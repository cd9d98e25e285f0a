// Numbers, Data and dates.
#include <cstring>

#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDate.h>
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVNumber.h>

#include "support/strings.h"
#include "support/temporary_directory.h"
#include "whole/row.h"

namespace qvtest {
namespace {

using qv::Owned;

template <class Create>
Row CreatesNumber(const char* name, Create create) {
    return {name, [create](Attempt& attempt) { attempt.Creates([&] { return create(1); }); }, TakesNoHandle};
}

// A getter gives 7 for the number 7, and 0 for null.
template <class Get>
Row GetsNumber(const char* name, Get get) {
    return {name,
            [get](Attempt& attempt) {
                const Owned number{QVNumberCreateWithUInt8(7)};
                attempt.NeedsNoMemory([&] { return get(number.Get()) == 7; });
            },
            [get] { return get(nullptr) == 0; }};
}

Rows NumberRows() {
    return {
        CreatesNumber("QVNumberCreateWithBool", QVNumberCreateWithBool),
        CreatesNumber("QVNumberCreateWithSInt8", QVNumberCreateWithSInt8),
        CreatesNumber("QVNumberCreateWithSInt16", QVNumberCreateWithSInt16),
        CreatesNumber("QVNumberCreateWithSInt32", QVNumberCreateWithSInt32),
        CreatesNumber("QVNumberCreateWithSInt64", QVNumberCreateWithSInt64),
        CreatesNumber("QVNumberCreateWithUInt8", QVNumberCreateWithUInt8),
        CreatesNumber("QVNumberCreateWithUInt16", QVNumberCreateWithUInt16),
        CreatesNumber("QVNumberCreateWithUInt32", QVNumberCreateWithUInt32),
        CreatesNumber("QVNumberCreateWithUInt64", QVNumberCreateWithUInt64),
        CreatesNumber("QVNumberCreateWithFloat", QVNumberCreateWithFloat),
        CreatesNumber("QVNumberCreateWithDouble", QVNumberCreateWithDouble),
        {"QVNumberGetNativeType",
         [](Attempt& attempt) {
             const Owned number{QVNumberCreateWithFloat(7)};
             attempt.NeedsNoMemory([&] { return QVNumberGetNativeType(number.Get()) == QVNumberTypeFloat; });
         },
         [] { return QVNumberGetNativeType(nullptr) == 0; }},
        {"QVNumberGetBoolValue",
         [](Attempt& attempt) {
             const Owned number{QVNumberCreateWithFloat(7)};
             attempt.NeedsNoMemory([&] { return QVNumberGetBoolValue(number.Get()) == 1; });
         },
         [] { return QVNumberGetBoolValue(nullptr) == 0; }},
        GetsNumber("QVNumberGetSInt8Value", QVNumberGetSInt8Value),
        GetsNumber("QVNumberGetSInt16Value", QVNumberGetSInt16Value),
        GetsNumber("QVNumberGetSInt32Value", QVNumberGetSInt32Value),
        GetsNumber("QVNumberGetSInt64Value", QVNumberGetSInt64Value),
        GetsNumber("QVNumberGetUInt8Value", QVNumberGetUInt8Value),
        GetsNumber("QVNumberGetUInt16Value", QVNumberGetUInt16Value),
        GetsNumber("QVNumberGetUInt32Value", QVNumberGetUInt32Value),
        GetsNumber("QVNumberGetUInt64Value", QVNumberGetUInt64Value),
        GetsNumber("QVNumberGetFloatValue", QVNumberGetFloatValue),
        GetsNumber("QVNumberGetDoubleValue", QVNumberGetDoubleValue),
    };
}

constexpr const char kBytes[1000] = "abc";

Owned MakeABC() {
    return Owned{QVDataCreate("abc", 3)};
}

// A question to the Data "abc".
template <class Question>
Row AsksData(const char* name, Question isRight, bool (*isRightForNull)()) {
    return {name,
            [isRight](Attempt& attempt) {
                const Owned data = MakeABC();
                attempt.NeedsNoMemory([&] { return isRight(data.Get()); });
            },
            isRightForNull};
}

// A function that makes the Data "abc" larger; without memory it stays.
template <class Grow>
Row GrowsData(const char* name, std::size_t size, Grow grow, bool (*isRightForNull)()) {
    return {name,
            [=](Attempt& attempt) {
                const Owned data = MakeABC();
                attempt.Answers(1, 0, [&] { return grow(data.Get()); });
                EXPECT_EQ(QVDataGetSize(data.Get()), attempt.MetShortage() ? 3U : size);
                EXPECT_EQ(std::memcmp(QVDataGetImutableBuffer(data.Get()), "abc", 3), 0);
            },
            isRightForNull};
}

Rows DataRows() {
    return {
        {"QVDataCreate",
         [](Attempt& attempt) {
             attempt.Logs("Can't allocate the object for the QVDataRef. (size=1000)").Creates([] {
                 return QVDataCreate(kBytes, sizeof kBytes);
             });
         },
         TakesNoHandle},
        {"QVDataCreateNoCopy",
         [](Attempt& attempt) {
             char bytes[10] = {};
             attempt.Logs("Can't allocate the object for the QVDataRef. (size=10)").Creates([&] {
                 return QVDataCreateNoCopy(bytes, sizeof bytes, 1);
             });
         },
         TakesNoHandle},
        AsksData(
            "QVDataGetImutableBuffer",
            [](void* data) { return std::memcmp(QVDataGetImutableBuffer(data), "abc", 3) == 0; },
            [] { return QVDataGetImutableBuffer(nullptr) == nullptr; }),
        AsksData(
            "QVDataGetMutableBuffer",
            [](void* data) { return QVDataGetMutableBuffer(data) == QVDataGetImutableBuffer(data); },
            [] { return QVDataGetMutableBuffer(nullptr) == nullptr; }),
        AsksData(
            "QVDataGetSize", [](void* data) { return QVDataGetSize(data) == 3; },
            [] { return QVDataGetSize(nullptr) == 0; }),
        GrowsData(
            "QVDataSetSize", 1000, [](void* data) { return QVDataSetSize(data, 1000); },
            [] { return QVDataSetSize(nullptr, 1) == 0; }),
        GrowsData(
            "QVDataReserve", 3, [](void* data) { return QVDataReserve(data, 1000); },
            [] { return QVDataReserve(nullptr, 1) == 0; }),
        {"QVDataAppendData",
         [](Attempt& attempt) {
             const Owned data = MakeABC();
             const Owned other{QVDataCreate(kBytes, sizeof kBytes)};
             attempt.Answers(1, 0, [&] { return QVDataAppendData(data.Get(), other.Get()); });
             EXPECT_EQ(QVDataGetSize(data.Get()), attempt.MetShortage() ? 3U : 1003U);
         },
         [] {
             const Owned data = MakeABC();
             return QVDataAppendData(nullptr, nullptr) == 0 && QVDataAppendData(nullptr, data.Get()) == 0 &&
                    QVDataAppendData(data.Get(), nullptr) == 0;
         }},
        GrowsData(
            "QVDataAppendBuffer", 1003,
            [](void* data) { return QVDataAppendBuffer(data, kBytes, sizeof kBytes); },
            [] { return QVDataAppendBuffer(nullptr, kBytes, 1) == 0; }),
        GrowsData(
            "QVDataSetBytes", 1000, [](void* data) { return QVDataSetBytes(data, kBytes, 0, sizeof kBytes); },
            [] { return QVDataSetBytes(nullptr, kBytes, 0, 1) == 0; }),
        AsksData(
            "QVDataGetBytes",
            [](void* data) {
                char byte = 0;
                return QVDataGetBytes(data, &byte, 1, 1, nullptr) == 1 && byte == 'b';
            },
            [] {
                char byte = 0;
                return QVDataGetBytes(nullptr, &byte, 0, 1, nullptr) == 0;
            }),
        {"QVDataWriteToFile",
         [](Attempt& attempt) {
             const TemporaryDirectory directory;
             const Owned path{QVStringCreateWithCString((directory / "file").c_str())};
             const Owned data = MakeABC();
             // Opening resolves the path again where setting it failed.
             attempt.OthersLog().MayDoWithout().AnswersCode(
                 [&] { return QVDataWriteToFile(data.Get(), path.Get()); });
         },
         [] {
             const Owned data = MakeABC();
             return QVDataWriteToFile(nullptr, nullptr) < 0 && QVDataWriteToFile(data.Get(), nullptr) < 0;
         }},
        {"QVDataCreateFromFile",
         [](Attempt& attempt) {
             const TemporaryDirectory directory;
             WriteFile(directory / "file", "abc");
             const Owned path{QVStringCreateWithCString((directory / "file").c_str())};
             attempt.OthersLog().MayDoWithout().Lends([&] { return QVDataCreateFromFile(path.Get()); });
         },
         [] { return QVDataCreateFromFile(nullptr) == nullptr; }},
    };
}

// A component of the present moment lies between two values; null has 0.
template <class Get>
Row GetsComponent(const char* name, Get get, long least, long greatest) {
    return {name,
            [=](Attempt& attempt) {
                void* const date = QVDateNow();
                attempt.NeedsNoMemory([&] { return get(date) >= least && get(date) <= greatest; });
            },
            [get] { return get(nullptr) == 0; }};
}

// A setter stores what it is given.
Row SetsComponent(const char* name, void (*set)(void*, int), int (*get)(void*)) {
    return {name,
            [=](Attempt& attempt) {
                void* const date = QVDateNow();
                attempt.NeedsNoMemory([&] { set(date, 77); }, [&] { return get(date) == 77; });
            },
            [set] {
                set(nullptr, 1);
                return true;
            }};
}

Row ConvertsDate(const char* name, void* (*convert)(void*)) {
    return {name,
            [convert](Attempt& attempt) {
                void* const date = QVDateNow();
                attempt.OthersLog().Lends([&] { return convert(date); });
            },
            [convert] { return convert(nullptr) == nullptr; }};
}

Rows DateRows() {
    return {
        {"QVDateNow", [](Attempt& attempt) { attempt.OthersLog().Lends(QVDateNow); }, TakesNoHandle},
        GetsComponent("QVDateGetSeconds", QVDateGetSeconds, 0, 60),
        GetsComponent("QVDateGetMinutes", QVDateGetMinutes, 0, 59),
        GetsComponent("QVDateGetHour", QVDateGetHour, 0, 23),
        GetsComponent("QVDateGetDayOfMonth", QVDateGetDayOfMonth, 1, 31),
        GetsComponent("QVDateGetMonthOfYear", QVDateGetMonthOfYear, 1, 12),
        GetsComponent("QVDateGetYear", QVDateGetYear, 1970, 9999),
        GetsComponent("QVDateGetDayOfWeek", QVDateGetDayOfWeek, 0, 6),
        GetsComponent("QVDateGetDayOfYear", QVDateGetDayOfYear, 0, 365),
        GetsComponent("QVDateIsSummerTime", QVDateIsSummerTime, 0, 1),
        GetsComponent("QVDateGetOffsetFromUTC", QVDateGetOffsetFromUTC, -86400, 86400),
        {"QVDateGetTimeZone",
         [](Attempt& attempt) {
             void* const date = QVDateNow();
             attempt.NeedsNoMemory([&] { return QVDateGetTimeZone(date) != nullptr; });
         },
         [] { return QVDateGetTimeZone(nullptr) == nullptr; }},
        SetsComponent("QVDateSetSeconds", QVDateSetSeconds, QVDateGetSeconds),
        SetsComponent("QVDateSetMinutes", QVDateSetMinutes, QVDateGetMinutes),
        SetsComponent("QVDateSetHour", QVDateSetHour, QVDateGetHour),
        SetsComponent("QVDateSetDayOfMonth", QVDateSetDayOfMonth, QVDateGetDayOfMonth),
        SetsComponent("QVDateSetMonthOfYear", QVDateSetMonthOfYear, QVDateGetMonthOfYear),
        SetsComponent("QVDateSetYear", QVDateSetYear, QVDateGetYear),
        SetsComponent("QVDateSetOffsetFromUTC", QVDateSetOffsetFromUTC,
                      [](void* date) { return static_cast<int>(QVDateGetOffsetFromUTC(date)); }),
        {"QVDateAdjustComponents",
         [](Attempt& attempt) {
             void* const date = QVDateNow();
             QVDateSetMonthOfYear(date, 13);
             attempt.OthersLog().MayDoWithout().Changes(
                 1, 13, [&] { QVDateAdjustComponents(date); }, [&] { return QVDateGetMonthOfYear(date); });
         },
         [] {
             QVDateAdjustComponents(nullptr);
             return true;
         }},
        {"QVDateCompare",
         [](Attempt& attempt) {
             void* const date = QVDateNow();
             attempt.NeedsNoMemory([&] { return QVDateCompare(date, date) == 0; });
         },
         [] {
             void* const date = QVDateNow();
             return QVDateCompare(nullptr, nullptr) == 0 && QVDateCompare(nullptr, date) == -1 &&
                    QVDateCompare(date, nullptr) == 1;
         }},
        {"QVDateDiff",
         [](Attempt& attempt) {
             void* const date = QVDateNow();
             attempt.NeedsNoMemory([&] { return QVDateDiff(date, date) == 0; });
         },
         [] {
             void* const date = QVDateNow();
             return QVDateDiff(nullptr, nullptr) == 0 && QVDateDiff(nullptr, date) == 0 &&
                    QVDateDiff(date, nullptr) == 0;
         }},
        ConvertsDate("QVDateGetUTCDateTime", QVDateGetUTCDateTime),
        ConvertsDate("QVDateGetLocalDateTime", QVDateGetLocalDateTime),
        {"QVDateGetStringWithFormat",
         [](Attempt& attempt) {
             void* const date = QVDateNow();
             const Owned format = MakeString(L"%Y-%m-%d, a rather long text that needs room of its own");
             attempt.OthersLog().Lends([&] { return QVDateGetStringWithFormat(date, format.Get()); });
         },
         [] {
             const Owned format = MakeString(L"%Y");
             return QVDateGetStringWithFormat(nullptr, nullptr) == nullptr &&
                    QVDateGetStringWithFormat(nullptr, format.Get()) == nullptr &&
                    TextOf(QVDateGetStringWithFormat(QVDateNow(), nullptr)).empty();
         }},
    };
}

}  // namespace

Rows ValueRows() {
    return Joined({NumberRows(), DataRows(), DateRows()});
}

}  // namespace qvtest

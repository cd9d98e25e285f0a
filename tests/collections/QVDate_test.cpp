#include <climits>
#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <string>
#include <time.h>

#include <QVFoundation/QVDate.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "runtime/Owned.h"
#include "support/failing_allocator.h"

namespace {

using qv::Owned;

// The process's time zone for the length of a test.
class Zone {
public:
    explicit Zone(const char* name) {
        if (const char* current = std::getenv("TZ")) saved_ = current;
        setenv("TZ", name, 1);
        tzset();
    }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;
    ~Zone() {
        if (saved_) {
            setenv("TZ", saved_->c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }

private:
    std::optional<std::string> saved_;
};

class Dates : public testing::Test {
protected:
    const Owned pool_{QVTemporaryObjectsPoolCreate()};

    // A temporary date with these components; the summer-time flag is that of now until it is adjusted.
    static void* DateOf(int year, int month, int day, int hour, int minutes, int seconds) {
        void* date = QVDateNow();
        QVDateSetYear(date, year);
        QVDateSetMonthOfYear(date, month);
        QVDateSetDayOfMonth(date, day);
        QVDateSetHour(date, hour);
        QVDateSetMinutes(date, minutes);
        QVDateSetSeconds(date, seconds);
        return date;
    }

    static std::wstring Format(void* date, const wchar_t* format) {
        void* text = QVDateGetStringWithFormat(date, QVSTR(format));
        return text == nullptr ? L"null" : QVStringGetBuffer(text);
    }

    static void ExpectFields(void* date, const tm& expected) {
        EXPECT_EQ(QVDateGetSeconds(date), expected.tm_sec);
        EXPECT_EQ(QVDateGetMinutes(date), expected.tm_min);
        EXPECT_EQ(QVDateGetHour(date), expected.tm_hour);
        EXPECT_EQ(QVDateGetDayOfMonth(date), expected.tm_mday);
        EXPECT_EQ(QVDateGetMonthOfYear(date), expected.tm_mon + 1);
        EXPECT_EQ(QVDateGetYear(date), expected.tm_year + 1900);
        EXPECT_EQ(QVDateGetDayOfWeek(date), expected.tm_wday);
        EXPECT_EQ(QVDateGetDayOfYear(date), expected.tm_yday);
        EXPECT_EQ(QVDateIsSummerTime(date), expected.tm_isdst > 0);
        EXPECT_EQ(QVDateGetOffsetFromUTC(date), expected.tm_gmtoff);
        const std::wstring zone = QVStringGetBuffer(QVDateGetTimeZone(date));
        EXPECT_EQ(std::string(zone.begin(), zone.end()), expected.tm_zone);
    }
};

TEST_F(Dates, NowIsTheCurrentLocalTimeAndTemporary) {
    const time_t before = time(nullptr);
    void* now = QVDateNow();
    const time_t after = time(nullptr);
    EXPECT_EQ(QVGetTypeID(now), 29);
    EXPECT_EQ(QVGetRetainCount(now), 1UL);
    tm epoch = {};
    epoch.tm_mday = 1;
    epoch.tm_year = 70;
    const double sinceEpoch =
        QVDateDiff(now, DateOf(1970, 1, 1, 0, 0, 0)) + static_cast<double>(mktime(&epoch));
    EXPECT_GE(sinceEpoch + 7200, static_cast<double>(before));
    EXPECT_LE(sinceEpoch - 7200, static_cast<double>(after));
}

TEST_F(Dates, SettersStoreTheValueAndChangeNothingElse) {
    void* date = QVDateNow();
    const int weekday = QVDateGetDayOfWeek(date);
    const int dayOfYear = QVDateGetDayOfYear(date);
    void* zone = QVDateGetTimeZone(date);
    QVDateSetSeconds(date, -5);
    QVDateSetMinutes(date, 1000);
    QVDateSetHour(date, INT_MAX);
    QVDateSetDayOfMonth(date, INT_MIN);
    QVDateSetMonthOfYear(date, 99);
    QVDateSetYear(date, -3);
    QVDateSetOffsetFromUTC(date, -7777);
    EXPECT_EQ(QVDateGetSeconds(date), -5);
    EXPECT_EQ(QVDateGetMinutes(date), 1000);
    EXPECT_EQ(QVDateGetHour(date), INT_MAX);
    EXPECT_EQ(QVDateGetDayOfMonth(date), INT_MIN);
    EXPECT_EQ(QVDateGetMonthOfYear(date), 99);
    EXPECT_EQ(QVDateGetYear(date), -3);
    EXPECT_EQ(QVDateGetOffsetFromUTC(date), -7777);
    EXPECT_EQ(QVDateGetDayOfWeek(date), weekday);
    EXPECT_EQ(QVDateGetDayOfYear(date), dayOfYear);
    EXPECT_EQ(QVDateGetTimeZone(date), zone);
}

TEST_F(Dates, AdjustingNormalisesAndRecomputes) {
    const Zone zone("UTC0");
    void* date = DateOf(2008, 13, 1, 0, 0, 0);
    QVDateAdjustComponents(date);
    EXPECT_EQ(Format(date, L"%Y-%m-%d %a"), L"2009-01-01 Thu");
    EXPECT_EQ(QVDateGetDayOfWeek(date), 4);
    EXPECT_EQ(QVDateGetDayOfYear(date), 0);

    date = DateOf(2008, 3, 0, 25, -1, 61);
    QVDateAdjustComponents(date);
    EXPECT_EQ(Format(date, L"%Y-%m-%d %H:%M:%S"), L"2008-03-01 01:00:01");
}

TEST_F(Dates, TheStoredSummerFlagDecidesTheInstant) {
    const Zone zone("Europe/Berlin");
    void* winter = DateOf(2026, 1, 15, 12, 0, 0);
    QVDateAdjustComponents(winter);
    QVDateAdjustComponents(winter);
    ASSERT_FALSE(QVDateIsSummerTime(winter));
    void* summer = DateOf(2026, 7, 15, 12, 0, 0);
    QVDateAdjustComponents(summer);
    ASSERT_TRUE(QVDateIsSummerTime(summer));
    QVDateSetHour(summer, 12);
    QVDateSetMonthOfYear(summer, 1);
    QVDateSetHour(winter, 12);
    // The same components, but one is said to be summer time: its instant is an hour earlier.
    EXPECT_EQ(QVDateDiff(winter, summer), 3600.0);
}

TEST_F(Dates, ComparesByInstant) {
    const Zone zone("UTC0");
    void* a = DateOf(2026, 11, 15, 15, 8, 30);
    void* b = DateOf(2026, 11, 15, 14, 8, 30);
    EXPECT_EQ(QVDateCompare(a, a), 0);
    EXPECT_EQ(QVDateCompare(a, b), 1);
    EXPECT_EQ(QVDateCompare(b, a), -1);
    EXPECT_EQ(QVDateDiff(a, b), 3600.0);
    EXPECT_EQ(QVDateDiff(b, a), -3600.0);
}

TEST_F(Dates, UTCFormShowsTheSameInstant) {
    const Zone zone("Asia/Tokyo");
    void* date = DateOf(2026, 11, 16, 0, 8, 30);
    void* utc = QVDateGetUTCDateTime(date);
    EXPECT_EQ(QVDateGetHour(utc), 15);
    EXPECT_EQ(QVDateGetDayOfMonth(utc), 15);
    EXPECT_EQ(QVDateGetOffsetFromUTC(utc), 0);
    EXPECT_STREQ(QVStringGetBuffer(QVDateGetTimeZone(utc)), L"GMT");
    EXPECT_EQ(QVGetRetainCount(utc), 1UL);
    void* local = QVDateGetLocalDateTime(date);
    EXPECT_EQ(QVDateGetHour(local), 0);
    EXPECT_EQ(QVDateGetOffsetFromUTC(local), 9 * 3600);
    EXPECT_STREQ(QVStringGetBuffer(QVDateGetTimeZone(local)), L"JST");
}

TEST_F(Dates, AFormattedTextHasRoomForTwiceTheFormat) {
    const Zone zone("UTC0");
    void* date = DateOf(2026, 11, 15, 15, 8, 30);
    EXPECT_EQ(Format(date, L"%Y"), L"2026");
    EXPECT_EQ(Format(date, L"%Y-%m-%dT%H:%M:%SZ"), L"2026-11-15T15:08:30Z");
    EXPECT_EQ(Format(date, L"%c"), L"");  // far longer than four characters
    EXPECT_EQ(Format(date, L""), L"");
    void* text = QVDateGetStringWithFormat(date, QVSTR(L"%Y"));
    EXPECT_EQ(QVDateGetStringWithFormat(date, QVSTR(L"%Y")), text);  // shared like any literal
    EXPECT_STREQ(QVStringGetBuffer(QVDateGetStringWithFormat(date, nullptr)), L"");
}

TEST_F(Dates, WhatTheCLibraryCannotRepresentIsRefused) {
    for (const int year : {INT_MIN, INT_MAX}) {
        void* date = DateOf(year, year, 1, 0, 0, 0);
        QVDateAdjustComponents(date);
        EXPECT_EQ(QVDateGetYear(date), year);
        EXPECT_EQ(QVDateGetMonthOfYear(date), year);
        EXPECT_EQ(QVDateGetUTCDateTime(date), nullptr);
        EXPECT_EQ(QVDateGetLocalDateTime(date), nullptr);
        EXPECT_EQ(Format(date, L"%Y"), L"");
    }
}

TEST_F(Dates, TheLastSecondOf1969IsNoFailure) {
    const Zone zone("UTC0");
    void* date = DateOf(1969, 12, 31, 23, 59, 59);
    EXPECT_EQ(Format(date, L"%Y-%m-%d"), L"1969-12-31");
    QVDateSetSeconds(date, 60);
    QVDateAdjustComponents(date);
    EXPECT_EQ(Format(date, L"%Y-%m-%d"), L"1970-01-01");
}

TEST_F(Dates, YearsBeyond32BitTimesWork) {
    const Zone zone("UTC0");
    void* date = DateOf(2500, 2, 29, 0, 0, 0);
    QVDateAdjustComponents(date);
    EXPECT_EQ(Format(date, L"%Y-%m-%d %a"), L"2500-03-01 Mon");
    date = DateOf(1600, 2, 29, 0, 0, 0);
    QVDateAdjustComponents(date);
    EXPECT_EQ(Format(date, L"%Y-%m-%d %a"), L"1600-02-29 Tue");
}

TEST_F(Dates, NullIsTolerated) {
    void* date = QVDateNow();
    EXPECT_EQ(QVDateGetYear(nullptr), 0);
    EXPECT_EQ(QVDateGetTimeZone(nullptr), nullptr);
    EXPECT_EQ(QVDateGetOffsetFromUTC(nullptr), 0);
    EXPECT_EQ(QVDateIsSummerTime(nullptr), 0);
    QVDateSetYear(nullptr, 1);
    QVDateSetOffsetFromUTC(nullptr, 1);
    QVDateAdjustComponents(nullptr);
    EXPECT_EQ(QVDateCompare(nullptr, nullptr), 0);
    EXPECT_EQ(QVDateCompare(nullptr, date), -1);
    EXPECT_EQ(QVDateCompare(date, nullptr), 1);
    EXPECT_EQ(QVDateDiff(nullptr, date), 0.0);
    EXPECT_EQ(QVDateDiff(date, nullptr), 0.0);
    EXPECT_EQ(QVDateGetUTCDateTime(nullptr), nullptr);
    EXPECT_EQ(QVDateGetLocalDateTime(nullptr), nullptr);
    EXPECT_EQ(QVDateGetStringWithFormat(nullptr, QVSTR(L"%Y")), nullptr);
}

TEST_F(Dates, EveryFailingAllocationLeavesNothingBehind) {
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([] {
        const Owned pool{QVTemporaryObjectsPoolCreate()};
        if (!pool) return;
        void* date = QVDateNow();
        if (date == nullptr) return;
        (void)QVDateGetUTCDateTime(date);
        (void)QVDateGetLocalDateTime(date);
        QVDateAdjustComponents(date);
        (void)QVDateGetStringWithFormat(date, QVSTR(L"%Y-%m-%d"));
    });
    EXPECT_GE(failures, 6U);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

// Random components in many zones, among them those with summer-time gaps, against the C library.
TEST_F(Dates, AgreeWithTheCLibraryInManyZones) {
    std::mt19937 random(20261115);
    const auto between = [&random](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    for (const char* name :
         {"UTC", "Europe/Berlin", "Europe/London", "America/New_York", "America/St_Johns",
          "America/Sao_Paulo", "Asia/Tokyo", "Asia/Kolkata", "Asia/Kathmandu", "Asia/Tehran",
          "Australia/Lord_Howe", "Pacific/Apia", "Pacific/Chatham", "Africa/Casablanca"}) {
        const Zone zone(name);
        SCOPED_TRACE(name);
        void* previous = nullptr;
        time_t previousInstant = 0;
        for (int round = 0; round < 400; ++round) {
            const Owned pool{QVTemporaryObjectsPoolCreate()};
            tm expected = {};
            expected.tm_year = (round % 8 == 0 ? between(-100000, 100000) : between(1902, 2100)) - 1900;
            expected.tm_mon = between(-5, 20);
            expected.tm_mday = between(-40, 80);
            expected.tm_hour = between(-30, 60);
            expected.tm_min = between(-100, 200);
            expected.tm_sec = between(-100, 200);
            void* date = DateOf(expected.tm_year + 1900, expected.tm_mon + 1, expected.tm_mday,
                                expected.tm_hour, expected.tm_min, expected.tm_sec);
            expected.tm_isdst = QVDateIsSummerTime(date);
            const time_t instant = mktime(&expected);
            localtime_r(&instant, &expected);

            wchar_t text[200];
            const size_t length = wcsftime(text, 200, L"%Y-%m-%d %H:%M:%S %a %b %j", &expected);
            EXPECT_EQ(Format(date, L"%Y-%m-%d %H:%M:%S %a %b %j"), std::wstring(text, length));

            QVDateAdjustComponents(date);
            ExpectFields(date, expected);
            ExpectFields(QVDateGetLocalDateTime(date), expected);
            tm utc = {};
            gmtime_r(&instant, &utc);
            ExpectFields(QVDateGetUTCDateTime(date), utc);
            if (previous != nullptr) {
                EXPECT_EQ(QVDateDiff(date, previous), difftime(instant, previousInstant));
            }
            QVRelease(previous);
            previous = QVRetain(date);
            previousInstant = instant;
        }
        QVRelease(previous);
    }
}

}  // namespace

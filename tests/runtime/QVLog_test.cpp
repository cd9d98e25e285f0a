#include <clocale>
#include <cstdio>
#include <ctime>
#include <cwchar>
#include <gtest/gtest.h>
#include <string>
#include <thread>

#include <QVFoundation/QVLibrary.h>

#include "runtime/log_line.h"
#include "support/log_capture.h"

namespace {

std::string Utf8(const wchar_t* text, std::size_t length) {
    std::string narrow;
    for (std::size_t i = 0; i < length; ++i)
        narrow += static_cast<char>(text[i]);
    return narrow;
}

std::string Prefix(int year, int monthFromZero, int day, int hour, int minute, int second, int sequence) {
    std::tm time = {};
    time.tm_year = year - 1900;
    time.tm_mon = monthFromZero;
    time.tm_mday = day;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
    wchar_t text[qv::kLogPrefixMax];
    return Utf8(text, qv::WriteLogPrefix(text, time, sequence));
}

// The one message of a call of QVLog.
template <class... Arguments>
std::string Logged(const wchar_t* format, Arguments... arguments) {
    qvtest::LogCapture log;
    QVLog(format, arguments...);
    const std::vector<std::string> messages = log.Messages();
    return messages.size() == 1 ? messages[0] : "not one line: " + log.Text();
}

TEST(LogPrefix, CountsMonthsFromZeroAndYearsFrom2000) {
    EXPECT_EQ(Prefix(2026, 10, 15, 15, 8, 30, 10), "26/10/15 15:08:30[10] ");
    EXPECT_EQ(Prefix(2009, 0, 1, 0, 0, 0, 0), "09/00/01 00:00:00[0] ");
    EXPECT_EQ(Prefix(2031, 11, 31, 23, 59, 60, 123456), "31/11/31 23:59:60[123456] ");
}

TEST(LogPrefix, PrintsNegativeNumbersAsTheCLibraryDoes) {
    char expected[64];
    for (const int year : {1999, 1900, 1899, 0, 123456}) {
        std::snprintf(expected, sizeof expected, "%02d/%02d/%02d %02d:%02d:%02d[%d] ", year - 2000, 3, 4, 5,
                      6, 7, -8);
        EXPECT_EQ(Prefix(year, 3, 4, 5, 6, 7, -8), expected);
    }
}

TEST(LogPrefix, ShowsTheLocalTimeOfTheCall) {
    qvtest::LogCapture log;
    const std::time_t before = std::time(nullptr);
    QVLog(L"now");
    const std::time_t after = std::time(nullptr);
    const std::string line = log.Lines().at(0);
    bool matches = false;
    for (std::time_t t = before; t <= after; ++t) {
        std::tm fields = {};
        localtime_r(&t, &fields);
        wchar_t text[qv::kLogPrefixMax];
        const std::string prefix = Utf8(text, qv::WriteLogPrefix(text, fields, 0));
        const std::size_t stamp = prefix.find('[');
        matches |= line.compare(0, stamp, prefix, 0, stamp) == 0;
    }
    EXPECT_TRUE(matches) << line;
}

// What a process prints that has not logged before.
std::string OutputOfFreshProcess() {
    std::FILE* pipe = popen(LOG_TWO_LINES, "r");
    std::string text;
    char buffer[512];
    for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        text.append(buffer, got);
    pclose(pipe);
    return text;
}

TEST(LogSequence, CountsTheLinesOfTheProcessFromZero) {
    const std::string text = OutputOfFreshProcess();
    EXPECT_NE(text.find("[0] first\n"), std::string::npos) << text;
    EXPECT_NE(text.find("[1] second\n"), std::string::npos) << text;
}

TEST(LogMessage, FormatsItsArguments) {
    EXPECT_EQ(Logged(L"%d items of %ls, %C", 3, L"text", L'x'), "3 items of text, x");
    EXPECT_EQ(Logged(L""), "");
    EXPECT_EQ(Logged(nullptr), "");
}

TEST(LogMessage, PercentSignsAreFormattedTwice) {
    EXPECT_EQ(Logged(L"100%%%%"), "100%");
    EXPECT_EQ(Logged(L"100%%"), "100%");
    EXPECT_EQ(Logged(L"%%d %%%%d"), "%d %d");
    EXPECT_EQ(Logged(L"%ls", L"%s%n%d%%"), "%s%n%d%");
    EXPECT_EQ(Logged(L"%ls", L"%%%"), "%%");
}

TEST(LogMessage, IsCutAfter511Characters) {
    const std::wstring text(511, L'a');
    EXPECT_EQ(Logged(L"%ls", text.c_str()), std::string(511, 'a'));
    const std::wstring longer(512, L'a');
    EXPECT_EQ(Logged(L"%ls", longer.c_str()), std::string(511, 'a'));
    const std::wstring huge(100000, L'a');
    EXPECT_EQ(Logged(L"%ls", huge.c_str()), std::string(511, 'a'));
}

TEST(LogMessage, AnyTextIsUtf8InAnyLocale) {
    EXPECT_EQ(Logged(L"%ls", L"caf\u00E9 \u65E5\u672C \U0001F600"),
              "caf\xC3\xA9 \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80");
    const wchar_t surrogate[] = {L'a', static_cast<wchar_t>(0xD800), L'b', 0};
    EXPECT_EQ(Logged(L"%ls", surrogate), "a?b");
}

TEST(LogMessage, KeepsItsOrderWithPrintfAndLeavesTheOrientationAlone) {
    qvtest::LogCapture log;
    std::printf("before ");
    QVLog(L"line");
    std::printf("after\n");
    const std::string text = log.Text();
    EXPECT_EQ(text.find("before "), 0U);
    EXPECT_NE(text.find("] line\nafter\n"), std::string::npos);
    EXPECT_LE(std::fwide(stdout, 0), 0);
}

TEST(LogThreads, LinesOfSeveralThreadsStayWhole) {
    qvtest::LogCapture log;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 200; ++i)
                QVLog(L"a line of one thread");
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    const std::vector<std::string> messages = log.Messages();
    EXPECT_EQ(messages.size(), 800U);
    for (const std::string& message : messages)
        EXPECT_EQ(message, "a line of one thread");
}

}  // namespace

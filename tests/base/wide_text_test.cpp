#include "base/wide_text.h"

#include <cwchar>
#include <gtest/gtest.h>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>

#include "support/failing_allocator.h"

namespace {

using namespace std::string_literals;
using qv::WideText;

constexpr size_t kInline = WideText::kInlineCapacity;

std::wstring Letters(size_t count) {
    std::wstring text(count, L'a');
    for (size_t i = 0; i < count; ++i)
        text[i] = static_cast<wchar_t>(L'a' + i % 26);
    return text;
}

bool LiesInside(const WideText& text) {
    const auto* data = reinterpret_cast<const char*>(text.Data());
    const auto* object = reinterpret_cast<const char*>(&text);
    return data >= object && data < object + sizeof text;
}

TEST(WideText, IsAlwaysAllocatedAndTerminated) {
    const WideText empty;
    EXPECT_EQ(empty.Length(), 0U);
    EXPECT_STREQ(empty.Data(), L"");
    EXPECT_STREQ(WideText(std::wstring_view()).Data(), L"");
}

TEST(WideText, ShortTextsLieInside) {
    const size_t before = qvtest::LiveAllocations();
    const WideText fits(Letters(kInline));
    EXPECT_TRUE(LiesInside(fits));
    EXPECT_EQ(qvtest::LiveAllocations(), before);
    const WideText doesNot(Letters(kInline + 1));
    EXPECT_FALSE(LiesInside(doesNot));
    EXPECT_EQ(doesNot.View(), Letters(kInline + 1));
    EXPECT_EQ(qvtest::LiveAllocations(), before + 1);
}

TEST(WideText, MovingTakesTheTextAndLeavesNone) {
    for (const size_t length : {size_t{0}, size_t{5}, kInline, kInline + 1, size_t{500}}) {
        WideText source(Letters(length));
        WideText moved(std::move(source));
        EXPECT_EQ(moved.View(), Letters(length));
        EXPECT_EQ(source.View(), L"");  // NOLINT(bugprone-use-after-move): a moved-from text is empty
        for (const size_t targetLength : {size_t{3}, size_t{300}}) {
            WideText target(Letters(targetLength));
            target = std::move(moved);
            EXPECT_EQ(target.View(), Letters(length));
            moved = std::move(target);
        }
        WideText& itself = moved;
        moved = std::move(itself);
        EXPECT_EQ(moved.View(), Letters(length));
    }
}

TEST(WideText, RoomIsTakenAsFarAsItWasWritten) {
    WideText text(L"ab");
    wchar_t* room = text.AppendRoom(100);
    std::wmemcpy(room, L"cdXX", 4);
    text.TakeRoom(2);
    EXPECT_EQ(text.View(), L"abcd");
    EXPECT_EQ(std::wcslen(text.Data()), 4U);
    EXPECT_GE(text.Capacity(), 102U);
}

TEST(WideText, AppendingUpToZeroTakesWhatStandsBeforeIt) {
    for (const size_t length : {0U, 1U, 2U, 3U, 12U, 13U, 32U, 33U, 100U}) {
        for (size_t zero = 0; zero <= length; ++zero) {
            std::wstring added = Letters(length) + L'\0';
            added[zero] = L'\0';
            for (const size_t room : {size_t{0}, size_t{500}}) {
                WideText text(L"ab");
                text.Reserve(room);
                text.AppendUpToZero({added.data(), length});
                ASSERT_EQ(text.View(), L"ab" + Letters(zero)) << length << " characters, 0 at " << zero;
                ASSERT_EQ(text.Data()[2 + zero], L'\0');
            }
        }
    }
    // A 0 is told from characters that have a 0 half or come next to it.
    const std::wstring_view wild = L"\x00010000\x7FFFFFFF\x00000001\x0000FFFF";
    WideText text;
    text.AppendUpToZero(wild);
    EXPECT_EQ(text.View(), wild);
}

TEST(WideText, ReservingIsExactAndKeepsTheText) {
    WideText text(L"ab");
    text.Reserve(1000);
    EXPECT_EQ(text.Capacity(), 1000U);
    text.Reserve(10);
    EXPECT_EQ(text.Capacity(), 1000U);
    EXPECT_EQ(text.View(), L"ab");
}

TEST(WideText, AppendingAllocatesALogarithmicNumberOfTimes) {
    WideText text;
    size_t moves = 0;
    const wchar_t* data = text.Data();
    for (int i = 0; i < 1000000; ++i) {
        text.Append(L"x");
        moves += text.Data() != data;
        data = text.Data();
    }
    EXPECT_EQ(text.Length(), 1000000U);
    EXPECT_LE(moves, 20U);
}

TEST(WideText, ReplacingAPartByItselfNeedsNoMoreRoomThanItsLength) {
    WideText text(Letters(30));
    for (int i = 0; i < 100; ++i)
        text.Replace(0, 30, text.View());
    EXPECT_EQ(text.View(), Letters(30));
    EXPECT_EQ(text.Capacity(), 30U);
}

TEST(WideText, TooLongIsALengthError) {
    WideText text(L"ab");
    const volatile size_t most =
        WideText::kMaxLength;  // volatile, or compilers warn of the lengths tried here
    EXPECT_THROW((void)text.AppendRoom(most - 1), std::length_error);
    EXPECT_THROW((void)text.AppendRoom(static_cast<size_t>(-1)), std::length_error);
    EXPECT_THROW(text.Append({text.Data(), most}), std::length_error);
    EXPECT_THROW(text.Replace(1, 0, {text.Data(), most}), std::length_error);
    EXPECT_THROW(text.Reserve(most + 1), std::length_error);
    EXPECT_THROW(WideText({text.Data(), most + 1}), std::length_error);
    EXPECT_EQ(text.View(), L"ab");
}

TEST(WideText, ReplacingBeyondTheEndIsRefused) {
    WideText text(L"ab");
    EXPECT_THROW(text.Replace(3, 0, L"x"), std::out_of_range);
    EXPECT_EQ(text.View(), L"ab");
}

TEST(WideText, WhenMemoryRunsOutNothingChanges) {
    WideText text(L"abc");
    const std::wstring more = Letters(100);
    const auto fails = [&](auto change) {
        const qvtest::FailAllocation failing(0);
        EXPECT_THROW(change(), std::bad_alloc);
        EXPECT_EQ(text.View(), L"abc");
    };
    fails([&] { text.Append(more); });
    fails([&] { text.Replace(1, 1, more); });
    fails([&] { text.Replace(1, 1, text.View()); });
    fails([&] { text.Reserve(100); });
    fails([&] { return text.AppendRoom(100); });
    fails([&] { return WideText(more).Length(); });
}

// Random edits, checked against the standard wide string after each step; half of them with views of the text
// itself.
TEST(WideTextModel, AgreesWithTheStandardWideString) {
    std::mt19937 random(20260117);
    const auto below = [&](size_t bound) { return static_cast<size_t>(random() % bound); };
    WideText text;
    std::wstring model;
    for (int step = 0; step < 100000; ++step) {
        const std::wstring letters = Letters(below(below(4) == 0 ? 200 : 8));
        const size_t from = below(model.size() + 1);
        const size_t count = below(30);
        const bool itself = below(2) == 0;
        const std::wstring_view added = itself ? text.View().substr(from, count) : std::wstring_view(letters);
        const std::wstring modelAdded(added);
        const size_t location = below(model.size() + 1);
        const size_t removed = below(40);
        switch (below(4)) {
            case 0:
                text.Append(added);
                model.append(modelAdded);
                break;
            case 1:
                text.Replace(location, removed, added);
                model.replace(location, removed, modelAdded);
                break;
            case 2:
                text.Erase(location, removed);
                model.erase(location, removed);
                break;
            default:
                text.Truncate(location);
                model.resize(location);
        }
        ASSERT_EQ(text.View(), model) << "step " << step;
        ASSERT_EQ(text.Data()[model.size()], L'\0') << "step " << step;
        if (step % 1000 == 0) {
            text = WideText();
            model.clear();
        }
    }
}

}  // namespace

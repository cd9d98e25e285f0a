#include "base/wide_search.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>

#include "base/wide_search_avx2.h"
#include "base/wide_search_plain.h"
#include "support/guarded_memory.h"

namespace {

using namespace std::string_literals;
using qv::kNotFound;

TEST(WideSearch, FindsTheFirstOccurrenceFromTheStartOn) {
    EXPECT_EQ(qv::FindText(L"abcabc", L"bc", 0), 1U);
    EXPECT_EQ(qv::FindText(L"abcabc", L"bc", 2), 4U);
    EXPECT_EQ(qv::FindText(L"abcabc", L"bc", 5), kNotFound);
    EXPECT_EQ(qv::FindText(L"abc", L"abcd", 0), kNotFound);
    EXPECT_EQ(qv::FindText(L"a\0b\0c"s, L"\0c"s, 0), 3U);
}

TEST(WideSearch, NothingIsFoundWhereItIsAskedFor) {
    EXPECT_EQ(qv::FindText(L"abc", L"", 0), 0U);
    EXPECT_EQ(qv::FindText(L"abc", L"", 3), 3U);
    EXPECT_EQ(qv::FindText(L"abc", L"", 4), kNotFound);
    EXPECT_EQ(qv::FindText({}, {}, 0), 0U);
    EXPECT_EQ(qv::FindText({}, L"a", 0), kNotFound);
}

TEST(WideSearch, Characters) {
    EXPECT_EQ(qv::FindCharacter(L"abca", L'a', 0), 0U);
    EXPECT_EQ(qv::FindCharacter(L"abca", L'a', 1), 3U);
    EXPECT_EQ(qv::FindCharacter(L"abca", L'a', 4), kNotFound);
    EXPECT_EQ(qv::FindCharacter({}, L'a', 0), kNotFound);
}

TEST(WideSearch, UpToTheFirstZero) {
    EXPECT_EQ(qv::UpToZero(L"ab\0c\0"s), L"ab");
    EXPECT_EQ(qv::UpToZero(L"ab"), L"ab");
    EXPECT_EQ(qv::UpToZero({}), L"");
}

// Every way of searching against the standard library, over texts of few different characters, so that most
// places look right at first. The texts fill their allocation exactly: a sanitizer sees any reading beyond
// them.
TEST(WideSearchModel, EveryWayFindsThePlaceThatTheStandardLibraryFinds) {
    std::mt19937 random(20260118);
    const auto below = [&](size_t bound) { return static_cast<size_t>(random() % bound); };
    for (int round = 0; round < 30000; ++round) {
        const size_t letters = 1 + below(4);
        const size_t size = below(below(4) == 0 ? 300 : 40);
        const std::unique_ptr<wchar_t[]> exact(new wchar_t[size]);
        for (size_t i = 0; i < size; ++i)
            exact[i] = static_cast<wchar_t>(below(letters));
        const std::wstring_view text(exact.get(), size);
        std::wstring searched(1 + below(below(4) == 0 ? 20 : 4), L'\0');
        for (wchar_t& character : searched)
            character = static_cast<wchar_t>(below(letters));
        const size_t start = below(size + 2);

        const size_t expected = text.find(searched, start);
        ASSERT_EQ(qv::FindText(text, searched, start), expected) << "round " << round;
        if (start > size) continue;
        const wchar_t* from = text.data() + start;
        const wchar_t* end = text.data() + size;
        const wchar_t* place = expected == std::wstring_view::npos ? nullptr : text.data() + expected;
        ASSERT_EQ(qv::plain::FindText(from, end, searched), place) << "round " << round;
        if constexpr (qv::avx2::kBuilt) {
            if (qv::avx2::IsSupported()) {
                ASSERT_EQ(qv::avx2::FindText(from, end, searched), place) << "round " << round;
            }
        }
    }
}

// Texts of every length around the vectors and blocks, ending where their memory ends, with the occurrence at
// every place: behind characters that never look like it, and behind others that show its first character,
// its first and its last, and nearly the whole of it.
TEST(WideSearchModel, TheOccurrenceIsFoundAtEveryPlaceOfATextThatLooksLikeIt) {
    constexpr size_t kMostSize = 100;
    const qvtest::GuardedMemory memory(kMostSize * sizeof(wchar_t));
    const std::wstring almost = L"#xxe#rxre#rare-rar#";
    for (const std::wstring_view searched : {L"#"s, L"#e"s, L"#re"s, L"#rare"s, L"#rare words of its own"s}) {
        for (const std::wstring_view filler : {std::wstring_view(L"."), std::wstring_view(almost)}) {
            for (size_t size = searched.size(); size <= kMostSize; ++size) {
                wchar_t* text = memory.Last<wchar_t>(size);
                const size_t lastPlace = size - searched.size();
                for (size_t place = 0; place <= lastPlace; ++place) {
                    for (size_t i = 0; i < size; ++i)
                        text[i] = filler[i % filler.size()];
                    std::copy(searched.begin(), searched.end(), text + place);
                    const std::wstring_view view(text, size);
                    const size_t expected = view.find(searched);
                    ASSERT_EQ(qv::FindText(view, searched, 0), expected) << size << " " << place;
                    // A last character that is not the right one: found earlier, or not at all.
                    text[place + searched.size() - 1] = L'!';
                    ASSERT_EQ(qv::FindText(view, searched, 0), view.find(searched)) << size << " " << place;
                }
            }
        }
    }
}

}  // namespace

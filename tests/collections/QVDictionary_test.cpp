#include <algorithm>
#include <cwchar>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVString.h>

#include "collections/dictionary_entries.h"
#include "collections/probes.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;
using qvtest::CreateProbe;
using qvtest::Objects;
using Messages = std::vector<std::string>;
using Handles = std::vector<void*>;
using Keys = std::vector<std::wstring>;

Keys KeysOf(void* dictionary) {
    const Owned array{QVDictionaryKeyArray(dictionary)};
    Keys keys;
    for (unsigned long i = 0; i < QVArrayGetCount(array.Get()); ++i) {
        keys.emplace_back(QVStringGetBuffer(QVArrayGetObjectAtIndex(array.Get(), i)));
    }
    return keys;
}

Handles ValuesOf(void* dictionary) {
    const Owned array{QVDictionaryObjectArray(dictionary)};
    Handles values;
    for (unsigned long i = 0; i < QVArrayGetCount(array.Get()); ++i) {
        values.push_back(QVArrayGetObjectAtIndex(array.Get(), i));
    }
    return values;
}

TEST(Dictionary, StartsEmptyWithOneReference) {
    const Owned dictionary{QVDictionaryCreate()};
    EXPECT_EQ(QVGetTypeID(dictionary.Get()), 14);
    EXPECT_EQ(QVGetRetainCount(dictionary.Get()), 1UL);
    EXPECT_EQ(QVDictionaryCount(dictionary.Get()), 0ULL);
    EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), L"a"), nullptr);
    EXPECT_TRUE(KeysOf(dictionary.Get()).empty());
    EXPECT_TRUE(ValuesOf(dictionary.Get()).empty());
    QVDictionaryRemoveObject(dictionary.Get(), L"a");
    EXPECT_EQ(QVGetNSObject(dictionary.Get()), nullptr);
    EXPECT_EQ(QVCreateCFObject(dictionary.Get()), nullptr);
    static_assert(sizeof(QVDictionaryCount(nullptr)) == 8, "the count is 64 bits wide everywhere");
}

TEST(Dictionary, FindsWhatWasSetAndRetainsItOnce) {
    const Objects o;
    {
        const Owned dictionary{QVDictionaryCreate()};
        QVDictionarySetObject(dictionary.Get(), o[0], L"a");
        QVDictionarySetObject(dictionary.Get(), o[1], L"b");
        EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), L"a"), o[0]);
        EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), L"b"), o[1]);
        EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), L"c"), nullptr);
        EXPECT_EQ(QVDictionaryCount(dictionary.Get()), 2ULL);
        EXPECT_EQ(QVGetRetainCount(o[0]), 2UL);
    }
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_EQ(QVGetRetainCount(o[1]), 1UL);
}

TEST(Dictionary, CopiesItsKeysAndComparesTheirText) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    std::wstring key = L"the key";
    QVDictionarySetObject(dictionary.Get(), o[0], key.c_str());
    key[0] = L'T';
    EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), L"the key"), o[0]);
    EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), key.c_str()), nullptr);
}

TEST(Dictionary, KeysThatDifferInAnyWayAreDifferent) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    const Keys keys = {L"", L"a", L"A", L"aa", L"ab", L"a\x1F600", L"\xE9", L"e\x301"};
    for (std::size_t i = 0; i < keys.size(); ++i)
        QVDictionarySetObject(dictionary.Get(), o[i], keys[i].c_str());
    EXPECT_EQ(QVDictionaryCount(dictionary.Get()), keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), keys[i].c_str()), o[i]);
    }
}

TEST(Dictionary, GivesKeysAndValuesInTheOrderOfWcscmp) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    const Keys keys = {L"ab", L"a", L"B", L"", L"b", L"A", L"aB", L"\xE9", L"z", L"10", L"9"};
    for (std::size_t i = 0; i < keys.size(); ++i)
        QVDictionarySetObject(dictionary.Get(), o[i], keys[i].c_str());
    EXPECT_EQ(KeysOf(dictionary.Get()),
              (Keys{L"", L"10", L"9", L"A", L"B", L"a", L"aB", L"ab", L"b", L"z", L"\xE9"}));
    EXPECT_EQ(ValuesOf(dictionary.Get()),
              (Handles{o[3], o[9], o[10], o[5], o[2], o[1], o[6], o[0], o[4], o[8], o[7]}));
}

TEST(Dictionary, ReplacingReleasesTheOldValueOnce) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), o[0], L"a");
    QVDictionarySetObject(dictionary.Get(), o[1], L"a");
    EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), L"a"), o[1]);
    EXPECT_EQ(QVDictionaryCount(dictionary.Get()), 1ULL);
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_EQ(QVGetRetainCount(o[1]), 2UL);
}

TEST(Dictionary, SettingTheSameValueAgainChangesNothing) {
    std::vector<int> deaths;
    const Owned dictionary{QVDictionaryCreate()};
    Owned probe{CreateProbe(1, &deaths)};
    QVDictionarySetObject(dictionary.Get(), probe.Get(), L"a");
    probe.Reset();
    void* borrowed = QVDictionaryGetObject(dictionary.Get(), L"a");
    QVDictionarySetObject(dictionary.Get(), borrowed, L"a");
    EXPECT_TRUE(deaths.empty());
    EXPECT_EQ(QVGetRetainCount(borrowed), 1UL);
    EXPECT_EQ(QVDictionaryCount(dictionary.Get()), 1ULL);
}

TEST(Dictionary, OneValueMayStandUnderSeveralKeys) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    for (const wchar_t* key : {L"a", L"b", L"c"})
        QVDictionarySetObject(dictionary.Get(), o[0], key);
    EXPECT_EQ(QVGetRetainCount(o[0]), 4UL);
    QVDictionaryRemoveObject(dictionary.Get(), L"b");
    EXPECT_EQ(QVGetRetainCount(o[0]), 3UL);
}

// The key may be the text of the very value that goes.
TEST(Dictionary, TheKeyMayBelongToTheReplacedValue) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    {
        const Owned text{
            QVStringCreateWithWideString(L"a text that does not fit a small block, so that its memory goes")};
        QVDictionarySetObject(dictionary.Get(), text.Get(), QVStringGetBuffer(text.Get()));
    }
    void* text = QVArrayGetLastObject(Owned{QVDictionaryObjectArray(dictionary.Get())}.Get());
    QVDictionarySetObject(dictionary.Get(), o[0], QVStringGetBuffer(text));
    EXPECT_EQ(ValuesOf(dictionary.Get()), Handles{o[0]});
}

TEST(Dictionary, RemovingReleasesTheValue) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), o[0], L"a");
    QVDictionarySetObject(dictionary.Get(), o[1], L"b");
    QVDictionaryRemoveObject(dictionary.Get(), L"a");
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_EQ(KeysOf(dictionary.Get()), Keys{L"b"});
    QVDictionaryRemoveObject(dictionary.Get(), L"a");
    QVDictionaryRemoveObject(dictionary.Get(), L"absent");
    EXPECT_EQ(QVDictionaryCount(dictionary.Get()), 1ULL);
}

TEST(Dictionary, NullValuesAndKeysAreRefusedAndLogged) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    const qvtest::LogCapture log;
    QVDictionarySetObject(dictionary.Get(), nullptr, L"a");
    QVDictionarySetObject(dictionary.Get(), o[0], nullptr);
    QVDictionarySetObject(dictionary.Get(), nullptr, nullptr);
    EXPECT_EQ(log.Messages(), (Messages{"Attempt to insert NULL value into the dictionary.",
                                        "Attempt to insert the value with NULL key.",
                                        "Attempt to insert NULL value into the dictionary."}));
    EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), nullptr), nullptr);
    QVDictionaryRemoveObject(dictionary.Get(), nullptr);
    EXPECT_EQ(QVDictionaryCount(dictionary.Get()), 0ULL);
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_EQ(log.Messages().size(), 3U);
}

TEST(Dictionary, DestructionReleasesInKeyOrder) {
    std::vector<int> deaths;
    Owned dictionary{QVDictionaryCreate()};
    for (int i = 99; i >= 0; --i) {
        const Owned probe{CreateProbe(i, &deaths)};
        const std::wstring key = {static_cast<wchar_t>(L'a' + i / 10), static_cast<wchar_t>(L'0' + i % 10)};
        QVDictionarySetObject(dictionary.Get(), probe.Get(), key.c_str());
    }
    dictionary.Reset();
    ASSERT_EQ(deaths.size(), 100U);
    EXPECT_TRUE(std::is_sorted(deaths.begin(), deaths.end()));
}

TEST(Dictionary, KeyArraysHoldNewStringsOfTheirOwn) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), o[0], L"a");
    const Owned first{QVDictionaryKeyArray(dictionary.Get())};
    const Owned second{QVDictionaryKeyArray(dictionary.Get())};
    EXPECT_EQ(QVGetRetainCount(first.Get()), 1UL);
    void* key = QVArrayGetObjectAtIndex(first.Get(), 0);
    EXPECT_EQ(QVGetTypeID(key), QVTypeIDString);
    EXPECT_EQ(QVGetRetainCount(key), 1UL);
    EXPECT_NE(key, QVArrayGetObjectAtIndex(second.Get(), 0));
    const Owned values{QVDictionaryObjectArray(dictionary.Get())};
    EXPECT_EQ(QVGetRetainCount(values.Get()), 1UL);
    EXPECT_EQ(QVGetRetainCount(o[0]), 3UL);
}

TEST(Dictionary, DataIsReserved) {
    const Owned dictionary{QVDictionaryCreate()};
    EXPECT_EQ(QVDictionaryCreateData(dictionary.Get()), nullptr);
}

// ---- Adding entries of another ----

TEST(DictionaryMerge, TheOtherDictionarysEntriesReplaceOnes) {
    const Objects o;
    const Owned ours{QVDictionaryCreate()};
    const Owned other{QVDictionaryCreate()};
    QVDictionarySetObject(ours.Get(), o[0], L"a");
    QVDictionarySetObject(ours.Get(), o[1], L"b");
    QVDictionarySetObject(other.Get(), o[2], L"b");
    QVDictionarySetObject(other.Get(), o[3], L"c");
    QVDictionaryAddEntriesFromDictionary(ours.Get(), other.Get());
    EXPECT_EQ(KeysOf(ours.Get()), (Keys{L"a", L"b", L"c"}));
    EXPECT_EQ(ValuesOf(ours.Get()), (Handles{o[0], o[2], o[3]}));
    EXPECT_EQ(ValuesOf(other.Get()), (Handles{o[2], o[3]}));
    EXPECT_EQ(QVGetRetainCount(o[1]), 1UL);
    EXPECT_EQ(QVGetRetainCount(o[2]), 3UL);
}

TEST(DictionaryMerge, WithItselfOrNothingChangesNothing) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), o[0], L"a");
    QVDictionaryAddEntriesFromDictionary(dictionary.Get(), dictionary.Get());
    QVDictionaryAddEntriesFromDictionary(dictionary.Get(), nullptr);
    const Owned empty{QVDictionaryCreate()};
    QVDictionaryAddEntriesFromDictionary(dictionary.Get(), empty.Get());
    EXPECT_EQ(ValuesOf(dictionary.Get()), Handles{o[0]});
    EXPECT_EQ(QVGetRetainCount(o[0]), 2UL);
}

TEST(DictionaryMerge, TheOtherMayBeAValueThatIsReplacedOnTheWay) {
    const Objects o;
    const Owned ours{QVDictionaryCreate()};
    void* other = QVDictionaryCreate();
    for (std::size_t i = 0; i < 10; ++i) {
        QVDictionarySetObject(other, o[i], std::wstring(1, static_cast<wchar_t>(L'a' + i)).c_str());
    }
    QVDictionarySetObject(ours.Get(), other, L"a");
    QVRelease(other);
    QVDictionaryAddEntriesFromDictionary(ours.Get(), other);
    EXPECT_EQ(QVDictionaryCount(ours.Get()), 10ULL);
    EXPECT_EQ(QVGetRetainCount(o[9]), 2UL);
}

// ---- Inside the library: entries where they lie ----

TEST(DictionaryEntries, StandInKeyOrder) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), o[1], L"second");
    QVDictionarySetObject(dictionary.Get(), o[0], L"first");
    const qv::DictionaryEntry first = qv::GetDictionaryEntry(dictionary.Get(), 0);
    EXPECT_STREQ(first.key, L"first");
    EXPECT_EQ(first.keyLength, 5U);
    EXPECT_EQ(first.value, o[0]);
    EXPECT_STREQ(qv::GetDictionaryEntry(dictionary.Get(), 1).key, L"second");
}

// ---- Null handles ----

TEST(Dictionary, NullHandlesDoNothingAndLogNothing) {
    const Objects o;
    const qvtest::LogCapture log;
    EXPECT_EQ(QVDictionaryGetObject(nullptr, L"a"), nullptr);
    EXPECT_EQ(QVDictionaryCount(nullptr), 0ULL);
    QVDictionarySetObject(nullptr, o[0], L"a");
    QVDictionaryAddEntriesFromDictionary(nullptr, nullptr);
    EXPECT_EQ(QVDictionaryKeyArray(nullptr), nullptr);
    EXPECT_EQ(QVDictionaryObjectArray(nullptr), nullptr);
    QVDictionaryRemoveObject(nullptr, L"a");
    EXPECT_EQ(QVDictionaryCreateData(nullptr), nullptr);
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_TRUE(log.Messages().empty());
}

// ---- Memory runs out ----

TEST(DictionaryWithoutMemory, CreationGivesNullAndLogs) {
    const qvtest::LogCapture log;
    {
        const qvtest::FailAllocation failing(0, true);
        EXPECT_EQ(QVDictionaryCreate(), nullptr);
    }
    EXPECT_EQ(log.Messages(), Messages{"Could not allocate the dictionary."});
}

TEST(DictionaryWithoutMemory, AFailedInsertionLogsAndChangesNothing) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), o[0], L"a");
    const qvtest::LogCapture log;
    {
        const qvtest::FailAllocation failing(0, true);
        QVDictionarySetObject(dictionary.Get(), o[1], L"b");
        EXPECT_EQ(QVGetRetainCount(o[1]), 1UL);
        EXPECT_EQ(QVDictionaryCount(dictionary.Get()), 1ULL);
        EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), L"b"), nullptr);
        QVDictionarySetObject(dictionary.Get(), o[1], L"a");  // replacing needs no memory
    }
    EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), L"a"), o[1]);
    EXPECT_EQ(log.Messages(), Messages{"The dictionary could not insert the value."});
}

TEST(DictionaryWithoutMemory, EveryStepMayFailAndNothingIsLost) {
    const Objects o;
    const qvtest::LogCapture log;
    const std::size_t before = qvtest::LiveAllocations();
    bool complete = true;
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        const Owned dictionary{QVDictionaryCreate()};
        unsigned long long expected = 0;
        for (std::size_t i = 0; i < 20; ++i) {
            const wchar_t key[] = {static_cast<wchar_t>(L'z' - i), L'\0'};
            QVDictionarySetObject(dictionary.Get(), o[i], key);
            if (QVDictionaryGetObject(dictionary.Get(), key) == o[i]) ++expected;
        }
        if (QVDictionaryCount(dictionary.Get()) != expected) complete = false;
        const Owned keys{QVDictionaryKeyArray(dictionary.Get())};
        if (keys && QVArrayGetCount(keys.Get()) != expected) complete = false;
        const Owned values{QVDictionaryObjectArray(dictionary.Get())};
        if (values && QVArrayGetCount(values.Get()) != expected) complete = false;
    });
    EXPECT_TRUE(complete);
    EXPECT_GE(failures, 40U);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
    for (std::size_t i = 0; i < o.Count(); ++i)
        EXPECT_EQ(QVGetRetainCount(o[i]), 1UL);
}

// ---- Everything together, against a plain ordered map ----

struct WcscmpOrder {
    bool operator()(const std::wstring& one, const std::wstring& other) const {
        return std::wcscmp(one.c_str(), other.c_str()) < 0;
    }
};

class DictionaryModel {
public:
    DictionaryModel(unsigned seed, std::size_t keyCount) : random_(seed) {
        while (keys_.size() < keyCount)
            keys_.push_back(RandomKey());
    }

    // `growth`: how many of a hundred steps set a value rather than remove one.
    void Step(std::size_t growth) {
        const std::wstring& key = keys_[Below(keys_.size())];
        void* object = objects_[Below(objects_.Count())];
        if (Below(100) < growth) {
            QVDictionarySetObject(dictionary_.Get(), object, key.c_str());
            model_[key] = object;
        } else {
            QVDictionaryRemoveObject(dictionary_.Get(), key.c_str());
            model_.erase(key);
        }
        const std::wstring& other = keys_[Below(keys_.size())];
        const auto found = model_.find(other);
        ASSERT_EQ(QVDictionaryGetObject(dictionary_.Get(), other.c_str()),
                  found == model_.end() ? nullptr : found->second);
        ASSERT_EQ(QVDictionaryCount(dictionary_.Get()), model_.size());
    }

    void Check() {
        Keys keys;
        Handles values;
        std::map<void*, unsigned long> counts;
        for (const auto& [key, value] : model_) {
            keys.push_back(key);
            values.push_back(value);
            ++counts[value];
        }
        ASSERT_EQ(KeysOf(dictionary_.Get()), keys);
        ASSERT_EQ(ValuesOf(dictionary_.Get()), values);
        for (std::size_t i = 0; i < objects_.Count(); ++i) {
            ASSERT_EQ(QVGetRetainCount(objects_[i]), counts[objects_[i]] + 1);
        }
    }

private:
    std::size_t Below(std::size_t limit) { return random_() % limit; }

    std::wstring RandomKey() {
        static const std::wstring kAlphabet = L"abcXYZ019_\xE9\x3042\x1F600";
        std::wstring key = Below(2) == 0 ? L"" : L"a.common.prefix.";
        for (std::size_t length = Below(7); length > 0; --length)
            key += kAlphabet[Below(kAlphabet.size())];
        return key;
    }

    std::mt19937 random_;
    Keys keys_;
    Objects objects_;
    std::map<std::wstring, void*, WcscmpOrder> model_;
    Owned dictionary_{QVDictionaryCreate()};
};

TEST(Dictionary, BehavesAsAnOrderedMapThatCountsReferences) {
    constexpr unsigned kSeed = 3505;
    for (const std::size_t keyCount : {5U, 40U, 1000U}) {
        DictionaryModel model(kSeed, keyCount);
        for (std::size_t step = 0; step < 50000; ++step) {
            const std::size_t growth = step % 10000 < 5000 ? 60 : 35;
            ASSERT_NO_FATAL_FAILURE(model.Step(growth)) << "seed " << kSeed << " step " << step;
            if (step % 997 == 0 || step % 1009 < 2) {
                ASSERT_NO_FATAL_FAILURE(model.Check()) << "seed " << kSeed << " step " << step;
            }
        }
        model.Check();
    }
}

// A dictionary that stays small does not grow for having been busy.
TEST(Dictionary, ReusesTheRoomOfRemovedEntries) {
    const Objects o;
    const Owned dictionary{QVDictionaryCreate()};
    const auto keyOf = [](int i) { return std::to_wstring(i); };
    for (int i = 0; i < 50; ++i)
        QVDictionarySetObject(dictionary.Get(), o[0], keyOf(i).c_str());
    const std::size_t before = qvtest::LiveAllocations();
    for (int i = 50; i < 20000; ++i) {
        QVDictionaryRemoveObject(dictionary.Get(), keyOf(i - 50).c_str());
        QVDictionarySetObject(dictionary.Get(), o[0], keyOf(i).c_str());
    }
    EXPECT_EQ(QVDictionaryCount(dictionary.Get()), 50ULL);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
    EXPECT_EQ(KeysOf(dictionary.Get()).size(), 50U);
}

}  // namespace

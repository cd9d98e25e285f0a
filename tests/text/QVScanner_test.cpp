#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include <QVFoundation/QVScanner.h>
#include <QVFoundation/QVString.h>

#include "runtime/Handle.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"
#include "support/strings.h"
#include "text/QVCScanner.h"

namespace {

using namespace std::string_literals;
using qv::LocalPool;
using qv::Owned;
using qvtest::MakeString;
using qvtest::TextOf;

Owned MakeScanner(const std::wstring& text) {
    return Owned{QVScannerCreateWithString(MakeString(text).Get())};
}

std::wstring UpTo(const Owned& scanner, const wchar_t* characters) {
    void* piece = nullptr;
    return QVScannerScanUpToCharacters(scanner.Get(), characters, &piece) ? TextOf(piece) : L"(false)";
}

std::wstring RunOf(const Owned& scanner, const wchar_t* characters) {
    void* piece = nullptr;
    return QVScannerScanUpToNotCharacters(scanner.Get(), characters, &piece) ? TextOf(Owned{piece})
                                                                             : L"(false)";
}

TEST(Scanner, StartsAtTheStartOfARetainedString) {
    const Owned string = MakeString(L"abc");
    {
        const Owned scanner{QVScannerCreateWithString(string.Get())};
        EXPECT_EQ(QVGetTypeID(scanner.Get()), 26);
        EXPECT_EQ(QVGetRetainCount(scanner.Get()), 1UL);
        EXPECT_EQ(QVGetRetainCount(string.Get()), 2UL);
        EXPECT_EQ(QVScannerGetMarker(scanner.Get()), 0);
        EXPECT_EQ(QVScannerGetLength(scanner.Get()), 3UL);
    }
    EXPECT_EQ(QVGetRetainCount(string.Get()), 1UL);
}

TEST(ScannerMarker, CountsFromTheStartTheEndOrItself) {
    const Owned scanner = MakeScanner(L"abcdef");
    const auto set = [&](int mode, int offset) {
        EXPECT_EQ(QVScannerSetMarker(scanner.Get(), mode, offset), 6);
        return QVScannerGetMarker(scanner.Get());
    };
    EXPECT_EQ(set(0, 4), 4);
    EXPECT_EQ(set(1, 2), 4);
    EXPECT_EQ(set(2, 1), 5);
    EXPECT_EQ(set(2, -3), 2);
    EXPECT_EQ(set(3, 5), 2);
    EXPECT_EQ(set(-1, 5), 2);
}

TEST(ScannerMarker, StaysWithinTheString) {
    const Owned scanner = MakeScanner(L"abcdef");
    const auto set = [&](int mode, int offset) {
        QVScannerSetMarker(scanner.Get(), mode, offset);
        return QVScannerGetMarker(scanner.Get());
    };
    constexpr int kMost = 0x7FFFFFFF;
    EXPECT_EQ(set(0, -5), 0);
    EXPECT_EQ(set(0, 1000), 6);
    EXPECT_EQ(set(2, kMost), 6);
    EXPECT_EQ(set(1, kMost), 0);
    EXPECT_EQ(set(1, -kMost - 1), 6);
    EXPECT_EQ(set(2, -kMost - 1), 0);
}

TEST(ScannerUpTo, ThePieceIncludesItsDelimiter) {
    const LocalPool pool;
    const Owned scanner = MakeScanner(L"key=value");
    EXPECT_EQ(UpTo(scanner, L"="), L"key=");
    EXPECT_EQ(QVScannerGetMarker(scanner.Get()), 4);
    EXPECT_EQ(UpTo(scanner, L"="), L"value");
    EXPECT_EQ(UpTo(scanner, L"="), L"(false)");
}

TEST(ScannerUpTo, ADelimiterAtTheMarkerIsAPieceOfItsOwn) {
    const LocalPool pool;
    const Owned scanner = MakeScanner(L",;a");
    EXPECT_EQ(UpTo(scanner, L";,"), L",");
    EXPECT_EQ(UpTo(scanner, L";,"), L";");
    EXPECT_EQ(UpTo(scanner, L";,"), L"a");
}

TEST(ScannerUpTo, ThePieceBelongsToThePool) {
    const Owned scanner = MakeScanner(L"a,b");
    Owned kept;
    {
        const LocalPool pool;
        void* piece = nullptr;
        EXPECT_EQ(QVScannerScanUpToCharacters(scanner.Get(), L",", &piece), 1);
        EXPECT_EQ(QVGetRetainCount(piece), 1UL);
        kept = Owned::Retaining(piece);
    }
    EXPECT_EQ(QVGetRetainCount(kept.Get()), 1UL);
}

TEST(ScannerRun, StopsAtTheFirstOtherCharacter) {
    const Owned scanner = MakeScanner(L"   x");
    EXPECT_EQ(RunOf(scanner, L" "), L"   ");
    EXPECT_EQ(QVScannerGetMarker(scanner.Get()), 3);
    EXPECT_EQ(RunOf(scanner, L" "), L"(false)");
    EXPECT_EQ(QVScannerGetMarker(scanner.Get()), 3);
    EXPECT_EQ(RunOf(scanner, L"yx"), L"x");
    EXPECT_EQ(RunOf(scanner, L"yx"), L"(false)");
}

TEST(ScannerRun, ThePieceBelongsToTheCaller) {
    const Owned scanner = MakeScanner(L"aab");
    void* piece = nullptr;
    {
        const LocalPool pool;
        EXPECT_EQ(QVScannerScanUpToNotCharacters(scanner.Get(), L"a", &piece), 1);
    }
    const Owned owned{piece};
    EXPECT_EQ(TextOf(owned), L"aa");
    EXPECT_EQ(QVGetRetainCount(piece), 1UL);
}

TEST(ScannerHex, ReadsARunOfDigits) {
    unsigned int value = 1;
    const Owned scanner = MakeScanner(L"ff7z0x1F");
    EXPECT_EQ(QVScannerScanHexUInt(scanner.Get(), &value), 1);
    EXPECT_EQ(value, 0xFF7U);
    EXPECT_EQ(QVScannerGetMarker(scanner.Get()), 3);
    EXPECT_EQ(QVScannerScanHexUInt(scanner.Get(), &value), 0);
    EXPECT_EQ(value, 0U);
    QVScannerSetMarker(scanner.Get(), 2, 1);
    EXPECT_EQ(QVScannerScanHexUInt(scanner.Get(), &value), 1);
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(QVScannerGetMarker(scanner.Get()), 5);

    const Owned tooLong = MakeScanner(L"1234567890abcDEF");
    EXPECT_EQ(QVScannerScanHexUInt(tooLong.Get(), &value), 1);
    EXPECT_EQ(value, 0x90ABCDEFU);
}

TEST(ScannerSets, AnEmbeddedZeroIsInNoSet) {
    const LocalPool pool;
    const Owned scanner = MakeScanner(L"a\0,b"s);
    EXPECT_EQ(UpTo(scanner, L","), L"a\0,"s);
    QVScannerSetMarker(scanner.Get(), 0, 1);
    EXPECT_EQ(RunOf(scanner, L""), L"(false)");
    EXPECT_EQ(RunOf(scanner, L","), L"(false)");
    EXPECT_EQ(UpTo(scanner, L""), L"\0,b"s);
}

TEST(ScannerSets, NullIsTheEmptySet) {
    const LocalPool pool;
    const Owned scanner = MakeScanner(L"ab");
    EXPECT_EQ(RunOf(scanner, nullptr), L"(false)");
    EXPECT_EQ(UpTo(scanner, nullptr), L"ab");
}

TEST(ScannerEmpty, EveryScanIsFalse) {
    const LocalPool pool;
    const Owned overNull{QVScannerCreateWithString(nullptr)};
    const Owned overEmpty = MakeScanner(L"");
    for (const Owned* scanner : {&overNull, &overEmpty}) {
        unsigned int value = 1;
        EXPECT_EQ(UpTo(*scanner, L"a"), L"(false)");
        EXPECT_EQ(RunOf(*scanner, L"a"), L"(false)");
        EXPECT_EQ(QVScannerScanHexUInt(scanner->Get(), &value), 0);
        EXPECT_EQ(value, 0U);
        EXPECT_EQ(QVScannerSetMarker(scanner->Get(), 0, 3), 0);
        EXPECT_EQ(QVScannerGetMarker(scanner->Get()), 0);
        EXPECT_EQ(QVScannerGetLength(scanner->Get()), 0UL);
    }
}

TEST(ScannerNull, NoFunctionNeedsAScanner) {
    int anything = 0;
    void* piece = &anything;
    unsigned int value = 1;
    EXPECT_EQ(QVScannerSetMarker(nullptr, 0, 0), 0);
    EXPECT_EQ(QVScannerGetMarker(nullptr), 0);
    EXPECT_EQ(QVScannerGetLength(nullptr), 0UL);
    EXPECT_EQ(QVScannerScanUpToCharacters(nullptr, L"a", &piece), 0);
    EXPECT_EQ(piece, nullptr);
    piece = &anything;
    EXPECT_EQ(QVScannerScanUpToNotCharacters(nullptr, L"a", &piece), 0);
    EXPECT_EQ(piece, nullptr);
    EXPECT_EQ(QVScannerScanHexUInt(nullptr, &value), 0);
    EXPECT_EQ(value, 0U);
}

TEST(ScannerNull, WithoutAnOutOnlyTheMarkerMoves) {
    const Owned scanner = MakeScanner(L"a,bb7!");
    const size_t before = qvtest::LiveAllocations();
    EXPECT_EQ(QVScannerScanUpToCharacters(scanner.Get(), L",", nullptr), 1);
    EXPECT_EQ(QVScannerScanUpToNotCharacters(scanner.Get(), L"b", nullptr), 1);
    EXPECT_EQ(QVScannerScanHexUInt(scanner.Get(), nullptr), 1);
    EXPECT_EQ(QVScannerGetMarker(scanner.Get()), 5);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(ScannerString, MayBecomeShorterWhileItIsScanned) {
    const LocalPool pool;
    const Owned string = MakeString(L"abcdef");
    const Owned scanner{QVScannerCreateWithString(string.Get())};
    QVScannerSetMarker(scanner.Get(), 0, 5);
    QVStringErase(string.Get(), 2, 4);
    EXPECT_EQ(UpTo(scanner, L"x"), L"(false)");
    EXPECT_EQ(RunOf(scanner, L"abcdef"), L"(false)");
    EXPECT_EQ(QVScannerSetMarker(scanner.Get(), 2, 0), 2);
    EXPECT_EQ(QVScannerGetMarker(scanner.Get()), 2);
}

TEST(ScannerString, SettingOneGoesToItsStart) {
    const Owned first = MakeString(L"abc");
    const Owned second = MakeString(L"defg");
    const Owned scanner{QVScannerCreateWithString(first.Get())};
    auto& object = *qv::FromHandle<QVCScanner>(scanner.Get());
    object.SetMarker(0, 2);
    object.SetString(first.Get());
    EXPECT_EQ(object.GetMarker(), 0);
    EXPECT_EQ(QVGetRetainCount(first.Get()), 2UL);
    object.SetString(second.Get());
    EXPECT_EQ(object.GetLength(), 4UL);
    EXPECT_EQ(QVGetRetainCount(first.Get()), 1UL);
    EXPECT_EQ(QVGetRetainCount(second.Get()), 2UL);
    object.SetString(nullptr);
    EXPECT_EQ(QVGetRetainCount(second.Get()), 1UL);
}

TEST(ScannerMemory, APieceThatCannotBeMadeLeavesTheMarker) {
    const LocalPool pool;
    const std::wstring text(100, L'a');
    const Owned scanner = MakeScanner(text);
    EXPECT_EQ(UpTo(scanner, L"x"), text);  // the pool has room for another temporary now
    QVScannerSetMarker(scanner.Get(), 0, 0);
    const qvtest::LogCapture log;
    const size_t before = qvtest::LiveAllocations();
    for (size_t k = 0; k < 2; ++k) {
        const qvtest::FailAllocation failing(k);
        void* piece = nullptr;
        EXPECT_EQ(QVScannerScanUpToCharacters(scanner.Get(), L"x", &piece), 0);
        EXPECT_EQ(piece, nullptr);
        EXPECT_EQ(QVScannerGetMarker(scanner.Get()), 0);
    }
    for (size_t k = 0; k < 2; ++k) {
        const qvtest::FailAllocation failing(k);
        void* piece = nullptr;
        EXPECT_EQ(QVScannerScanUpToNotCharacters(scanner.Get(), L"a", &piece), 0);
        EXPECT_EQ(piece, nullptr);
        EXPECT_EQ(QVScannerGetMarker(scanner.Get()), 0);
    }
    EXPECT_EQ(qvtest::LiveAllocations(), before);
    const qvtest::FailAllocation failing(0);
    EXPECT_EQ(QVScannerCreateWithString(nullptr), nullptr);
}

// The scans a character at a time, as they are described.
struct PlainScanner {
    std::wstring text;
    size_t marker = 0;

    static bool Holds(const std::wstring& set, wchar_t character) {
        return set.find(character) != std::wstring::npos;
    }

    std::wstring UpTo(const std::wstring& set) {
        const size_t start = marker;
        for (;;) {
            if (marker == text.size()) return marker > start ? text.substr(start) : L"(false)";
            if (Holds(set, text[marker++])) return text.substr(start, marker - start);
        }
    }

    std::wstring RunOf(const std::wstring& set) {
        const size_t start = marker;
        while (marker < text.size() && Holds(set, text[marker]))
            ++marker;
        return marker > start ? text.substr(start, marker - start) : L"(false)";
    }
};

TEST(ScannerModel, CutsTheSamePiecesACharacterAtATime) {
    std::mt19937 random(20260116);
    for (int round = 0; round < 500; ++round) {
        const LocalPool pool;
        PlainScanner plain{std::wstring(random() % 60, L' ')};
        for (wchar_t& character : plain.text)
            character = L"abcde\0"[random() % 6];
        const Owned scanner = MakeScanner(plain.text);
        for (int step = 0; step < 20; ++step) {
            std::wstring set;
            for (const wchar_t character : L"abcde"s) {
                if (random() % 2) set += character;
            }
            if (random() % 8 == 0) {
                plain.marker = random() % (plain.text.size() + 1);
                QVScannerSetMarker(scanner.Get(), 0, static_cast<int>(plain.marker));
            }
            if (random() % 2) {
                ASSERT_EQ(UpTo(scanner, set.c_str()), plain.UpTo(set)) << "round " << round;
            } else {
                ASSERT_EQ(RunOf(scanner, set.c_str()), plain.RunOf(set)) << "round " << round;
            }
            ASSERT_EQ(QVScannerGetMarker(scanner.Get()), static_cast<int>(plain.marker));
        }
    }
}

}  // namespace

#include "base/utf8.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "base/processor.h"
#include "base/utf8_kernels.h"
#include "models/utf8_model.h"

namespace {

// ---- the paths under test ----

struct Path {
    const char* name;
    size_t (*count)(const char*, size_t) noexcept;
    std::optional<size_t> (*decode)(const char*, size_t, wchar_t*, size_t) noexcept;
    std::optional<size_t> (*encode)(const wchar_t*, size_t, char*) noexcept;
};

std::optional<size_t> Whole(qv::Utf8Progress done, size_t size) {
    return done.read == size ? std::optional(done.written) : std::nullopt;
}

constexpr Path kPublic = {
    "chosen at run time",
    qv::CountUtf8Characters,
    [](const char* bytes, size_t size, wchar_t* out, size_t room) noexcept {
        return qv::DecodeUtf8(bytes, size, out, room);
    },
    qv::EncodeUtf8,
};

constexpr Path kPlain = {
    "plain",
    qv::plain::CountUtf8Characters,
    [](const char* bytes, size_t size, wchar_t* out, size_t room) noexcept {
        return Whole(qv::plain::DecodeUtf8(bytes, size, out, room, {}), size);
    },
    [](const wchar_t* text, size_t count, char* out) noexcept {
        return Whole(qv::plain::EncodeUtf8(text, count, out, qv::Utf8SizeMax(count), {}), count);
    },
};

#if QV_X86
// A vector path: its own loops, then the plain ones for what they left.
template <auto kCount, auto kDecode, auto kEncode>
constexpr Path VectorPath(const char* name) {
    return {
        name,
        kCount,
        [](const char* bytes, size_t size, wchar_t* out, size_t room) noexcept {
            const qv::Utf8Progress bulk = kDecode(bytes, size, out, room);
            return Whole(qv::plain::DecodeUtf8(bytes, size, out, room, bulk), size);
        },
        [](const wchar_t* text, size_t count, char* out) noexcept {
            const size_t room = qv::Utf8SizeMax(count);
            const qv::Utf8Progress bulk = kEncode(text, count, out, room, {});
            return Whole(qv::plain::EncodeUtf8(text, count, out, room, bulk), count);
        },
    };
}

constexpr Path kAvx2 =
    VectorPath<qv::avx2::CountUtf8Characters, qv::avx2::DecodeUtf8, qv::avx2::EncodeUtf8>("AVX2");
constexpr Path kAvx512 =
    VectorPath<qv::avx2::CountUtf8Characters, qv::avx512::DecodeUtf8, qv::avx512::EncodeUtf8>("AVX-512");
#endif

// The paths that this processor can run.
const std::vector<Path>& Paths() {
    static const std::vector<Path> paths = [] {
        std::vector<Path> usable = {kPublic, kPlain};
#if QV_X86
        if (qv::HasAvx2()) usable.push_back(kAvx2);
        if (qv::HasAvx512Compress()) usable.push_back(kAvx512);
#endif
        std::printf("UTF-8 paths that run here:");
        for (const Path& path : usable)
            std::printf(" [%s]", path.name);
        std::printf("\n");
        return usable;
    }();
    return paths;
}

// ---- running them ----

constexpr wchar_t kWideGuard = 0x5A5A5A5A;
constexpr char kGuard = 0x5A;
constexpr size_t kGuards = 16;

// Decodes into exactly `room` characters; checks that nothing behind them was touched.
std::optional<std::wstring> Decode(const Path& path, std::string_view bytes, size_t room) {
    static std::vector<wchar_t> out;
    out.assign(room + kGuards, kWideGuard);
    const std::vector<char> exact(bytes.begin(),
                                  bytes.end());  // so that a sanitizer sees reads behind the end
    const std::optional<size_t> written = path.decode(exact.data(), exact.size(), out.data(), room);
    EXPECT_TRUE(std::all_of(out.begin() + static_cast<std::ptrdiff_t>(room), out.end(),
                            [](wchar_t c) { return c == kWideGuard; }))
        << path.name << ": wrote beyond the room";
    if (!written) return std::nullopt;
    return std::wstring(out.data(), *written);
}

std::optional<std::string> Encode(const Path& path, std::wstring_view text) {
    static std::vector<char> out;
    const size_t room = qv::Utf8SizeMax(text.size());
    out.assign(room + kGuards, kGuard);
    const std::vector<wchar_t> exact(text.begin(), text.end());
    const std::optional<size_t> written = path.encode(exact.data(), exact.size(), out.data());
    EXPECT_TRUE(std::all_of(out.begin() + static_cast<std::ptrdiff_t>(room), out.end(),
                            [](char c) { return c == kGuard; }))
        << path.name << ": wrote beyond the room";
    if (!written) return std::nullopt;
    return std::string(out.data(), *written);
}

// Every path judges and decodes the bytes as the model does, also into the exact room.
void CheckDecoding(std::string_view bytes) {
    const std::optional<std::wstring> expected = qvmodel::DecodeUtf8(bytes);
    for (const Path& path : Paths()) {
        const size_t room = path.count(bytes.data(), bytes.size());
        if (expected) {
            ASSERT_EQ(room, expected->size()) << path.name;
        }
        ASSERT_EQ(Decode(path, bytes, room), expected) << path.name;
        ASSERT_EQ(Decode(path, bytes, bytes.size() + 5), expected) << path.name;
    }
}

void CheckEncoding(std::wstring_view text) {
    const std::optional<std::string> expected = qvmodel::EncodeUtf8(text);
    for (const Path& path : Paths())
        ASSERT_EQ(Encode(path, text), expected) << path.name;
}

std::string Utf8(std::wstring_view text) {
    return qvmodel::EncodeUtf8(text).value();
}

// ---- what is valid ----

TEST(Utf8, EveryCodePointSurvivesBothWays) {
    std::wstring all;
    for (wchar_t c = 0; c <= 0x10FFFF; ++c) {
        if (qvmodel::IsCodePoint(c)) all += c;
    }
    const std::string bytes = Utf8(all);
    for (const Path& path : Paths()) {
        EXPECT_EQ(Encode(path, all), bytes) << path.name;
        EXPECT_EQ(Decode(path, bytes, all.size()), all) << path.name;
    }
}

TEST(Utf8, KnownBytes) {
    const std::string bytes = "A\xC3\xA9\xE2\x82\xAC\xE6\x97\xA5\xF0\x9F\x98\x80";
    EXPECT_EQ(qv::FromUtf8(bytes), L"A\u00E9\u20AC\u65E5\U0001F600");
    EXPECT_EQ(qv::ToUtf8(L"A\u00E9\u20AC\u65E5\U0001F600"), bytes);
}

TEST(Utf8, AnEmptyTextNeedsNoMemory) {
    for (const Path& path : Paths()) {
        EXPECT_EQ(path.count(nullptr, 0), 0U);
        EXPECT_EQ(path.decode(nullptr, 0, nullptr, 0), 0U);
        EXPECT_EQ(path.encode(nullptr, 0, nullptr), 0U);
    }
    EXPECT_EQ(qv::EncodeUtf8Lossy(nullptr, 0, nullptr), 0U);
    EXPECT_EQ(qv::ToUtf8(L""), "");
    EXPECT_EQ(qv::FromUtf8(""), L"");
}

TEST(Utf8, TheCountIsRightAtEveryLength) {
    std::mt19937 random(20261121);
    std::string bytes(20000, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    const std::string ascii(bytes.size(), 'a');  // the fastest way to the largest count
    const auto isLead = [](char byte) { return (byte & 0xC0) != 0x80; };
    for (size_t size = 0; size <= bytes.size(); size += size < 1000 ? 1 : 61) {
        const auto leads =
            std::count_if(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size), isLead);
        for (const Path& path : Paths()) {
            ASSERT_EQ(path.count(bytes.data(), size), static_cast<size_t>(leads)) << path.name << " " << size;
            ASSERT_EQ(path.count(ascii.data(), size), size) << path.name;
        }
    }
}

TEST(Utf8, OverlongFormsSurrogatesAndHighValuesAreRefused) {
    for (const char* bytes : {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80",
                              "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xF8\x88\x80\x80\x80",
                              "\xFC\x84\x80\x80\x80\x80", "\xFE", "\xFF", "\x80", "\xBF"}) {
        EXPECT_EQ(qv::FromUtf8(bytes), std::nullopt);
        CheckDecoding(bytes);
    }
}

// ---- every shape, at every place ----

// One byte from each range that the table of well-formed sequences tells apart, and both ends of most.
constexpr unsigned char kRanges[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF,
                                     0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE,
                                     0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};

TEST(Utf8, EveryShapeOfFourBytesIsJudgedLikeTheTable) {
    // The four bytes lie across the end of the first vector; each of the 390,625 shapes takes the next place.
    std::string bytes(96, 'a');
    size_t place = 0;
    for (const unsigned char a : kRanges) {
        for (const unsigned char b : kRanges) {
            for (const unsigned char c : kRanges) {
                for (const unsigned char d : kRanges) {
                    const size_t at = 27 + place++ % 8;
                    const unsigned char shape[] = {a, b, c, d};
                    std::copy_n(shape, 4, bytes.begin() + static_cast<std::ptrdiff_t>(at));
                    const auto middle = qvmodel::DecodeUtf8(std::string_view(bytes).substr(at, 5));
                    for (const Path& path : Paths()) {
                        wchar_t out[128];
                        const auto written = path.decode(bytes.data(), bytes.size(), out, 128);
                        ASSERT_EQ(written.has_value(), middle.has_value()) << path.name;
                        if (!middle) continue;
                        ASSERT_EQ(*written, bytes.size() - 5 + middle->size()) << path.name;
                        ASSERT_EQ(std::wstring_view(out + at, middle->size()), *middle) << path.name;
                    }
                    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), 4, 'a');
                }
            }
        }
    }
}

TEST(Utf8, ACharacterMayLieAcrossAnyVectorEdge) {
    for (const wchar_t background : {L'a', L'\u00E9', L'\u3042', L'\U0001F600'}) {
        for (const wchar_t character : {L'\u00E9', L'\u3042', L'\U0001F600', L'z'}) {
            for (size_t place = 0; place <= 80; ++place) {
                std::wstring text(80, background);
                text.insert(place, 1, character);
                CheckEncoding(text);
                CheckDecoding(Utf8(text));
            }
        }
    }
}

TEST(Utf8, EveryTruncationIsRefused) {
    for (const wchar_t character : {L'\u00E9', L'\u3042', L'\U0001F600'}) {
        for (size_t before = 0; before <= 70; ++before) {
            for (const size_t behind : {0, 1, 40}) {
                const std::string whole = Utf8({&character, 1});
                for (size_t kept = 1; kept < whole.size(); ++kept) {
                    CheckDecoding(std::string(before, 'a') + whole.substr(0, kept) +
                                  std::string(behind, 'b'));
                }
            }
        }
    }
}

TEST(Utf8, OneWrongByteAnywhereIsNoticed) {
    const std::string whole = Utf8(std::wstring(20, L'\u3042') + std::wstring(20, L'\u00E9') +
                                   std::wstring(40, L'a') + std::wstring(20, L'\U0001F600'));
    for (size_t place = 0; place < whole.size(); ++place) {
        for (const char wrong : {'\x80', '\xC3', '\xE3', '\xF0', '\xFF', 'a'}) {
            std::string bytes = whole;
            bytes[place] = wrong;
            CheckDecoding(bytes);
        }
    }
}

TEST(Utf8, TooLittleRoomFailsAndTouchesNothingBehindIt) {
    const std::string bytes =
        Utf8(std::wstring(50, L'a') + std::wstring(50, L'\u3042') + std::wstring(50, L'\u00E9'));
    for (const Path& path : Paths()) {
        for (size_t room = 0; room < 150; ++room)
            ASSERT_EQ(Decode(path, bytes, room), std::nullopt) << path.name << " " << room;
        ASSERT_NE(Decode(path, bytes, 150), std::nullopt) << path.name;
    }
}

// ---- from characters to bytes ----

TEST(Utf8, CharactersThatAreNoCodePointsAreRefusedAnywhere) {
    for (const wchar_t wrong :
         {0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0x110000, 0x7FFFFFFF, -1, static_cast<int>(0x80000000u)}) {
        for (size_t place = 0; place < 50; ++place) {
            std::wstring text(50, place % 2 == 0 ? L'a' : L'\u3042');
            text[place] = wrong;
            CheckEncoding(text);
        }
    }
}

TEST(Utf8, LossyEncodingPutsOneQuestionMarkForEach) {
    std::wstring text(100, L'\u00E9');
    for (const size_t place : {0, 7, 8, 31, 32, 33, 98, 99})
        text[place] = place % 2 == 0 ? 0xD83D : -1;
    std::string bytes(qv::Utf8SizeMax(text.size()), '\0');
    bytes.resize(qv::EncodeUtf8Lossy(text.data(), text.size(), bytes.data()));
    EXPECT_EQ(bytes, qvmodel::EncodeUtf8(text, '?'));

    const std::wstring allWrong(40, 0xDFFF);
    bytes.resize(qv::Utf8SizeMax(allWrong.size()));
    bytes.resize(qv::EncodeUtf8Lossy(allWrong.data(), allWrong.size(), bytes.data()));
    EXPECT_EQ(bytes, std::string(40, '?'));
}

// The text is encoded into `room` bytes first; the rest is encoded when there is room for it.
void CheckEncodingInTwoSteps(const std::wstring& text, size_t room) {
    const std::string whole = qvmodel::EncodeUtf8(text, '?').value();
    std::string bytes(std::max(room, whole.size()) + kGuards, kGuard);
    const qv::Utf8Progress first = qv::EncodeUtf8Lossy(text.data(), text.size(), bytes.data(), room, {});
    ASSERT_LE(first.written, room);
    ASSERT_EQ(bytes.find_first_not_of(kGuard, room), std::string::npos) << "wrote beyond the room";
    ASSERT_EQ(qvmodel::EncodeUtf8(text.substr(0, first.read), '?'), bytes.substr(0, first.written));
    if (first.read < text.size()) {
        const auto next = qvmodel::EncodeUtf8(text.substr(first.read, 1), '?');
        ASSERT_GT(first.written + next->size(), room) << "stopped although there was room";
    }
    const qv::Utf8Progress rest =
        qv::EncodeUtf8Lossy(text.data(), text.size(), bytes.data(), whole.size(), first);
    ASSERT_EQ(rest.read, text.size());
    ASSERT_EQ(bytes.substr(0, rest.written), whole);
}

TEST(Utf8, LossyEncodingGoesOnWhereTheRoomEnded) {
    std::wstring text = std::wstring(40, L'a') + std::wstring(20, L'\u00E9') + std::wstring(20, L'\u3042') +
                        std::wstring(20, L'\U0001F600');
    text[50] = 0xDC00;
    text[90] = -1;
    for (size_t room = 0; room <= 260; ++room) {
        CheckEncodingInTwoSteps(text, room);
        if (HasFatalFailure()) FAIL() << room;
    }
}

TEST(Utf8, TheSizeIsExactForCodePointsAndEnoughForAnythingElse) {
    EXPECT_EQ(qv::Utf8Size(nullptr, 0), 0U);
    for (const wchar_t c : {0, 0x7F, 0x80, 0x7FF, 0x800, 0xFFFF, 0x10000, 0x10FFFF}) {
        const std::wstring text(100000, c);
        EXPECT_EQ(qv::Utf8Size(text.data(), text.size()), 100000 * Utf8({&c, 1}).size());
    }
    const std::wstring wrong = {0xD800, 0x110000, -1};
    EXPECT_GE(qv::Utf8Size(wrong.data(), wrong.size()), 3U);
}

// ---- at random ----

wchar_t RandomCharacter(std::mt19937& random, unsigned kind) {
    switch (kind % 5) {
        case 0:
            return static_cast<wchar_t>(random() % 0x80);
        case 1:
            return static_cast<wchar_t>(0x80 + random() % 0x780);
        case 2:
            return static_cast<wchar_t>(0x800 + random() % 0xD000);
        case 3:
            return static_cast<wchar_t>(0xE000 + random() % 0x2000);
        default:
            return static_cast<wchar_t>(0x10000 + random() % 0x100000);
    }
}

// Runs of one kind of character, as real text has them.
std::wstring RandomText(std::mt19937& random) {
    std::wstring text;
    for (size_t left = random() % 200; left > 0;) {
        const size_t run = std::min<size_t>(left, 1 + random() % (random() % 3 == 0 ? 80 : 4));
        const auto kind = static_cast<unsigned>(random());
        for (size_t i = 0; i < run; ++i)
            text += RandomCharacter(random, kind);
        left -= run;
    }
    return text;
}

TEST(Utf8, RandomTextsConvertLikeTheModel) {
    constexpr unsigned kSeed = 20261;
    SCOPED_TRACE(kSeed);
    std::mt19937 random(kSeed);
    for (int i = 0; i < 30000; ++i) {
        std::wstring text = RandomText(random);
        std::string bytes = Utf8(text);
        CheckDecoding(bytes);
        CheckEncoding(text);
        if (text.empty()) continue;

        bytes[random() % bytes.size()] = static_cast<char>(random());
        if (random() % 2 == 0) bytes.resize(random() % (bytes.size() + 1));
        CheckDecoding(bytes);
        text[random() % text.size()] = static_cast<wchar_t>(random());
        CheckEncoding(text);
        if (HasFatalFailure()) FAIL() << "case " << i;
    }
}

#if QV_X86
// How much of a uniform text the loops leave to the plain ones: a little at the end.
template <class Decode, class Encode>
void CheckBulk(Decode decode, Encode encode) {
    for (const wchar_t character : {L'a', L'\u00E9', L'\u3042', L'\U0001F600'}) {
        const std::wstring text(1000, character);
        const std::string bytes = Utf8(text);
        std::vector<wchar_t> wide(text.size());
        std::vector<char> narrow(qv::Utf8SizeMax(text.size()));
        EXPECT_GT(decode(bytes.data(), bytes.size(), wide.data(), wide.size()).read, bytes.size() - 140);
        EXPECT_GT(encode(text.data(), text.size(), narrow.data(), narrow.size(), qv::Utf8Progress{}).read,
                  text.size() - 16);
    }
}

TEST(Utf8, TheVectorLoopsDoTheBulk) {
    if (qv::HasAvx2()) CheckBulk(qv::avx2::DecodeUtf8, qv::avx2::EncodeUtf8);
    if (qv::HasAvx512Compress()) CheckBulk(qv::avx512::DecodeUtf8, qv::avx512::EncodeUtf8);
}
#endif

}  // namespace

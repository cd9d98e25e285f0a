#include "formats/data_writer.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

#include <QVFoundation/QVData.h>

#include "models/binary_encoder.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::DataWriter;
using qv::HtmlCharSet;
using qv::Owned;

std::string Bytes(const Owned& data) {
    const auto size = QVDataGetSize(data.Get());
    return size == 0 ? "" : std::string(static_cast<const char*>(QVDataGetImutableBuffer(data.Get())), size);
}

std::string Utf8(const std::wstring& text) {
    std::string bytes;
    qvtest::EncodeString(bytes, text);  // with a tag in front and a zero behind
    return bytes.substr(1, bytes.size() - 2);
}

std::wstring RandomText(std::mt19937& random) {
    static constexpr wchar_t kCharacters[] = {L'a',  L'&',      L'<',      L'>',         L'"',
                                              L'\'', L'\u00E9', L'\u65E5', L'\U0001F600'};
    const std::size_t kinds = random() % 2 == 0 ? 1 : std::size(kCharacters);
    std::wstring text(random() % 4 == 0 ? random() % 700 : random() % 20, L'x');
    for (wchar_t& character : text)
        character = kCharacters[random() % kinds];
    return text;
}

std::wstring Escaped(const std::wstring& text) {
    std::wstring escaped;
    for (const wchar_t character : text) {
        switch (character) {
            case L'&':
                escaped += L"&amp;";
                break;
            case L'"':
                escaped += L"&quot;";
                break;
            case L'<':
                escaped += L"&lt;";
                break;
            case L'>':
                escaped += L"&gt;";
                break;
            default:
                escaped += character;
        }
    }
    return escaped;
}

TEST(DataWriter, NothingWrittenIsEmptyData) {
    DataWriter writer;
    EXPECT_EQ(Bytes(writer.Finish()), "");
}

TEST(DataWriter, AgreesWithAStringThatGrowsPieceByPiece) {
    std::mt19937 random(31);
    for (int round = 0; round < 60; ++round) {
        DataWriter writer;
        std::string expected;
        for (std::size_t piece = random() % 300; piece > 0; --piece) {
            switch (random() % 5) {
                case 0:
                    writer.Append('c');
                    expected += 'c';
                    break;
                case 1: {
                    const std::string bytes(random() % 9 == 0 ? random() % 20000 : random() % 30, 'b');
                    writer.Append(bytes);
                    expected += bytes;
                    break;
                }
                case 2: {
                    const auto value = static_cast<std::uint32_t>(random());
                    writer.AppendValue(value);
                    qvtest::AppendLittleEndian(expected, value, 4);
                    break;
                }
                case 3: {
                    const std::wstring text = RandomText(random);
                    writer.AppendUtf8(text);
                    expected += Utf8(text);
                    break;
                }
                default: {
                    const std::wstring text = RandomText(random);
                    writer.AppendEscaped(text, HtmlCharSet::kLimited);
                    expected += Utf8(Escaped(text));
                }
            }
        }
        ASSERT_EQ(Bytes(writer.Finish()), expected);
    }
}

TEST(DataWriter, CharactersThatUTF8CannotHoldBecomeQuestionMarks) {
    DataWriter writer;
    writer.AppendUtf8(L"a");
    for (const wchar_t character : {static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000)}) {
        writer.AppendUtf8({&character, 1});
        writer.AppendUtf8(std::wstring(100, character));
    }
    EXPECT_EQ(Bytes(writer.Finish()), "a" + std::string(202, '?'));
}

// The room doubles: what was asked for on the way is a geometric row.
TEST(DataWriter, MemoryIsInProportionToTheResult) {
    constexpr std::size_t kSize = 3'000'000;
    const std::size_t before = qvtest::AllocatedBytes();
    DataWriter writer;
    for (std::size_t i = 0; i < kSize / 10; ++i)
        writer.AppendUtf8(L"ten digits");
    const Owned data = writer.Finish();
    EXPECT_EQ(QVDataGetSize(data.Get()), kSize);
    EXPECT_LE(qvtest::AllocatedBytes() - before, 4 * kSize);
}

TEST(DataWriter, SmallResultsTakeNoMoreThanTheirSize) {
    DataWriter writer;
    writer.AppendUtf8(L"ten digits");
    const std::size_t before = qvtest::AllocatedBytes();
    const Owned data = writer.Finish();
    EXPECT_LE(qvtest::AllocatedBytes() - before, 256U);
}

TEST(DataWriter, EveryFailingAllocationIsThrownOrMadeGood) {
    const std::string piece(3000, 'x');
    const qvtest::LogCapture log;
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        try {
            DataWriter writer;
            for (int i = 0; i < 5; ++i)
                writer.Append(piece);
            const Owned data = writer.Finish();
            EXPECT_EQ(QVDataGetSize(data.Get()), 5 * piece.size());
        } catch (const std::bad_alloc&) {  // the other way out
        }
    });
    EXPECT_GE(failures, 3U);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

}  // namespace

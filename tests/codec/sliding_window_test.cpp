#include "codec/sliding_window.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>

#include "codec/coder_inputs.h"
#include "codec/token_values.h"
#include "models/plain_sliding_dictionary.h"

namespace {

using qv::SlidingWindow;
using qvtest::Bytes;
using qvtest::Shape;
using qvtest::ShapedInput;

// Both dictionaries side by side.
class Pair {
public:
    void Append(std::uint8_t value) {
        fast_.Append(value);
        plain_.AppendValue(value);
    }

    // The lookahead gets a block of its own, so that reading behind it is noticed.
    void Search(const std::uint8_t* lookahead, std::size_t size) {
        const std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[size]);
        std::copy_n(lookahead, size, copy.get());
        std::uint16_t offset = 0;
        std::uint8_t length = 0;
        plain_.SearchSlideDic(copy.get(), size, &offset, &length);
        const SlidingWindow::Match match = fast_.Search(copy.get(), size);
        ASSERT_EQ(match.length, length);
        ASSERT_EQ(match.offset, offset);
        ++searches_;
    }

    [[nodiscard]] int Searches() const { return searches_; }

private:
    SlidingWindow fast_;
    model::SlidingDictionary plain_;
    int searches_ = 0;
};

void ExpectSameTokens(SlidingWindow& window, const Bytes& bytes) {
    ASSERT_EQ(qvtest::TokenValuesOf(window, bytes), model::Tokenize(bytes.data(), bytes.size()));
}

TEST(SlidingWindow, AnswersAsThePlainDictionaryWhateverIsAppendedAndSought) {
    constexpr unsigned kSeed = 5;
    ShapedInput input(kSeed);
    int searches = 0;
    for (const Shape shape : qvtest::kAllShapes) {
        for (int round = 0; round < 20; ++round) {
            SCOPED_TRACE(testing::Message()
                         << "seed " << kSeed << " shape " << static_cast<int>(shape) << " round " << round);
            // What is sought is not what is appended next, as a caller may do; now and then it continues the
            // window.
            const Bytes appended = input.Make(shape, 500);
            const Bytes sought = input.Make(input.Below(4) == 0 ? Shape::kZerosAndOnes : shape, 1200);
            Pair pair;
            for (const std::uint8_t value : appended) {
                const std::size_t at = input.Below(600);
                const std::size_t size = input.Below(3) == 0 ? input.Below(600) : input.Below(8);
                const bool fromWindow = input.Below(4) == 0;
                const Bytes& source = fromWindow ? appended : sought;
                const std::size_t start = std::min(at, source.size());
                pair.Search(source.data() + start, std::min(size, source.size() - start));
                pair.Append(value);
            }
            searches += pair.Searches();
        }
    }
    EXPECT_GE(searches, 100000);
}

TEST(SlidingWindow, GoesOnOverManyRebases) {
    constexpr unsigned kSeed = 6;
    ShapedInput input(kSeed);
    for (const Shape shape : {Shape::kRandom, Shape::kLetters, Shape::kBase64, Shape::kProse}) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " shape " << static_cast<int>(shape));
        const Bytes bytes = input.Make(shape, 60000);
        Pair pair;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            // Searching costs the plain dictionary a walk; every eleventh place will do.
            if (i % 11 == 0) pair.Search(&bytes[i], std::min<std::size_t>(300, bytes.size() - i));
            pair.Append(bytes[i]);
        }
    }
}

TEST(SlidingWindow, LengthsEndAt255) {
    for (const std::size_t extra : {0, 1, 2, 100}) {
        ShapedInput input(7);
        const Bytes bytes = input.Make(Shape::kRandom, 1000);
        SlidingWindow window;
        for (const std::uint8_t value : bytes)
            window.Append(value);
        const SlidingWindow::Match match = window.Search(bytes.data() + 10, 254 + extra);
        EXPECT_EQ(match.length, extra == 0 ? 254 : 255);
        EXPECT_EQ(match.offset, 10);
    }
}

TEST(SlidingWindow, MatchesRunBeyondTheNewestByteIntoTheZerosThere) {
    SlidingWindow window;
    for (const char* c = "xyzab"; *c != 0; ++c)
        window.Append(static_cast<std::uint8_t>(*c));
    const Bytes lookahead{'a', 'b', 0, 0, 0, 0, 0};
    const SlidingWindow::Match match = window.Search(lookahead.data(), lookahead.size());
    EXPECT_EQ(match.offset, 3);
    EXPECT_EQ(match.length, 5) << "not more than the bytes held";
}

TEST(SlidingWindow, AnOlderPlaceOfThePairTakesTheNewestPlacesAway) {
    // Both dictionaries hold "abz" or not, then "abc": without an older "ab" the newest place matches.
    for (const bool hasOlder : {false, true}) {
        SlidingWindow window;
        for (const char* c = hasOlder ? "abzabc" : "qqzabc"; *c != 0; ++c)
            window.Append(static_cast<std::uint8_t>(*c));
        const Bytes lookahead{'a', 'b', 'c', 'd'};
        EXPECT_EQ(window.Search(lookahead.data(), lookahead.size()).length, hasOlder ? 0 : 3);
    }
}

TEST(SlidingWindow, ResetForgetsEverything) {
    ShapedInput input(8);
    SlidingWindow window;
    for (const Shape shape : {Shape::kRandom, Shape::kTwoSymbols, Shape::kLetters, Shape::kZeros}) {
        ExpectSameTokens(window, input.Make(shape, 20000));
        ExpectSameTokens(window, input.Make(Shape::kProse, 300));
    }
}

TEST(Tokenizer, MakesTheTokensOfThePlainRulesForSmallChunks) {
    constexpr unsigned kSeed = 9;
    ShapedInput input(kSeed);
    SlidingWindow window;
    for (int round = 0; round < 1200; ++round) {
        const Shape shape = qvtest::kAllShapes[input.Below(std::size(qvtest::kAllShapes))];
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " round " << round);
        ExpectSameTokens(window, input.Make(shape, input.Below(round % 4 == 0 ? 1500 : 40)));
    }
}

TEST(Tokenizer, MakesTheTokensOfThePlainRulesForWholeChunks) {
    constexpr unsigned kSeed = 10;
    ShapedInput input(kSeed);
    SlidingWindow window;
    for (const Shape shape : qvtest::kAllShapes) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " shape " << static_cast<int>(shape));
        ExpectSameTokens(window, input.Make(shape, 32768));
    }
}

TEST(Tokenizer, ShapesThatChangeWithinAChunkKeepTheTokens) {
    constexpr unsigned kSeed = 11;
    ShapedInput input(kSeed);
    SlidingWindow window;
    for (int round = 0; round < 10; ++round) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " round " << round);
        Bytes bytes;
        while (bytes.size() < 32768) {
            const Shape shape = qvtest::kAllShapes[input.Below(std::size(qvtest::kAllShapes))];
            const Bytes piece = input.Make(shape, 1 + input.Below(9000));
            bytes.insert(bytes.end(), piece.begin(), piece.end());
        }
        bytes.resize(32768);
        ExpectSameTokens(window, bytes);
    }
}

TEST(Tokenizer, RandomBytesAndLettersReachTheRebases) {
    ShapedInput input(12);
    for (const Shape shape : {Shape::kRandom, Shape::kLetters, Shape::kBase64}) {
        const Bytes bytes = input.Make(shape, 32768);
        SlidingWindow window;
        qv::TokenList tokens;
        qv::Tokenize(window, bytes.data(), bytes.size(), tokens);
        EXPECT_GT(tokens.Size(), 16384u) << "shape " << static_cast<int>(shape);
    }
}

TEST(Tokenizer, RepeatsGrowWithTheDictionary) {
    // One byte a match enters the dictionary, and no match is longer than what it holds.
    const Bytes bytes(100, 'x');
    SlidingWindow window;
    std::vector<std::uint16_t> expected{'x', 'x', 'x'};
    int left = 97;
    for (int length = 3; left > 0; ++length) {
        expected.push_back(static_cast<std::uint16_t>(std::min(length, left) + 253));
        expected.push_back(0);
        left -= length;
    }
    EXPECT_EQ(qvtest::TokenValuesOf(window, bytes), expected);
}

}  // namespace

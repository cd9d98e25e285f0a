#include "pi_digits.h"

#include <cstdio>

namespace blowfish_tables {
namespace {

// Every division cuts its result, which costs less than one unit of the last word. The sums have some
// 20,000 terms, so two spare words are far more than the lost units can reach.
constexpr std::size_t kSpareWords = 2;

// A fixed-point number: word 0 is the integer part, the rest is the fraction, most significant first.
using Fixed = std::vector<std::uint32_t>;

void Add(Fixed& sum, const Fixed& term) {
    std::uint64_t carry = 0;
    for (std::size_t i = sum.size(); i-- > 0;) {
        carry += std::uint64_t{sum[i]} + term[i];
        sum[i] = static_cast<std::uint32_t>(carry);
        carry >>= 32;
    }
}

void Subtract(Fixed& difference, const Fixed& term) {
    std::uint64_t borrow = 0;
    for (std::size_t i = difference.size(); i-- > 0;) {
        const std::uint64_t taken = std::uint64_t{difference[i]} - term[i] - borrow;
        difference[i] = static_cast<std::uint32_t>(taken);
        borrow = taken >> 63;
    }
}

// quotient = dividend / divisor; false when nothing is left. The two may be the same number.
bool Divide(const Fixed& dividend, std::uint32_t divisor, Fixed& quotient) {
    std::uint64_t remainder = 0;
    std::uint32_t anyBit = 0;
    for (std::size_t i = 0; i < dividend.size(); ++i) {
        remainder = (remainder << 32) | dividend[i];
        quotient[i] = static_cast<std::uint32_t>(remainder / divisor);
        remainder %= divisor;
        anyBit |= quotient[i];
    }
    return anyBit != 0;
}

// factor * arctan(1 / x) by its power series: factor * (1/x - 1/(3 x^3) + 1/(5 x^5) - ...).
Fixed ArcTangentOfInverse(std::uint32_t x, std::uint32_t factor, std::size_t size) {
    Fixed power(size, 0);
    Fixed term(size, 0);
    power[0] = factor;
    Divide(power, x, power);
    Fixed sum = power;
    bool minus = true;
    for (std::uint32_t odd = 3; Divide(power, x * x, power); odd += 2) {
        Divide(power, odd, term);
        minus ? Subtract(sum, term) : Add(sum, term);
        minus = !minus;
    }
    return sum;
}

void AppendWords(std::string& text, const std::uint32_t* words, std::size_t count) {
    constexpr std::size_t kWordsInLine = 8;
    for (std::size_t i = 0; i < count; ++i) {
        char word[16];
        std::snprintf(word, sizeof word, "0x%08X,", static_cast<unsigned>(words[i]));
        text += i % kWordsInLine == 0 ? "    " : " ";
        text += word;
        if (i % kWordsInLine == kWordsInLine - 1 || i == count - 1) {
            text += "\n";
        }
    }
}

}  // namespace

std::vector<std::uint32_t> FractionOfPi(std::size_t wordCount) {
    const std::size_t size = 1 + wordCount + kSpareWords;
    Fixed pi = ArcTangentOfInverse(5, 16, size);  // Machin: pi = 16 arctan(1/5) - 4 arctan(1/239)
    Subtract(pi, ArcTangentOfInverse(239, 4, size));
    return {pi.begin() + 1, pi.begin() + 1 + static_cast<std::ptrdiff_t>(wordCount)};
}

std::string TablesSource() {
    constexpr std::size_t kSubkeys = 18;
    constexpr std::size_t kSubstitutes = 4 * 256;
    const std::vector<std::uint32_t> words = FractionOfPi(kSubkeys + kSubstitutes);

    std::string text =
        "// Made by tools/blowfish_tables from the hexadecimal digits of pi; do not edit.\n"
        "\n"
        "#include \"crypto/blowfish_tables.h\"\n"
        "\n"
        "// clang-format off\n"
        "namespace qv {\n"
        "\n"
        "const BlowfishSubkeys kBlowfishInitialSubkeys = {\n";
    AppendWords(text, words.data(), kSubkeys);
    text +=
        "};\n"
        "\n"
        "const BlowfishSubstitutes kBlowfishInitialSubstitutes = {\n";
    AppendWords(text, words.data() + kSubkeys, kSubstitutes);
    text +=
        "};\n"
        "\n"
        "}  // namespace qv\n"
        "// clang-format on\n";
    return text;
}

}  // namespace blowfish_tables

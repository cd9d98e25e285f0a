#include "crypto/blowfish_tables.h"

#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

#include "crypto/pi_words.h"

namespace {

TEST(BlowfishTables, AreTheFractionOfPi) {
    const std::vector<std::uint32_t>& pi = qvtest::PiWords();
    for (std::size_t i = 0; i < 18; ++i)
        EXPECT_EQ(qv::kBlowfishInitialSubkeys[i], pi[i]) << i;
    for (std::size_t i = 0; i < 4 * 256; ++i)
        EXPECT_EQ(qv::kBlowfishInitialSubstitutes[i], pi[18 + i]) << i;
}

TEST(BlowfishTables, BeginWithThePublishedWords) {
    EXPECT_EQ(qv::kBlowfishInitialSubkeys.front(), 0x243F6A88);
    EXPECT_EQ(qv::kBlowfishInitialSubstitutes.front(), 0xD1310BA6);
}

TEST(BlowfishTables, SourceIsWhatTheGeneratorWrites) {
    std::ifstream file(BLOWFISH_TABLES_SOURCE);
    const std::string source{std::istreambuf_iterator<char>(file), {}};
    EXPECT_TRUE(source == blowfish_tables::TablesSource())
        << "run build/<preset>/tools/blowfish_tables/blowfish_tables > src/crypto/blowfish_tables.cpp";
}

// Bailey, Borwein and Plouffe give any hexadecimal digit of pi without those before it.
double FractionOfDigits(int position, int divisor) {
    double sum = 0;
    for (int k = 0; k <= position + 12; ++k) {
        const double below = 8.0 * k + divisor;
        if (k > position) {
            sum += std::pow(16.0, position - k) / below;
            continue;
        }
        unsigned long long power = 1;
        const auto modulus = static_cast<unsigned long long>(below);
        for (int i = 0; i < position - k; ++i)
            power = power * 16 % modulus;
        sum += static_cast<double>(power) / below;
        sum -= std::floor(sum);
    }
    return sum;
}

int DigitOfPi(int position) {
    const double x = 4 * FractionOfDigits(position, 1) - 2 * FractionOfDigits(position, 4) -
                     FractionOfDigits(position, 5) - FractionOfDigits(position, 6);
    return static_cast<int>((x - std::floor(x)) * 16);
}

TEST(BlowfishTables, AgreeWithAnotherFormulaForPi) {
    const std::vector<std::uint32_t>& pi = qvtest::PiWords();
    for (std::size_t word : {0, 1, 17, 18, 100, 200}) {
        for (int digit = 0; digit < 8; ++digit) {
            EXPECT_EQ(pi[word] >> (28 - 4 * digit) & 0xF, DigitOfPi(static_cast<int>(word) * 8 + digit))
                << "word " << word << " digit " << digit;
        }
    }
}

}  // namespace

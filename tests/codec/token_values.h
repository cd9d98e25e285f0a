// Token lists in the plain model's form: a literal is one value, its byte; a match is two, its symbol and its
// offset.
#pragma once

#include <cstdint>
#include <vector>

#include "codec/token_list.h"
#include "codec/tokenizer.h"

namespace qvtest {

using TokenValues = std::vector<std::uint16_t>;

inline TokenValues ValuesOf(const qv::TokenList& tokens) {
    TokenValues values;
    for (const qv::Token& token : tokens) {
        values.push_back(token.symbol);
        if (token.symbol > qv::kLastLiteral) values.push_back(token.offset);
    }
    return values;
}

inline void Fill(qv::TokenList& tokens, const TokenValues& values) {
    tokens.Clear();
    for (auto value = values.begin(); value != values.end(); ++value) {
        if (*value <= qv::kLastLiteral) {
            tokens.AddLiteral(static_cast<std::uint8_t>(*value));
        } else {
            const unsigned length = *value - static_cast<unsigned>(qv::kMatchTokenBase);
            tokens.AddMatch(length, *++value);
        }
    }
}

inline TokenValues TokenValuesOf(qv::SlidingWindow& window, const std::vector<std::uint8_t>& bytes) {
    static qv::TokenList tokens;
    qv::Tokenize(window, bytes.data(), bytes.size(), tokens);
    return ValuesOf(tokens);
}

}  // namespace qvtest

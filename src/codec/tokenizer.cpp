#include "codec/tokenizer.h"

namespace qv {

void Tokenize(SlidingWindow& window, const std::uint8_t* bytes, std::size_t size,
              TokenList& tokens) noexcept {
    window.Reset();
    tokens.Clear();
    for (std::size_t at = 0; at < size;) {
        const SlidingWindow::Match match = window.Search(bytes + at, size - at);
        window.Append(bytes[at]);
        if (match.length != 0) {
            tokens.AddMatch(match.length, match.offset);
            at += match.length;
        } else {
            tokens.AddLiteral(bytes[at]);
            at += 1;
        }
    }
}

}  // namespace qv

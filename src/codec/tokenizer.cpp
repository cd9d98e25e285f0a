#include "codec/tokenizer.h"

namespace qv {

std::size_t Tokenize(SlidingWindow& window, const std::uint8_t* bytes, std::size_t size,
                     std::uint16_t* tokens) noexcept {
    window.Reset();
    std::uint16_t* out = tokens;
    for (std::size_t at = 0; at < size;) {
        const SlidingWindow::Match match = window.Search(bytes + at, size - at);
        window.Append(bytes[at]);
        if (match.length != 0) {
            *out++ = static_cast<std::uint16_t>(match.length + kMatchTokenBase);
            *out++ = match.offset;
            at += match.length;
        } else {
            *out++ = bytes[at];
            at += 1;
        }
    }
    return static_cast<std::size_t>(out - tokens);
}

}  // namespace qv

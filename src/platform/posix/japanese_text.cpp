#include "platform/japanese_text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <iconv.h>

namespace qv {
namespace {

// One conversion direction. Opening it loads tables, so each thread keeps what it has opened.
class Converter final {
public:
    Converter(const char* to, const char* from) noexcept : descriptor_(iconv_open(to, from)) {}
    ~Converter() {
        if (IsOpen()) iconv_close(descriptor_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    [[nodiscard]] bool IsOpen() const noexcept { return descriptor_ != reinterpret_cast<iconv_t>(-1); }

    // Forgets the shift state of an earlier text.
    void Reset() noexcept { iconv(descriptor_, nullptr, nullptr, nullptr, nullptr); }

    // Appends the converted input to `out` and takes it off the front of `in`, until it ends (true) or until
    // something in it does not convert (false).
    template <class From, class To>
    bool Feed(std::basic_string_view<From>& in, std::basic_string<To>& out) {
        char* at = reinterpret_cast<char*>(const_cast<From*>(in.data()));
        size_t left = in.size() * sizeof(From);
        const bool complete = Run(&at, &left, out);
        in.remove_prefix(in.size() - left / sizeof(From));
        return complete;
    }

    // Appends what leads back to the initial shift state.
    template <class To>
    void Finish(std::basic_string<To>& out) {
        Run(nullptr, nullptr, out);
    }

private:
    template <class To>
    bool Run(char** in, size_t* left, std::basic_string<To>& out) {
        std::array<To, 256> piece;
        for (;;) {
            char* to = reinterpret_cast<char*>(piece.data());
            size_t room = sizeof piece;
            const bool complete = iconv(descriptor_, in, left, &to, &room) != static_cast<size_t>(-1);
            const bool outOfRoom = !complete && errno == E2BIG;
            out.append(piece.data(), piece.size() - room / sizeof(To));
            if (!outOfRoom) return complete;
        }
    }

    iconv_t descriptor_;
};

constexpr const char* kWide = "WCHAR_T";
constexpr std::array kNames = {"CP932", "ISO-2022-JP", "EUC-JP"};

// The calling thread's converter, ready for a new text, or null when the system has none.
Converter* Prepared(std::optional<Converter>& slot, const char* to, const char* from) noexcept {
    if (!slot) slot.emplace(to, from);
    if (!slot->IsOpen()) {
        slot.reset();  // the next text tries again: the system may only have been short of memory
        return nullptr;
    }
    slot->Reset();
    return &*slot;
}

using Converters = std::array<std::optional<Converter>, kNames.size()>;

Converter* Decoder(JapaneseEncoding encoding) noexcept {
    thread_local Converters decoders;
    const auto index = static_cast<size_t>(encoding);
    return Prepared(decoders[index], kWide, kNames[index]);
}

Converter* Encoder(JapaneseEncoding encoding) noexcept {
    thread_local Converters encoders;
    const auto index = static_cast<size_t>(encoding);
    return Prepared(encoders[index], kNames[index], kWide);
}

// The system's converters drop the invisible tag characters without a word. The replacement character, which
// has no place in any of the tables, makes them fail like every other character that does not fit.
wchar_t WithoutTags(wchar_t character) noexcept {
    return (static_cast<uint32_t>(character) & ~0x7Fu) == 0xE0000 ? wchar_t{0xFFFD} : character;
}

// What to try in place of a character that does not fit, best first.
std::wstring_view Substitutes(wchar_t character) noexcept {
    if (character == 0x301C) return L"\uFF5E?";
    if (character == 0xFF5E) return L"\u301C?";
    return L"?";
}

void FeedSubstitute(Converter& converter, wchar_t character, std::string& out) {
    for (const wchar_t substitute : Substitutes(character)) {
        std::wstring_view one(&substitute, 1);
        if (converter.Feed(one, out)) return;
    }
}

}  // namespace

std::optional<std::wstring> DecodeJapanese(JapaneseEncoding encoding, std::string_view bytes) {
    Converter* const converter = Decoder(encoding);
    if (converter == nullptr) return std::nullopt;
    std::wstring text;
    if (!converter->Feed(bytes, text)) return std::nullopt;
    converter->Finish(text);
    return text;
}

std::optional<std::string> EncodeJapanese(JapaneseEncoding encoding, std::wstring_view text) {
    Converter* const converter = Encoder(encoding);
    if (converter == nullptr) return std::nullopt;
    std::string bytes;
    std::array<wchar_t, 256> piece;
    while (!text.empty()) {
        const size_t count = std::min(text.size(), piece.size());
        std::transform(text.begin(), text.begin() + count, piece.begin(), WithoutTags);
        std::wstring_view rest(piece.data(), count);
        while (!converter->Feed(rest, bytes)) {
            FeedSubstitute(*converter, rest.front(), bytes);
            rest.remove_prefix(1);
        }
        text.remove_prefix(count);
    }
    converter->Finish(bytes);
    return bytes;
}

}  // namespace qv

#include "text/text_encoding.h"

#include <bit>
#include <string>

#include "base/mac_roman.h"
#include "base/utf16.h"
#include "base/utf32.h"
#include "base/utf8.h"
#include "platform/japanese_text.h"

namespace qv {
namespace {

constexpr unsigned int kLittleEndian = 1;
constexpr unsigned int kBigEndian = 2;

TextEncoding EncodingOf(const QVEncodingInfo& info, TextEncoding withoutByteOrder) noexcept {
    const auto inOrder = [&](TextEncoding little, TextEncoding big) {
        if (info.byteOrder == kLittleEndian) return little;
        return info.byteOrder == kBigEndian ? big : withoutByteOrder;
    };
    switch (info.encoding) {
        case QVEncodingShiftJIS:
            return TextEncoding::kShiftJis;
        case QVEncodingISO2022JP:
            return TextEncoding::kIso2022Jp;
        case QVEncodingEUCJP:
            return TextEncoding::kEucJp;
        case QVEncodingUTF8:
            return TextEncoding::kUtf8;
        case QVEncodingUTF16:
            return inOrder(TextEncoding::kUtf16Little, TextEncoding::kUtf16Big);
        case QVEncodingUTF32:
            return inOrder(TextEncoding::kUtf32Little, TextEncoding::kUtf32Big);
        default:
            return TextEncoding::kMacRoman;
    }
}

// The text that `decode` writes into room for `room` characters; it answers how many they are, or nothing.
template <class Decode>
std::optional<WideText> DecodedInto(size_t room, Decode decode) {
    WideText text;
    text.Reserve(room);
    const std::optional<size_t> count = decode(text.AppendRoom(room));
    if (!count) return std::nullopt;
    text.TakeRoom(*count);
    return text;
}

std::optional<WideText> DecodedJapanese(std::string_view bytes, JapaneseEncoding encoding) {
    const std::optional<std::wstring> text = DecodeJapanese(encoding, bytes);
    if (!text) return std::nullopt;
    return WideText(*text);
}

std::optional<WideText> DecodedUtf16(std::string_view bytes, std::endian order) {
    return DecodedInto(Utf16ToWideMax(bytes.size()),
                       [&](wchar_t* out) { return DecodeUtf16(bytes.data(), bytes.size(), order, out); });
}

std::optional<WideText> DecodedUtf32(std::string_view bytes, std::endian order) {
    return DecodedInto(Utf32ToWideMax(bytes.size()),
                       [&](wchar_t* out) { return DecodeUtf32(bytes.data(), bytes.size(), order, out); });
}

std::optional<WideText> DecodedUtf8(std::string_view bytes) {
    const size_t room = CountUtf8Characters(bytes.data(), bytes.size());
    return DecodedInto(room, [&](wchar_t* out) { return DecodeUtf8(bytes.data(), bytes.size(), out, room); });
}

std::optional<WideText> DecodedMacRoman(std::string_view bytes) {
    return DecodedInto(bytes.size(), [&](wchar_t* out) {
        DecodeMacRoman(bytes.data(), bytes.size(), out);
        return std::optional(bytes.size());
    });
}

}  // namespace

TextEncoding EncodingToWrite(const QVEncodingInfo& info) noexcept {
    return EncodingOf(info, TextEncoding::kMacRoman);
}

TextEncoding EncodingToRead(const QVEncodingInfo& info) noexcept {
    return EncodingOf(info, TextEncoding::kShiftJis);
}

std::string_view MarkToWrite(const QVEncodingInfo& info) noexcept {
    if (info.byteOrderMark == 0) return {};
    const bool big = info.byteOrder == kBigEndian;
    switch (info.encoding) {
        case QVEncodingUTF8:
            return {"\xEF\xBB\xBF", 3};
        case QVEncodingUTF16:
            return {big ? "\xFE\xFF" : "\xFF\xFE", 2};
        case QVEncodingUTF32:
            return {big ? "\x00\x00\xFE\xFF" : "\xFF\xFE\x00\x00", 4};
        default:
            return {};
    }
}

size_t MarkSizeToSkip(const QVEncodingInfo& info) noexcept {
    return MarkToWrite(info).size();
}

std::optional<WideText> DecodedText(std::string_view bytes, TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::kShiftJis:
            return DecodedJapanese(bytes, JapaneseEncoding::kShiftJis);
        case TextEncoding::kIso2022Jp:
            return DecodedJapanese(bytes, JapaneseEncoding::kIso2022Jp);
        case TextEncoding::kEucJp:
            return DecodedJapanese(bytes, JapaneseEncoding::kEucJp);
        case TextEncoding::kUtf8:
            return DecodedUtf8(bytes);
        case TextEncoding::kUtf16Little:
            return DecodedUtf16(bytes, std::endian::little);
        case TextEncoding::kUtf16Big:
            return DecodedUtf16(bytes, std::endian::big);
        case TextEncoding::kUtf32Little:
            return DecodedUtf32(bytes, std::endian::little);
        case TextEncoding::kUtf32Big:
            return DecodedUtf32(bytes, std::endian::big);
        case TextEncoding::kMacRoman:
            return DecodedMacRoman(bytes);
    }
    return std::nullopt;
}

}  // namespace qv

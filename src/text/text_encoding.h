// Which encoding and which byte-order mark a QVEncodingInfo asks for, and the decoding of bytes into text.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include <QVFoundation/QVEncoding.h>

#include "base/wide_text.h"

namespace qv {

enum class TextEncoding {
    kShiftJis,
    kIso2022Jp,
    kEucJp,
    kUtf8,
    kUtf16Little,
    kUtf16Big,
    kUtf32Little,
    kUtf32Big,
    kMacRoman,
};

// The encoding to write. Without a byte order UTF-16 and UTF-32 are Mac OS Roman.
TextEncoding EncodingToWrite(const QVEncodingInfo& info) noexcept;

// The encoding to read. Without a byte order UTF-16 and UTF-32 are, unlike for writing, Shift_JIS.
TextEncoding EncodingToRead(const QVEncodingInfo& info) noexcept;

// The mark to write, which may be empty. It follows the encoding number and the byte order alone, also where
// these are written as Mac OS Roman.
std::string_view MarkToWrite(const QVEncodingInfo& info) noexcept;

// The bytes to skip when reading.
size_t MarkSizeToSkip(const QVEncodingInfo& info) noexcept;

// The text of the bytes, or nothing when they are not valid. Throws when memory runs out.
std::optional<WideText> DecodedText(std::string_view bytes, TextEncoding encoding);

}  // namespace qv

#include <algorithm>
#include <bit>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <QVFoundation/QVData.h>
#include <QVFoundation/QVEncoding.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "base/extended_utf8.h"
#include "base/mac_roman.h"
#include "base/utf16.h"
#include "base/utf32.h"
#include "base/utf8.h"
#include "collections/raw_data.h"
#include "platform/japanese_text.h"
#include "runtime/Guard.h"
#include "runtime/Owned.h"
#include "text/QVStringImpl.h"
#include "text/text_encoding.h"

using qv::Guard;
using qv::Owned;
using qv::TextEncoding;
using qv::With;

namespace {

// Adds `size` bytes to the Data, which `write` fills. False when there is no room.
template <class Write>
bool AppendWritten(void* data, size_t size, Write write) {
    if (size == 0) return true;
    unsigned char* const room = qv::ExtendData(data, size);
    if (room == nullptr) return false;
    write(reinterpret_cast<char*>(room));
    return true;
}

bool AppendUtf16(void* data, std::wstring_view text, std::endian order) {
    return AppendWritten(data, qv::Utf16Size(text.data(), text.size()),
                         [&](char* out) { qv::EncodeUtf16(text.data(), text.size(), order, out); });
}

bool AppendUtf32(void* data, std::wstring_view text, std::endian order) {
    return AppendWritten(data, qv::Utf32Size(text.size()),
                         [&](char* out) { qv::EncodeUtf32(text.data(), text.size(), order, out); });
}

bool AppendMacRoman(void* data, std::wstring_view text) {
    return AppendWritten(data, text.size(),
                         [&](char* out) { qv::EncodeMacRoman(text.data(), text.size(), out); });
}

bool AppendJapanese(void* data, std::wstring_view text, qv::JapaneseEncoding encoding) {
    const std::optional<std::string> bytes = qv::EncodeJapanese(encoding, text);
    return !bytes || QVDataAppendBuffer(data, bytes->data(), static_cast<unsigned long>(bytes->size()));
}

// Most text is ASCII, a byte for each character: only what is left when that room is used up gets measured.
// One byte more is for the 0 behind QVStringGetUTF8String's text.
bool AppendUtf8(void* data, std::wstring_view text) {
    const unsigned long start = QVDataGetSize(data);
    size_t room = text.size() + 1;
    unsigned char* out = qv::ExtendData(data, room);
    if (out == nullptr) return false;
    qv::Utf8Progress done =
        qv::EncodeUtf8Lossy(text.data(), text.size(), reinterpret_cast<char*>(out), room, {});

    if (done.read < text.size()) {
        const size_t rest = qv::Utf8Size(text.data() + done.read, text.size() - done.read) + 1;
        const size_t more = done.written + rest - room;
        if (!QVDataReserve(data, static_cast<unsigned long>(start + room + more))) return false;
        out = qv::ExtendData(data, more);
        if (out == nullptr) return false;
        out -= room;
        room += more;
        done = qv::EncodeUtf8Lossy(text.data(), text.size(), reinterpret_cast<char*>(out), room, done);
    }
    return QVDataSetSize(data, static_cast<unsigned long>(start + done.written));
}

// A character that does not fit is the only difference between an exact conversion and a lossy one, so one
// lossy pass does for both.
bool AppendEncoded(void* data, std::wstring_view text, TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::kShiftJis:
            return AppendJapanese(data, text, qv::JapaneseEncoding::kShiftJis);
        case TextEncoding::kIso2022Jp:
            return AppendJapanese(data, text, qv::JapaneseEncoding::kIso2022Jp);
        case TextEncoding::kEucJp:
            return AppendJapanese(data, text, qv::JapaneseEncoding::kEucJp);
        case TextEncoding::kUtf8:
            return AppendUtf8(data, text);
        case TextEncoding::kUtf16Little:
            return AppendUtf16(data, text, std::endian::little);
        case TextEncoding::kUtf16Big:
            return AppendUtf16(data, text, std::endian::big);
        case TextEncoding::kUtf32Little:
            return AppendUtf32(data, text, std::endian::little);
        case TextEncoding::kUtf32Big:
            return AppendUtf32(data, text, std::endian::big);
        case TextEncoding::kMacRoman:
            return AppendMacRoman(data, text);
    }
    return false;
}

}  // namespace

void* QVStringMakeData(void* string, QVEncodingInfo info) noexcept {
    return With<QVStringImpl>(string, static_cast<void*>(nullptr),
                              [&](const QVStringImpl& s) { return s.MakeData(info); });
}

void* QVStringCreateDataMac(void* string, QVEncodingInfo info) noexcept {
    if (string == nullptr) return nullptr;
    return Guard<void*>(nullptr, [&]() -> void* {
        const std::string_view mark = qv::MarkToWrite(info);
        Owned data{QVDataCreate(nullptr, 0)};
        if (!data || !QVDataAppendBuffer(data.Get(), mark.data(), static_cast<unsigned long>(mark.size())))
            return nullptr;
        const std::wstring_view text(QVStringGetBuffer(string), QVStringGetLength(string));
        if (!AppendEncoded(data.Get(), text, qv::EncodingToWrite(info))) return nullptr;
        return data.Detach();
    });
}

void* QVStringCreateWithData(void* data, QVEncodingInfo info) noexcept {
    const auto* const bytes = static_cast<const char*>(QVDataGetImutableBuffer(data));
    if (bytes == nullptr) return nullptr;
    return Guard<void*>(nullptr, [&]() -> void* {
        std::string_view rest(bytes, QVDataGetSize(data));
        rest.remove_prefix(std::min(qv::MarkSizeToSkip(info), rest.size()));
        std::optional<qv::WideText> text = qv::DecodedText(rest, qv::EncodingToRead(info));
        if (!text) return nullptr;
        return QVStringImpl::CreateAdopting(std::move(*text));
    });
}

const char* QVStringGetUTF8String(void* string) noexcept {
    void* data = QVStringMakeData(string, {QVEncodingUTF8, 0, 0});
    if (data == nullptr) data = QVDataCreate(nullptr, 0);
    if (!QVDataAppendBuffer(data, "", 1)) {
        QVRelease(data);
        return nullptr;
    }
    return static_cast<const char*>(QVDataGetImutableBuffer(QVTEMPOBJ(data)));
}

int QVEncodeWideStringWithUTF8(const wchar_t* characters, unsigned long count, void** data,
                               unsigned long* second) noexcept {
    if (second != nullptr) *second = 0;
    if (data == nullptr) return QVErrParam;
    *data = nullptr;
    if (characters == nullptr && count > 0) return QVErrParam;

    // The zero bytes in front of the encoded ones belong to the result.
    if (count > std::numeric_limits<unsigned long>::max() / 2) return QVErrMemory;
    Owned encoded{QVDataCreate(nullptr, 2 * count)};
    if (!encoded) return QVErrMemory;
    const auto write = [&](char* out) { qv::EncodeExtendedUtf8(characters, count, out); };
    if (!AppendWritten(encoded.Get(), qv::ExtendedUtf8Size(characters, count), write)) return QVErrMemory;
    *data = encoded.Detach();
    return QVNoErr;
}

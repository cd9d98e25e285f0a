#include "text/QVStringImpl.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "base/hex_text.h"
#include "base/line_breaks.h"
#include "base/path_text.h"
#include "base/utf8.h"
#include "base/wide_search.h"
#include "platform/home.h"
#include "runtime/Guard.h"

using qv::WideText;

namespace {

std::wstring_view TextOf(void* string) {
    const QVStringImpl* object = qv::FromHandle<QVStringImpl>(string);
    return {object->GetBuffer(), object->GetLength()};
}

// The handle of a new string that holds what `makeText` returns, or null and a log line.
template <class MakeText>
void* CreateString(MakeText makeText,
                   const wchar_t* failureMessage = L"Couldn't allocate the instance of the QVString.") {
    void* string = qv::CreateObject<QVStringImpl>(makeText);
    if (!string) QVLog(failureMessage);
    return string;
}

// The same for copies, where running out of memory for the text has a message of its own.
void* CreateCopyOf(std::wstring_view text) {
    std::optional<WideText> copy;
    qv::Guard([&] { copy.emplace(text); });
    if (copy) return CreateString([&] { return WideText(std::move(*copy)); });
    QVLog(L"Couldn't allocate the buffer for the string.");
    return nullptr;
}

WideText DecodedText(std::string_view bytes) {
    if (bytes.size() > WideText::kMaxLength) throw std::length_error("DecodedText");
    WideText text;
    // Short texts have the room anyway. For others, counting first is cheaper than memory that is not needed.
    const bool isShort = bytes.size() <= WideText::kInlineCapacity;
    const size_t room = isShort ? bytes.size() : qv::CountUtf8Characters(bytes.data(), bytes.size());
    text.Reserve(room);
    const std::optional<size_t> count =
        qv::DecodeUtf8(bytes.data(), bytes.size(), text.AppendRoom(room), room);
    if (count) {
        text.TakeRoom(*count);
    } else {
        text = WideText();  // without the room that the invalid bytes took
    }
    return text;
}

template <class Mapping>
WideText MappedText(std::wstring_view text, Mapping mapping) {
    WideText mapped;
    mapped.Reserve(text.size());
    std::transform(text.begin(), text.end(), mapped.AppendRoom(text.size()), mapping);
    mapped.TakeRoom(text.size());
    return mapped;
}

WideText JoinedText(std::wstring_view first, std::wstring_view second, std::wstring_view third) {
    WideText joined;
    joined.Reserve(first.size() + second.size() + third.size());
    joined.Append(first);
    joined.Append(second);
    joined.Append(third);
    return joined;
}

void* CreateJoined(std::wstring_view text, void* added, wchar_t separator) {
    const std::wstring_view addedText = qv::UpToZero(TextOf(added));
    const bool separated = qv::NeedsSeparator(text, addedText, separator);
    return CreateString([&] { return JoinedText(text, {&separator, separated ? 1U : 0U}, addedText); });
}

wchar_t UpperCase(wchar_t character) {
    return static_cast<wchar_t>(std::towupper(static_cast<wint_t>(character)));
}

wchar_t LowerCase(wchar_t character) {
    return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(character)));
}

bool IsSpace(wchar_t character) {
    return std::iswspace(static_cast<wint_t>(character)) != 0;
}

}  // namespace

void* QVStringImpl::CreateWithUtf8(std::string_view bytes) {
    return CreateString([&] { return DecodedText(bytes); }, L"Couldn't allocate the instance of QVString.");
}

void* QVStringImpl::CreateWithText(std::wstring_view text) {
    return CreateString([&] { return WideText(text); });
}

void* QVStringImpl::CreateAdopting(WideText&& text) {
    return CreateString([&] { return WideText(std::move(text)); });
}

void* QVStringImpl::CreateWithHashValue128(const QVHashValue128& value) {
    wchar_t digits[32];
    qv::PutHexBytes(value.A, digits);
    qv::PutHexBytes(value.B, digits + 8);
    qv::PutHexBytes(value.C, digits + 16);
    qv::PutHexBytes(value.D, digits + 24);
    return CreateWithText({digits, std::size(digits)});
}

void* QVStringImpl::GetLineBreakString(QVLineBreakType type) {
    const std::wstring_view text = qv::LineBreakText(type);
    void* string = text.empty() ? nullptr : CreateWithText(text);
    return string ? QVTEMPOBJ(string) : nullptr;
}

wchar_t QVStringImpl::GetCharacterAtIndex(unsigned long index) const {
    return index < text_.Length() ? text_.Data()[index] : L'\0';
}

int QVStringImpl::Compare(void* other) const {
    return std::wcscmp(text_.Data(), TextOf(other).data());
}

int QVStringImpl::CaseInsensitiveCompare(void* other) const {
    const wchar_t* a = text_.Data();
    const wchar_t* b = TextOf(other).data();
    for (;; ++a, ++b) {
        const wchar_t upperA = UpperCase(*a);
        const wchar_t upperB = *a == *b ? upperA : UpperCase(*b);
        if (upperA != upperB) return upperA < upperB ? -1 : 1;
        if (upperA == L'\0') return 0;
    }
}

unsigned long QVStringImpl::FindString(void* searched, unsigned long start) const {
    const size_t found = qv::FindText(text_.View(), qv::UpToZero(TextOf(searched)), start);
    return found == qv::kNotFound ? QVStringNotFound : found;
}

unsigned long QVStringImpl::HexUIntValue() const {
    return qv::ParseHex(text_.View());
}

QVLineBreakType QVStringImpl::GetLineBreakType() const {
    return qv::FirstLineBreak(text_.View());
}

void* QVStringImpl::MakeData(QVEncodingInfo info) const {
    return QVStringCreateDataMac(qv::ToHandle(this), info);
}

void* QVStringImpl::CreateCopyString() const {
    return CreateCopyOf(text_.View());
}

void* QVStringImpl::CreateSubString(QVRange range) const {
    if (range.location < 0 || range.length <= 0) return CreateCopyOf({});
    const size_t start = std::min<size_t>(range.location, text_.Length());
    return CreateCopyOf(text_.View().substr(start, range.length));
}

void* QVStringImpl::CreateUpperCaseString() const {
    return CreateString([&] { return MappedText(text_.View(), UpperCase); });
}

void* QVStringImpl::CreateLowerCaseString() const {
    return CreateString([&] { return MappedText(text_.View(), LowerCase); });
}

void* QVStringImpl::CreateLastPathComponent() const {
    return CreateWithText(qv::LastPathComponent(text_.View()));
}

void* QVStringImpl::CreateByDeletingLastPathComponent() const {
    return CreateWithText(qv::DirectoryOfPath(text_.View()));
}

void* QVStringImpl::CreateByAppendingPathComponent(void* component) const {
    return CreateJoined(text_.View(), component, L'/');
}

void* QVStringImpl::CreateByAppendingPathExtension(void* extension) const {
    return CreateJoined(text_.View(), extension, L'.');
}

void* QVStringImpl::CreateByExpandingTildeInPath() const {
    const std::wstring_view text = text_.View();
    const size_t tilde = qv::FindCharacter(text, L'~', 0);
    if (tilde == qv::kNotFound) return CreateWithText(text);
    return CreateString([&] {
        const std::optional<std::wstring> home = qv::FromUtf8(qv::HomeDirectory());
        if (!home || home->empty()) return WideText(text);
        return JoinedText(qv::UpToZero(text.substr(0, tilde)), *home, qv::UpToZero(text.substr(tilde + 1)));
    });
}

void QVStringImpl::AppendString(void* other) {
    text_.AppendUpToZero(TextOf(other));
}

void QVStringImpl::TrimLeft() {
    const std::wstring_view text = text_.View();
    text_.Erase(0, static_cast<size_t>(std::find_if_not(text.begin(), text.end(), IsSpace) - text.begin()));
}

void QVStringImpl::TrimRight() {
    size_t length = text_.Length();
    // The character at index 0 is never looked at: one space always stays.
    while (length > 1 && IsSpace(text_.Data()[length - 1]))
        --length;
    text_.Truncate(length);
}

void QVStringImpl::Erase(unsigned long location, unsigned long length) {
    text_.Erase(location, length);
}

void QVStringImpl::ReplaceString(void* replacement, unsigned long location, unsigned long length) {
    text_.Replace(location, length, TextOf(replacement));
}

void QVStringImpl::ConvertLineBreak(QVLineBreakType from, QVLineBreakType to) {
    const std::wstring_view fromText = qv::LineBreakText(from);
    const std::wstring_view toText = qv::LineBreakText(to);
    if (!fromText.empty() && !toText.empty()) qv::ConvertLineBreaks(text_, fromText, toText);
}

#include "formats/QVCPlist.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDate.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVObject.h>
#include <QVFoundation/QVString.h>

#include "codec/base64.h"
#include "collections/dictionary_entries.h"

using qv::HtmlCharSet;
using qv::Owned;

namespace {

// The text that an XML tree of instruction, document type and root element gives, up to the root's children.
constexpr std::string_view kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
    "<!DOCTYPE plist PUBLIC \"-//Apple Computer//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">"
    "<plist version=\"1.0\">";
constexpr std::string_view kTail = "</plist>";

// Integers from here on are written as reals.
constexpr std::uint64_t kFirstReal = std::uint64_t{1} << 31;

// The largest double has 309 digits before the point.
constexpr std::size_t kLongestReal = 309 + 1 + 6 + 8;

char* WriteDigits(char* out, int value, int leastDigits) {
    char digits[12];
    const char* end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    for (auto count = end - digits; count < leastDigits; ++count)
        *out++ = '0';
    return std::copy(static_cast<const char*>(digits), end, out);
}

}  // namespace

Owned QVCPlist::CreatePlistData(void* root) {
    out_.Append(kHead);
    if (!CreateNode(root) || !WriteOpenContainers()) return Owned();
    out_.Append(kTail);
    return out_.Finish();
}

bool QVCPlist::CreateNode(void* object) {
    switch (QVGetTypeID(object)) {
        case QVTypeIDArray:
            return CreateArrayNode(object);
        case QVTypeIDData:
            return CreateDataNode(object);
        case QVTypeIDDate:
            return CreateDateNode(object);
        case QVTypeIDDictionary:
            return CreateDictionaryNode(object);
        case QVTypeIDNumber:
            return CreateNumberNode(object);
        case QVTypeIDString:
            return CreateStringNode(object);
        default:
            return false;
    }
}

bool QVCPlist::CreateArrayNode(void* array) {
    out_.Append("<array>");
    return Open({array, false, QVArrayGetCount(array), 0});
}

bool QVCPlist::CreateDictionaryNode(void* dictionary) {
    out_.Append("<dict>");
    return Open({dictionary, true, static_cast<unsigned long>(QVDictionaryCount(dictionary)), 0});
}

bool QVCPlist::CreateStringNode(void* string) {
    out_.Append("<string>");
    out_.AppendEscaped({QVStringGetBuffer(string), QVStringGetLength(string)}, HtmlCharSet::kLimited);
    out_.Append("</string>");
    return true;
}

bool QVCPlist::CreateNumberNode(void* number) {
    switch (QVNumberGetNativeType(number)) {
        case QVNumberTypeBool:
            out_.Append(QVNumberGetBoolValue(number) == 1 ? "<true/>" : "<false/>");
            return true;
        case QVNumberTypeFloat:
        case QVNumberTypeDouble:
            WriteReal(QVNumberGetDoubleValue(number), 6);
            return true;
        case QVNumberTypeSInt8:
        case QVNumberTypeSInt16:
        case QVNumberTypeSInt32:
            WriteInteger(QVNumberGetSInt32Value(number));
            return true;
        case QVNumberTypeSInt64: {
            const long long value = QVNumberGetSInt64Value(number);
            // A negative value is printed by its low 32 bits, as a signed number.
            if (value < 0) {
                WriteInteger(static_cast<std::int32_t>(static_cast<std::uint32_t>(value)));
            } else {
                WriteUnsigned(static_cast<std::uint64_t>(value));
            }
            return true;
        }
        default:
            WriteUnsigned(QVNumberGetUInt64Value(number));
            return true;
    }
}

bool QVCPlist::CreateDataNode(void* data) {
    // A multiple of three bytes at a time, so that only the last piece is padded.
    constexpr unsigned long kPiece = 3 * 512;
    char text[qv::Base64EncodedSize(kPiece)];
    const auto* bytes = static_cast<const std::uint8_t*>(QVDataGetImutableBuffer(data));
    const unsigned long size = QVDataGetSize(data);
    if (bytes == nullptr && size != 0) return false;
    out_.Append("<data>");
    for (unsigned long offset = 0; offset < size; offset += kPiece) {
        const unsigned long count = std::min(kPiece, size - offset);
        qv::EncodeBase64(bytes + offset, count, text);
        out_.Append({text, static_cast<std::size_t>(qv::Base64EncodedSize(count))});
    }
    out_.Append("</data>");
    return true;
}

bool QVCPlist::CreateDateNode(void* date) {
    const qv::LocalPool pool;
    // The components themselves are printed: formatting would read them as local time again, and summer time
    // shift them.
    void* utc = QVDateGetUTCDateTime(date);
    if (utc == nullptr) return false;
    struct Field {
        int value;
        int leastDigits;
        char end;
    };
    const Field fields[] = {{QVDateGetYear(utc), 1, '-'},       {QVDateGetMonthOfYear(utc), 2, '-'},
                            {QVDateGetDayOfMonth(utc), 2, 'T'}, {QVDateGetHour(utc), 2, ':'},
                            {QVDateGetMinutes(utc), 2, ':'},    {QVDateGetSeconds(utc), 2, 'Z'}};
    char text[sizeof fields / sizeof *fields * 13];
    char* end = text;
    for (const Field& field : fields) {
        end = WriteDigits(end, field.value, field.leastDigits);
        *end++ = field.end;
    }
    WriteElement("<date>", {text, static_cast<std::size_t>(end - text)}, "</date>");
    return true;
}

bool QVCPlist::Open(const OpenContainer& container) {
    if (!path_.Enter(container.container)) return false;
    open_.push_back(container);
    return true;
}

bool QVCPlist::WriteOpenContainers() {
    while (!open_.empty()) {
        OpenContainer& top = open_.back();
        if (top.next == top.count) {
            CloseContainer();
        } else if (!WriteNextObject(top)) {
            return false;
        }
    }
    return true;
}

bool QVCPlist::WriteNextObject(OpenContainer& container) {
    const unsigned long index = container.next++;
    if (!container.isDictionary) return CreateNode(QVArrayGetObjectAtIndex(container.container, index));
    const qv::DictionaryEntry entry = qv::GetDictionaryEntry(container.container, index);
    out_.Append("<key>");
    out_.AppendEscaped({entry.key, entry.keyLength}, HtmlCharSet::kLimited);
    out_.Append("</key>");
    return CreateNode(entry.value);
}

void QVCPlist::CloseContainer() {
    out_.Append(open_.back().isDictionary ? "</dict>" : "</array>");
    open_.pop_back();
    path_.Leave();
}

void QVCPlist::WriteElement(std::string_view startTag, std::string_view text, std::string_view endTag) {
    out_.Append(startTag);
    out_.Append(text);
    out_.Append(endTag);
}

void QVCPlist::WriteInteger(long long value) {
    char text[24];
    const char* end = std::to_chars(text, text + sizeof text, value).ptr;
    WriteElement("<integer>", {text, static_cast<std::size_t>(end - text)}, "</integer>");
}

void QVCPlist::WriteReal(double value, int decimalPlaces) {
    char text[kLongestReal];
    const char* end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimalPlaces).ptr;
    WriteElement("<real>", {text, static_cast<std::size_t>(end - text)}, "</real>");
}

void QVCPlist::WriteUnsigned(unsigned long long value) {
    if (value < kFirstReal) return WriteInteger(static_cast<long long>(value));
    WriteReal(static_cast<double>(value), 0);
}

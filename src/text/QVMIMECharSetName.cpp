#include <cstdint>
#include <cwchar>
#include <iterator>

#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVEncoding.h>
#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVString.h>

#include "runtime/Owned.h"
#include "runtime/singleton_keys.h"

using qv::Owned;

namespace {

// How keys are written: the encoding alone, or with its byte order.
constexpr const wchar_t* kPlainFormat = L"%04X";
constexpr const wchar_t* kLittleEndianFormat = L"%04X-LE";
constexpr const wchar_t* kBigEndianFormat = L"%04X-BE";

struct CharSetName {
    uint32_t encoding;
    const wchar_t* keyFormat;
    const wchar_t* name;
};

constexpr CharSetName kNames[] = {
    {QVEncodingShiftJIS, kPlainFormat, L"Shift_JIS"}, {QVEncodingISO2022JP, kPlainFormat, L"ISO-2022-JP"},
    {QVEncodingEUCJP, kPlainFormat, L"EUC-JP"},       {QVEncodingUTF8, kPlainFormat, L"UTF-8"},
    {QVEncodingUTF16, kBigEndianFormat, L"UTF-16BE"}, {QVEncodingUTF16, kLittleEndianFormat, L"UTF-16LE"},
    {QVEncodingUTF32, kBigEndianFormat, L"UTF-32BE"}, {QVEncodingUTF32, kLittleEndianFormat, L"UTF-32LE"},
};

class Key final {
public:
    Key(const wchar_t* format, uint32_t encoding) noexcept {
        std::swprintf(text_, std::size(text_), format, static_cast<unsigned int>(encoding));
    }
    [[nodiscard]] const wchar_t* Text() const noexcept { return text_; }

private:
    wchar_t text_[64];
};

// The whole table, or nothing when memory runs out: a table with gaps must not be registered for good.
Owned CreateTable() {
    Owned table{QVDictionaryCreate()};
    for (const CharSetName& row : kNames) {
        const Owned name{QVStringCreateWithWideString(row.name)};
        if (!name) return Owned();
        QVDictionarySetObject(table.Get(), name.Get(), Key(row.keyFormat, row.encoding).Text());
    }
    if (QVDictionaryCount(table.Get()) != std::size(kNames)) return Owned();
    return table;
}

// The registered table, borrowed; it is made when it is first asked for.
void* Table() {
    if (void* const table = QVSingletonGetObject(qv::kMIMECharSetNameKey)) return table;
    const Owned table = CreateTable();
    if (!table) return nullptr;
    QVSingletonSetObject(table.Get(), qv::kMIMECharSetNameKey);
    return QVSingletonGetObject(qv::kMIMECharSetNameKey);
}

}  // namespace

void* QVGetMIMECharSetName(uint32_t encoding, uint32_t byteOrder) noexcept {
    void* const table = Table();
    void* ordered = nullptr;
    if (byteOrder == 1) ordered = QVDictionaryGetObject(table, Key(kLittleEndianFormat, encoding).Text());
    if (byteOrder == 2) ordered = QVDictionaryGetObject(table, Key(kBigEndianFormat, encoding).Text());
    if (ordered != nullptr) return ordered;
    return QVDictionaryGetObject(table, Key(kPlainFormat, encoding).Text());
}

// The string object: the rules of its operations. Members whose names begin with Create give a new string's
// handle, or null after the log line that QVString.h names. Members that change the string throw when memory
// runs out and have then changed nothing. Handles of other strings must not be null.
#pragma once

#include <concepts>
#include <cstdint>
#include <string_view>

#include <QVFoundation/QVEncoding.h>
#include <QVFoundation/QVString.h>

#include "base/wide_text.h"
#include "runtime/QVCBase.h"

class QVStringImpl final : public QVCBase {
public:
    // Holds what `makeText` returns, made in place; what that throws ends the construction.
    template <std::invocable MakeText>
    explicit QVStringImpl(MakeText&& makeText) : text_(makeText()) {}

    // From UTF-8; empty when the bytes are not valid.
    static void* CreateWithUtf8(std::string_view bytes);
    static void* CreateWithText(std::wstring_view text);
    static void* CreateAdopting(qv::WideText&& text);
    static void* CreateWithHashValue128(const QVHashValue128& value);

    // The break's characters as a temporary string; null for types other than the four breaks.
    static void* GetLineBreakString(QVLineBreakType type);

    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDString; }

    [[nodiscard]] const wchar_t* GetBuffer() const { return text_.Data(); }
    [[nodiscard]] unsigned long GetLength() const { return text_.Length(); }
    [[nodiscard]] wchar_t GetCharacterAtIndex(unsigned long index) const;
    [[nodiscard]] int Compare(void* other) const;
    [[nodiscard]] int CaseInsensitiveCompare(void* other) const;
    [[nodiscard]] unsigned long FindString(void* searched, unsigned long start) const;
    [[nodiscard]] unsigned long HexUIntValue() const;
    [[nodiscard]] QVLineBreakType GetLineBreakType() const;

    // The text's bytes in an encoding, as new Data.
    [[nodiscard]] void* MakeData(QVEncodingInfo info) const;

    [[nodiscard]] void* CreateCopyString() const;
    [[nodiscard]] void* CreateSubString(QVRange range) const;
    [[nodiscard]] void* CreateUpperCaseString() const;
    [[nodiscard]] void* CreateLowerCaseString() const;
    [[nodiscard]] void* CreateLastPathComponent() const;
    [[nodiscard]] void* CreateByDeletingLastPathComponent() const;
    [[nodiscard]] void* CreateByAppendingPathComponent(void* component) const;
    [[nodiscard]] void* CreateByAppendingPathExtension(void* extension) const;
    [[nodiscard]] void* CreateByExpandingTildeInPath() const;

    void AppendString(void* other);
    void TrimLeft();
    void TrimRight();
    void Erase(unsigned long location, unsigned long length);
    void ReplaceString(void* replacement, unsigned long location, unsigned long length);
    void ConvertLineBreak(QVLineBreakType from, QVLineBreakType to);

private:
    qv::WideText text_;
};

// The scanner object. Pieces are cut with the string's own functions; `out` may be null, then none is made.
#pragma once

#include <cstdint>
#include <string_view>

#include <QVFoundation/QVScanner.h>

#include "runtime/Owned.h"
#include "runtime/QVCBase.h"

class QVCScanner final : public QVCBase {
public:
    QVCScanner() noexcept = default;

    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDScanner; }

    // Takes a reference to the string, which may be null, and goes to its start, even when it is the same
    // one.
    void SetString(void* string);

    // Answers the string's length.
    int SetMarker(int mode, int offset);
    [[nodiscard]] int GetMarker() const { return marker_; }
    [[nodiscard]] unsigned long GetLength() const;

    bool ScanUpToCharacters(const wchar_t* characters, void** out);
    bool ScanUpToNotCharacters(const wchar_t* characters, void** out);
    bool ScanHexUInt(unsigned int* out);

private:
    [[nodiscard]] std::wstring_view Remaining() const;
    [[nodiscard]] void* CreatePiece(size_t length) const;

    qv::Owned string_;
    int marker_ = 0;  // the string may have become shorter since it was set
};

#include "text/QVCScanner.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "base/hex_text.h"

namespace {

// How many characters the text has in front of the first that is (`wanted` true) or is not (false) one of the
// set, which ends at its 0; a null set is empty.
size_t CountUpTo(std::wstring_view text, const wchar_t* characters, bool wanted) {
    const std::wstring_view set = characters ? characters : L"";
    const auto stops = [&](wchar_t c) {
        return (std::find(set.begin(), set.end(), c) != set.end()) == wanted;
    };
    return static_cast<size_t>(std::find_if(text.begin(), text.end(), stops) - text.begin());
}

}  // namespace

void QVCScanner::SetString(void* string) {
    string_ = qv::Owned::Retaining(string);
    marker_ = 0;
}

int QVCScanner::SetMarker(int mode, int offset) {
    const auto length = static_cast<std::int64_t>(GetLength());
    std::int64_t place = marker_;
    if (mode == QVScannerFromStart) place = offset;
    if (mode == QVScannerFromEnd) place = length - offset;
    if (mode == QVScannerFromMarker) place += offset;
    constexpr std::int64_t kMost = std::numeric_limits<int>::max();
    marker_ = static_cast<int>(std::clamp<std::int64_t>(place, 0, std::min(length, kMost)));
    return static_cast<int>(length);
}

unsigned long QVCScanner::GetLength() const {
    return QVStringGetLength(string_.Get());
}

bool QVCScanner::ScanUpToCharacters(const wchar_t* characters, void** out) {
    if (out) *out = nullptr;
    const std::wstring_view remaining = Remaining();
    if (remaining.empty()) return false;
    // The delimiter belongs to the piece.
    const size_t length = std::min(CountUpTo(remaining, characters, true) + 1, remaining.size());
    if (out) {
        void* piece = CreatePiece(length);
        *out = piece ? QVTEMPOBJ(piece) : nullptr;
        if (!*out) return false;
    }
    marker_ += static_cast<int>(length);
    return true;
}

bool QVCScanner::ScanUpToNotCharacters(const wchar_t* characters, void** out) {
    if (out) *out = nullptr;
    const std::wstring_view remaining = Remaining();
    const size_t length = CountUpTo(remaining, characters, false);
    if (length == 0) return false;
    if (out) {
        *out = CreatePiece(length);
        if (!*out) return false;
    }
    marker_ += static_cast<int>(length);
    return true;
}

bool QVCScanner::ScanHexUInt(unsigned int* out) {
    const std::wstring_view remaining = Remaining();
    const size_t length = qv::CountHexDigits(remaining);
    if (out) *out = qv::ParseHex(remaining);
    marker_ += static_cast<int>(length);
    return length > 0;
}

// The characters from the marker on, as far as the marker reaches.
std::wstring_view QVCScanner::Remaining() const {
    constexpr unsigned long kMost = std::numeric_limits<int>::max();
    const unsigned long length = std::min(GetLength(), kMost);
    const unsigned long start = std::min<unsigned long>(static_cast<unsigned long>(marker_), length);
    return {QVStringGetBuffer(string_.Get()) + start, length - start};
}

void* QVCScanner::CreatePiece(size_t length) const {
    return QVStringCreateSubString(string_.Get(), QVRange{marker_, static_cast<int>(length)});
}

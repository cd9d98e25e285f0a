#include <QVFoundation/QVScanner.h>

#include "runtime/Guard.h"
#include "text/QVCScanner.h"

using qv::With;

void* QVScannerCreateWithString(void* string) noexcept {
    void* scanner = qv::CreateObject<QVCScanner>();
    With<QVCScanner>(scanner, [&](QVCScanner& s) { s.SetString(string); });
    return scanner;
}

int QVScannerSetMarker(void* scanner, int mode, int offset) noexcept {
    return With<QVCScanner>(scanner, 0, [&](QVCScanner& s) { return s.SetMarker(mode, offset); });
}

int QVScannerGetMarker(void* scanner) noexcept {
    return With<QVCScanner>(scanner, 0, [](const QVCScanner& s) { return s.GetMarker(); });
}

unsigned long QVScannerGetLength(void* scanner) noexcept {
    return With<QVCScanner>(scanner, 0UL, [](const QVCScanner& s) { return s.GetLength(); });
}

QVBoolean QVScannerScanUpToCharacters(void* scanner, const wchar_t* characters, void** out) noexcept {
    if (!scanner && out) *out = nullptr;
    return With<QVCScanner, QVBoolean>(scanner, 0,
                                       [&](QVCScanner& s) { return s.ScanUpToCharacters(characters, out); });
}

QVBoolean QVScannerScanUpToNotCharacters(void* scanner, const wchar_t* characters, void** out) noexcept {
    if (!scanner && out) *out = nullptr;
    return With<QVCScanner, QVBoolean>(
        scanner, 0, [&](QVCScanner& s) { return s.ScanUpToNotCharacters(characters, out); });
}

QVBoolean QVScannerScanHexUInt(void* scanner, unsigned int* out) noexcept {
    if (!scanner && out) *out = 0;
    return With<QVCScanner, QVBoolean>(scanner, 0, [&](QVCScanner& s) { return s.ScanHexUInt(out); });
}

#include "fuzz_support.h"
#include "targets.h"

// The first byte chooses the delimiters; the pieces must add up to the text.
void qvfuzz::Scanner(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) return;
    static constexpr const wchar_t* kDelimiters[] = {L"/", L" ,\t\r\n", L"", L"\u00E9=;"};
    const wchar_t* delimiters = kDelimiters[bytes[0] % 4];
    Scope scope;
    void* text =
        scope.Keep(QVStringCreateWithCStringAndLength(reinterpret_cast<const char*>(bytes + 1), size - 1));
    void* scanner = scope.Keep(QVScannerCreateWithString(text));
    unsigned long scanned = 0;
    void* piece = nullptr;
    while (QVScannerScanUpToCharacters(scanner, delimiters, &piece) != 0)
        scanned += QVStringGetLength(piece);
    Check(scanned == QVStringGetLength(text), "pieces are missing");

    QVScannerSetMarker(scanner, 0, 0);
    while (static_cast<unsigned long>(QVScannerGetMarker(scanner)) < QVScannerGetLength(scanner)) {
        unsigned int value = 0;
        if (QVScannerScanHexUInt(scanner, &value) != 0) continue;
        if (QVScannerScanUpToNotCharacters(scanner, delimiters, &piece) != 0) {
            QVRelease(piece);
            continue;
        }
        QVScannerSetMarker(scanner, 2, 1);
    }
}

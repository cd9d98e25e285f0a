#include <cstring>
#include <initializer_list>

#include "fuzz_support.h"
#include "targets.h"

// Every encoding; text in UTF-8 must come back as the same bytes.
void qvfuzz::StringDecoding(const std::uint8_t* bytes, std::size_t size) {
    Scope scope;
    void* data = scope.Keep(QVDataCreate(bytes, size));
    for (std::uint32_t encoding = 0; encoding <= 6; ++encoding) {
        for (std::uint32_t byteOrder = 0; byteOrder <= 2; ++byteOrder) {
            for (const QVBoolean mark : {QVBoolean{0}, QVBoolean{1}}) {
                const QVEncodingInfo info = {encoding, byteOrder, mark};
                void* text = scope.Keep(QVStringCreateWithData(data, info));
                void* encoded = scope.Keep(text == nullptr ? nullptr : QVStringMakeData(text, info));
                if (encoding != QVEncodingUTF8 || mark != 0 || text == nullptr) continue;
                Check(QVDataGetSize(encoded) == size &&
                          std::memcmp(QVDataGetImutableBuffer(encoded), bytes, size) == 0,
                      "UTF-8 does not come back");
            }
        }
    }
}

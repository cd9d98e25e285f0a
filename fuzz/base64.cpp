#include <cstring>

#include "fuzz_support.h"
#include "targets.h"

// Any bytes must come back from their text; any text must decode or be refused.
void qvfuzz::Base64(const std::uint8_t* bytes, std::size_t size) {
    const Scope scope;
    (void)QVBase64Decode(bytes, size);
    void* text = QVBase64Encode(bytes, size);
    void* decoded = QVBase64Decode(QVDataGetImutableBuffer(text), QVDataGetSize(text));
    Check(QVDataGetSize(decoded) == size, "the size changed");
    Check(size == 0 || std::memcmp(QVDataGetImutableBuffer(decoded), bytes, size) == 0, "the bytes changed");
}

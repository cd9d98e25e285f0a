#include "base/secure_wipe.h"

#include <cstring>

namespace qv {

void SecureWipe(void* bytes, std::size_t size) noexcept {
    if (size == 0) return;
    std::memset(bytes, 0, size);
    asm volatile("" : : "r"(bytes) : "memory");  // as if somebody looked: the stores must happen
}

}  // namespace qv

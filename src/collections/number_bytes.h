// A number as the bytes of its native type: for writers that keep the type and convert nothing.
#pragma once

#include <cstdint>

namespace qv {

struct NumberBytes {
    std::uint64_t bits;  // the value's bytes in the host's order begin it; the rest is 0
    int nativeType;      // QVNumberTypeBool and so on
    unsigned size;       // 1 to 8 bytes
};

// `number` is a number's handle.
[[nodiscard]] NumberBytes GetNumberBytes(void* number) noexcept;

}  // namespace qv

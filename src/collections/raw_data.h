// Making Data whose bytes are about to be written anyway: what QVDataCreate and QVDataSetSize do, without
// filling the new bytes with zeros first. For conversions that write their whole output.
#pragma once

#include <cstddef>

namespace qv {

// A new Data object of `size` bytes of unknown value, owned by the caller; null when memory runs out (nothing
// is logged). The caller writes every byte before anyone else sees the object, or cuts it with QVDataSetSize.
[[nodiscard]] void* CreateDataToFill(std::size_t size) noexcept;

// Adds `count` bytes of unknown value at the end and answers where they begin; null, and nothing changes,
// when the Data cannot grow.
[[nodiscard]] unsigned char* ExtendData(void* data, std::size_t count) noexcept;

}  // namespace qv

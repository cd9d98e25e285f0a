// The bytes behind Data, for those who write many of them: without filling new bytes with zeros first, and
// without a call for each value.
#pragma once

#include <cstddef>

namespace qv {

class ByteStore;

// A new Data object of `size` bytes of unknown value, owned by the caller; null when memory runs out (nothing
// is logged). The caller writes every byte before anyone else sees the object, or cuts it with QVDataSetSize.
[[nodiscard]] void* CreateDataToFill(std::size_t size) noexcept;

// Adds `count` bytes of unknown value at the end and answers where they begin; null, and nothing changes,
// when the Data cannot grow.
[[nodiscard]] unsigned char* ExtendData(void* data, std::size_t count) noexcept;

// The bytes of Data that owns them; null for Data over borrowed memory. They stay at hand, whatever else is
// done to the Data, as long as the Data lives.
[[nodiscard]] ByteStore* OwnedBytes(void* data) noexcept;

}  // namespace qv

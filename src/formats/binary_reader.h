// Reads objects in the binary format.
#pragma once

#include "runtime/Owned.h"

namespace qv {

// Each reads one object: 0 and the object, or a result code and mostly nothing (a boolean comes with a code,
// see QVBinaryFormat.h). Throw std::bad_alloc.
[[nodiscard]] int ReadBinaryObjectFromStream(void* stream, Owned& object);
[[nodiscard]] int ReadBinaryObjectFromData(void* data, Owned& object);

}  // namespace qv

// Writes objects in the binary format.
#pragma once

#include "runtime/Owned.h"

namespace qv {

// The object's bytes as Data, or nothing when an object in it cannot be written. Throws std::bad_alloc.
[[nodiscard]] Owned CreateBinaryData(void* object);

// Writes the object at the stream's marker. 0 or a result code. Throws std::bad_alloc.
[[nodiscard]] int WriteBinaryObject(void* stream, void* object);

}  // namespace qv

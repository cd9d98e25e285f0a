// Giving new objects to a collection: it takes over the caller's reference, and nothing passes unnoticed.
#pragma once

#include "runtime/Owned.h"

namespace qv {

// Both take an object that is not null. They throw std::bad_alloc or std::length_error when there is no room,
// and then have changed nothing.
void HandToArray(void* array, Owned&& object);
void HandToDictionary(void* dictionary, Owned&& value, const wchar_t* key);

}  // namespace qv

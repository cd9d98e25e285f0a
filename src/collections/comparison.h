// Equality of elements. QVCompareObject asks the element's class, and every class of the library keeps the
// base's answer: an object equals itself only. A collection of such elements can compare handles without
// looking at the objects.
#pragma once

#include <cstddef>
#include <cstring>

#include "runtime/QVCBase.h"

namespace qv {

// The function that answers an object's CompareToObject: an entry of the class's table of operations, whose
// order is fixed (see QVCBase).
[[nodiscard]] inline const void* ComparisonOf(const QVCBase* object) noexcept {
    constexpr std::size_t kCompareToObjectEntry = 4;
    const void* const* operations;
    std::memcpy(&operations, object, sizeof operations);
    return operations[kCompareToObjectEntry];
}

// Whether both objects compare by the same rule.
[[nodiscard]] inline bool ShareComparison(const QVCBase* one, const QVCBase* other) noexcept {
    return ComparisonOf(one) == ComparisonOf(other);
}

}  // namespace qv

// The one place where objects become handles and handles become objects.
#pragma once

#include "runtime/QVCBase.h"

namespace qv {

[[nodiscard]] inline void* ToHandle(const QVCBase* object) noexcept {
    return const_cast<QVCBase*>(object);
}

// The object behind a handle that the caller knows to be of the class. Null stays null.
template <class Class>
[[nodiscard]] Class* FromHandle(void* handle) noexcept {
    return static_cast<Class*>(static_cast<QVCBase*>(handle));
}

// The same for handles that come out of a container or a file: null when the object is of another class.
template <class Class>
[[nodiscard]] Class* CheckedHandle(void* handle) noexcept {
    return dynamic_cast<Class*>(static_cast<QVCBase*>(handle));
}

}  // namespace qv

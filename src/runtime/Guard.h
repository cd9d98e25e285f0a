// The border between C++ and the C interface: whatever C++ throws becomes the function's failure value here.
#pragma once

#include <utility>

#include "runtime/Handle.h"

namespace qv {

// Runs the body; any exception becomes the failure value. Needs no memory.
template <class Result, class Body>
Result Guard(Result failure, Body&& body) noexcept {
    try {
        return static_cast<Result>(std::forward<Body>(body)());
    } catch (...) {
        return failure;
    }
}

// The same for functions without a result: an exception ends the body, nothing is reported.
template <class Body>
void Guard(Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
    } catch (...) {  // the function has nothing to report it with
    }
}

// Runs the body on the object behind the handle; a null handle counts as a failure too.
template <class Class, class Result, class Body>
Result With(void* handle, Result failure, Body&& body) noexcept {
    if (handle == nullptr) return failure;
    return Guard(failure, [&] { return std::forward<Body>(body)(*FromHandle<Class>(handle)); });
}

template <class Class, class Body>
void With(void* handle, Body&& body) noexcept {
    if (handle == nullptr) return;
    Guard([&] { std::forward<Body>(body)(*FromHandle<Class>(handle)); });
}

// A new object's handle with one reference, or null when it cannot be made.
template <class Class, class... Arguments>
void* CreateObject(Arguments&&... arguments) noexcept {
    return Guard<void*>(nullptr, [&] { return ToHandle(new Class(std::forward<Arguments>(arguments)...)); });
}

}  // namespace qv

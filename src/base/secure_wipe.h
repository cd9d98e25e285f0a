// Erasing secrets so that they are gone: an ordinary memset before a free may be left out by the compiler.
#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>

namespace qv {

// Overwrites the bytes with zeros. Null is fine when the size is 0.
void SecureWipe(void* bytes, std::size_t size) noexcept;

// Wipes a plain value before its memory goes back.
template <class T>
struct WipeAndDelete {
    static_assert(std::is_trivially_destructible_v<T>);
    void operator()(T* value) const noexcept {
        SecureWipe(value, sizeof *value);
        delete value;
    }
};

// The only owner of a value on the heap that leaves no trace when it dies.
template <class T>
using WipedPtr = std::unique_ptr<T, WipeAndDelete<T>>;

// A new value, zeroed.
template <class T>
[[nodiscard]] WipedPtr<T> MakeWiped() {
    return WipedPtr<T>(new T());
}

// A value on the stack or in another object that is wiped at the end of its life.
template <class T>
class Wiped {
public:
    Wiped() noexcept = default;
    Wiped(const Wiped&) = delete;
    Wiped& operator=(const Wiped&) = delete;
    ~Wiped() { SecureWipe(&value_, sizeof value_); }

    T& operator*() noexcept { return value_; }
    T* operator->() noexcept { return &value_; }

private:
    static_assert(std::is_trivially_destructible_v<T>);
    T value_{};
};

}  // namespace qv

// Owning a reference inside the library: released by destructor, on every path.
#pragma once

#include <new>
#include <utility>

#include <QVFoundation/QVObject.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

namespace qv {

// Owns one reference to an object, or nothing. A copy would need a retain that nobody sees, so there is none:
// write Owned::Retaining(other.Get()).
class Owned {
public:
    Owned() noexcept = default;
    // Adopts a reference that the caller owns, such as the result of a Create function.
    explicit Owned(void* adopted) noexcept : handle_(adopted) {}
    // Takes a reference of its own to a borrowed object.
    [[nodiscard]] static Owned Retaining(void* borrowed) noexcept { return Owned(QVRetain(borrowed)); }

    Owned(Owned&& other) noexcept : handle_(other.Detach()) {}
    Owned& operator=(Owned&& other) noexcept {
        Reset(other.Detach());
        return *this;
    }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() { Reset(); }

    [[nodiscard]] void* Get() const noexcept { return handle_; }
    explicit operator bool() const noexcept { return handle_ != nullptr; }

    // Gives the reference up to the caller.
    [[nodiscard]] void* Detach() noexcept { return std::exchange(handle_, nullptr); }
    // Adopts another reference, then releases the old one.
    void Reset(void* adopted = nullptr) noexcept {
        void* old = std::exchange(handle_, adopted);
        if (old != nullptr) QVRelease(old);  // most are given away before they end
    }

private:
    void* handle_ = nullptr;
};

// The handle itself, or std::bad_alloc for null: for objects that a caller cannot do without.
[[nodiscard]] inline void* RequireObject(void* handle) {
    if (handle == nullptr) throw std::bad_alloc();
    return handle;
}

// A temporary pool for the length of a block, so that library-internal work leaves nothing in the caller's
// pool.
class LocalPool {
public:
    LocalPool() : pool_(RequireObject(QVTemporaryObjectsPoolCreate())) {}

private:
    Owned pool_;
};

}  // namespace qv

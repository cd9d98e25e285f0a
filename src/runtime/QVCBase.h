// The root of every object: the retain count and the operations that each class answers.
#pragma once

#include <cstddef>
#include <cstdint>

class QVCBase {
public:
    QVCBase() noexcept = default;
    QVCBase(const QVCBase&) = delete;
    QVCBase& operator=(const QVCBase&) = delete;

    // The order of these operations is fixed; derived classes append theirs after the destructors. Those that
    // no class has in a form of its own are final, so that calling them takes no jump through the table.
    virtual void Retain() final { ++retainCount_; }
    virtual void Release() final {
        if (--retainCount_ == 0) Die();
    }
    [[nodiscard]] virtual std::int32_t GetRetainCount() const final { return retainCount_; }
    [[nodiscard]] virtual std::uint16_t GetTypeID() const = 0;
    [[nodiscard]] virtual int CompareToObject(void* other) const final;
    [[nodiscard]] virtual void* CreateCopy() const final;
    virtual void* GetNSObject();
    [[nodiscard]] virtual void* CreateCFObject();
    virtual ~QVCBase() = default;

    // Objects live on the heap only, each behind a small hidden prefix (see QVCBase.cpp).
    static void* operator new(std::size_t size);
    static void operator delete(void* object, std::size_t size) noexcept;
    static void* operator new[](std::size_t) = delete;
    static void operator delete[](void*) = delete;

private:
    void Die();

    std::int32_t retainCount_ = 1;
};

// Declares the full set of operations of an object, for callers that need no class. No class derives from it.
class QVIBase {
public:
    virtual void Retain() = 0;
    virtual void Release() = 0;
    [[nodiscard]] virtual std::int32_t GetRetainCount() const = 0;
    [[nodiscard]] virtual std::uint16_t GetTypeID() const = 0;
    [[nodiscard]] virtual int CompareToObject(void* other) const = 0;
    [[nodiscard]] virtual void* CreateCopy() const = 0;
    virtual void* GetNSObject() = 0;
    [[nodiscard]] virtual void* CreateCFObject() = 0;

protected:
    ~QVIBase() = default;
};

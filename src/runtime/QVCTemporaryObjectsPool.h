// A pool of temporary objects, and the per-thread stacks of pools.
#pragma once

#include <cstddef>
#include <vector>

#include "runtime/QVCBase.h"
#include "runtime/interned_strings.h"

class QVCTemporaryObjectsPool final : public QVCBase {
public:
    // Pushes itself on the calling thread's stack. Throws std::bad_alloc.
    QVCTemporaryObjectsPool();
    // Drains and pops itself when it is the calling thread's top pool; else logs that the pools are not
    // balanced.
    ~QVCTemporaryObjectsPool() override;
    [[nodiscard]] std::uint16_t GetTypeID() const override;

    // Adopts the caller's reference. Throws std::bad_alloc and then owns nothing.
    void AddTemporaryObject(void* object) { objects_.push_back(object); }
    // The pool's string with this text, made when there is none yet. Throws std::bad_alloc.
    void* GetTemporaryString(const wchar_t* text);
    // Releases the objects, then the strings, first to last. What is added meanwhile is released as well; the
    // storage is kept for reuse.
    void ReleaseTemporaryObjects() noexcept;

private:
    std::vector<void*> objects_;
    qv::InternedStrings strings_;
    // Empty, but with the storage of an earlier drain: takes what is added while this one runs.
    std::vector<void*> spareObjects_;
    qv::InternedStrings spareStrings_;
};

// The stacks of temporary pools, one a thread, and the list of them.
#pragma once

#include <cstddef>

class QVCTemporaryObjectsPool;

namespace qv {

// Pushes a pool on the calling thread's stack. Throws std::bad_alloc.
void PushPool(QVCTemporaryObjectsPool* pool);

// The calling thread's top pool, or null.
[[nodiscard]] QVCTemporaryObjectsPool* GetTopPool() noexcept;

// Takes a dying pool off: true when it was the calling thread's top pool and has been popped. A pool that
// lies deeper leaves a tombstone, which goes when it surfaces.
[[nodiscard]] bool PopPool(QVCTemporaryObjectsPool* pool) noexcept;

// How many threads have pools. Tests watch entries come and go with it.
[[nodiscard]] std::size_t CountThreadsWithPools() noexcept;

}  // namespace qv

// Small blocks of memory from per-thread free lists: an object's storage costs a few instructions instead of
// a call to the general allocator.
#pragma once

#include <cstddef>

namespace qv {

// Storage of at least `size` bytes, aligned to 16. Throws std::bad_alloc.
[[nodiscard]] void* AllocateBlock(std::size_t size);

// Takes back a block of AllocateBlock, with the size that was asked for. Any thread may give it back.
void FreeBlock(void* block, std::size_t size) noexcept;

// Hands the calling thread's kept blocks back to the general allocator. Tests use it to count what is really
// in use.
void ReleaseKeptBlocks() noexcept;

}  // namespace qv

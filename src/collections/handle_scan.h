// Searching a run of handles for one of them, by identity.
#pragma once

#include <cstddef>

namespace qv {

// The index of the first handle equal to `wanted`, or `count`.
[[nodiscard]] std::size_t FindHandle(void* const* handles, std::size_t count, const void* wanted) noexcept;

// The portable way, and the only one on processors without AVX2.
[[nodiscard]] std::size_t FindHandlePlain(void* const* handles, std::size_t count,
                                          const void* wanted) noexcept;

#if defined(__x86_64__)
// Sixteen handles at a time. Only for processors with AVX2.
[[nodiscard]] std::size_t FindHandleAvx2(void* const* handles, std::size_t count,
                                         const void* wanted) noexcept;
#endif

}  // namespace qv

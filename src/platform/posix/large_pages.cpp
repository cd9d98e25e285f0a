#include "platform/large_pages.h"

#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

namespace qv {

#if defined(MADV_HUGEPAGE)

// The system takes whole pages, so the block's ends keep ordinary ones.
void PreferLargePages(void* block, std::size_t size) noexcept {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto begin = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t first = (begin + page - 1) / page * page;
    const std::uintptr_t last = (begin + size) / page * page;
    if (first < last) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}

#else

void PreferLargePages(void*, std::size_t) noexcept {}

#endif

}  // namespace qv

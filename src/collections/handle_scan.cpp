#include "collections/handle_scan.h"

#include <algorithm>

namespace qv {

std::size_t FindHandlePlain(void* const* handles, std::size_t count, const void* wanted) noexcept {
    return static_cast<std::size_t>(std::find(handles, handles + count, wanted) - handles);
}

std::size_t FindHandle(void* const* handles, std::size_t count, const void* wanted) noexcept {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) return FindHandleAvx2(handles, count, wanted);
#endif
    return FindHandlePlain(handles, count, wanted);
}

}  // namespace qv

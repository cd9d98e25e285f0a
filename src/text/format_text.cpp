#include "text/format_text.h"

#include <algorithm>
#include <cwchar>

namespace qv {
namespace {

constexpr size_t kFirstSize = 1024;
// Far beyond any sensible text; without a limit a width such as "%2000000000d" would take gigabytes.
constexpr size_t kMostSize = (size_t{1} << 26) + 1;

}  // namespace

std::unique_ptr<wchar_t[]> FormatText(const wchar_t* format, size_t formatLength, va_list arguments) {
    for (size_t size = std::max(2 * formatLength, kFirstSize);; size = std::min(2 * size, kMostSize)) {
        auto buffer = std::make_unique<wchar_t[]>(size);
        va_list again;
        va_copy(again, arguments);
        const int written = std::vswprintf(buffer.get(), size, format, again);
        va_end(again);
        buffer[size - 1] = L'\0';
        // vswprintf fails alike for want of room and for what cannot be converted. The buffer is zeroed, so
        // only text that goes up to its end can have wanted room.
        const bool full = written < 0 && std::wcslen(buffer.get()) == size - 1;
        if (!full || size >= kMostSize) return buffer;
    }
}

}  // namespace qv

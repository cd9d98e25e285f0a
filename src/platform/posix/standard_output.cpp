#include "platform/standard_output.h"

#include <errno.h>
#include <stdio.h>
#include <unistd.h>

namespace qv {

void WriteToStandardOutput(const char* bytes, std::size_t size) noexcept {
    fflush(stdout);
    const int descriptor = fileno(stdout);
    while (size > 0) {
        const ssize_t written = write(descriptor, bytes, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
}

}  // namespace qv

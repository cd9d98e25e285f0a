#include "platform/user_data.h"

#include <stdlib.h>
#include <unistd.h>

#include "platform/home.h"

namespace qv {

std::string UserDataDirectory() {
    const char* data = getenv("XDG_DATA_HOME");
    if (data != nullptr && data[0] == '/') return data;
    std::string home = HomeDirectory();
    return home.empty() ? home : home + "/.local/share";
}

std::uint32_t UserNumber() noexcept {
    return getuid();
}

}  // namespace qv

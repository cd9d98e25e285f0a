// Whose process this is, and where that user keeps data.
#pragma once

#include <cstdint>
#include <string>

namespace qv {

// The directory for the user's data files: the environment's XDG_DATA_HOME when that is an absolute path,
// else .local/share in the home directory. Empty when there is no home. It need not exist.
[[nodiscard]] std::string UserDataDirectory();

// The number that owns this user's files.
[[nodiscard]] std::uint32_t UserNumber() noexcept;

}  // namespace qv

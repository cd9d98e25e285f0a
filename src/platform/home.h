// The user's home directory.
#pragma once

#include <string>

namespace qv {

// The current user's home directory as the system spells it: the environment's HOME when that is an absolute
// path, else the password database's entry. Empty when neither tells.
std::string HomeDirectory();

}  // namespace qv

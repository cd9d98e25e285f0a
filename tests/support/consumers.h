// Programs from elsewhere that read what the library writes.
#pragma once

#include <string>

namespace qvtest {

// What a shell command prints, on both outputs, when it is given `input`; "exit N" behind it when it fails.
std::string OutputOf(const std::string& command, const std::string& input);

}  // namespace qvtest

// Whole files as objects of the library.
#pragma once

#include <string>

#include "tool.h"

namespace tool {

// The file's bytes. Throws a Failure that names the file.
[[nodiscard]] Object ReadData(const std::string& path);

// The file's text, which must be UTF-8; an empty file is an empty string.
[[nodiscard]] Object ReadText(const std::string& path);

// Writes the Data's bytes to the file and nothing else: an older file is replaced. "-" is standard output.
void WriteData(void* data, const std::string& path);

// The same for a string, as UTF-8.
void WriteText(void* string, const std::string& path);

}  // namespace tool

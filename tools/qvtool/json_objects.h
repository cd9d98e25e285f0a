// Objects of the library as JSON text and back.
#pragma once

#include <string>

#include "tool.h"

namespace tool {

// What to do with a boolean: keep it, or make it the number 0 or 1 for a format that cannot read it back.
enum class Booleans { kKeep, kRefuse, kAsNumbers };

// The JSON file's value as an object. Objects become dictionaries, and one with the single member "$data"
// Data from its Base64 text; integers become 64-bit numbers, other numbers doubles. Throws a Failure that
// names the file and the place of an error in its text, or of a value that has no object: null, a key with
// U+0000, text that is not UTF-8, booleans when they are refused, and more than 1,000 levels.
[[nodiscard]] Object ReadJsonFile(const std::string& path, Booleans booleans);

// The object as JSON, indented, in lines. Data becomes {"$data": Base64}, a date
// {"$date": "2026-11-15T15:08:30+09:00"}. Throws a Failure that names the source for what JSON cannot hold.
[[nodiscard]] std::string JsonText(void* object, const std::string& source);

}  // namespace tool

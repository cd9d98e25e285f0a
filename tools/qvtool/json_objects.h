// JSON values as objects of the library and back.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "tool.h"

namespace tool {

// What to do with a boolean: keep it, or make it the number 0 or 1 for a format that cannot read it back.
enum class Booleans { kKeep, kRefuse, kAsNumbers };

// The value as an object. Objects become dictionaries, and one with the single member "$data" Data from its
// Base64 text; integers become 64-bit numbers, other numbers doubles. Throws a Failure that names the place
// of a value that has no object: null, a key with U+0000, text that is not UTF-8, and booleans when they are
// refused.
[[nodiscard]] Object ObjectFromJson(const nlohmann::json& value, Booleans booleans);

// The object as a value. Data becomes {"$data": Base64}, a date {"$date": "2026-11-15T15:08:30+09:00"}.
[[nodiscard]] nlohmann::json JsonFromObject(void* object);

// Parses a file. Throws a Failure that names the place of an error.
[[nodiscard]] nlohmann::json ReadJson(const std::string& path);

}  // namespace tool

// Base64 a bit at a time: bytes become a row of bits, six bits become a character, and back.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qv::model {

std::string EncodeBase64(const std::vector<uint8_t>& bytes);

// Nothing when a character before the first "=" is not of the alphabet.
std::optional<std::vector<uint8_t>> DecodeBase64(const std::string& text);

}  // namespace qv::model

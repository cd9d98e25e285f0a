// The pattern search's own walk, step by step.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace qv::model {

std::optional<size_t> SearchPattern(const std::vector<uint8_t>& text, const std::vector<uint8_t>& pattern);

}  // namespace qv::model

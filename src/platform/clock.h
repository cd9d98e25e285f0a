// The wall clock.
#pragma once

#include <ctime>

namespace qv {

// The current local time in calendar fields. They are kept for the running second, so that many calls in it
// cost little.
[[nodiscard]] std::tm LocalTimeNow() noexcept;

}  // namespace qv

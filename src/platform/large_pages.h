// Memory in large pages, where the system has them.
#pragma once

#include <cstddef>

namespace qv {

// Suggests large pages for a block that will be written whole and then read here and there: finding the page
// of an address then takes less time. Changes nothing that can be seen but speed. The suggestion stays with
// the addresses, so small blocks that lie there later may take up a little more memory.
void PreferLargePages(void* block, std::size_t size) noexcept;

}  // namespace qv

// Dates from plain components, for readers of files that do not say whether summer time was in force.
#pragma once

#include <cstdint>

namespace qv {

struct DateComponents {
    std::int32_t year;
    int monthOfYear;  // from 1
    int dayOfMonth;
    int hour;
    int minutes;
    int seconds;
};

// A new date, owned by the caller, with these components read as local time and normalised; the C library
// chooses the summer-time flag that fits them. Components that no date can have stay as they are. Null when
// memory runs out.
[[nodiscard]] void* CreateDateWithComponents(const DateComponents& components) noexcept;

}  // namespace qv

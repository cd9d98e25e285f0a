#include "platform/clock.h"

#include <time.h>

namespace qv {
namespace {

struct KeptSecond {
    std::time_t second = -1;
    std::tm fields = {};
};
constinit thread_local KeptSecond kept;

}  // namespace

std::tm LocalTimeNow() noexcept {
    const std::time_t now = time(nullptr);
    if (now == kept.second) return kept.fields;
    std::tm fields = {};
    if (localtime_r(&now, &fields) == nullptr) return fields;
    kept = {now, fields};
    return fields;
}

}  // namespace qv

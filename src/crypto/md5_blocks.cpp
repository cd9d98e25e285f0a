#include "crypto/md5_blocks.h"

#include <utility>

namespace qv {
namespace {

// Always inline, as the steps are.
template <int... kSteps>
[[gnu::always_inline]] inline void RunSteps(Md5Words& words, const std::uint8_t* block,
                                            std::integer_sequence<int, kSteps...>) noexcept {
    (Md5Step<kSteps>(words, block), ...);
}

}  // namespace

void TransformMd5Blocks(Md5Words& words, const void* blocks, std::size_t count) noexcept {
    const auto* block = static_cast<const std::uint8_t*>(blocks);
    for (; count > 0; --count, block += kMd5BlockSize) {
        Md5Words now = words;
        RunSteps(now, block, std::make_integer_sequence<int, kMd5Steps>{});
        words = {words[0] + now[0], words[1] + now[1], words[2] + now[2], words[3] + now[3]};
    }
}

}  // namespace qv

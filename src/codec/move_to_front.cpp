#include "codec/move_to_front.h"

#include <array>

namespace qv {

void EncodeMoveToFront(const uint8_t* in, size_t size, uint8_t* out) {
    std::array<bool, 256> occurs{};
    for (size_t i = 0; i < size; ++i)
        occurs[in[i]] = true;

    // Only two places change at a step, so the list itself is not needed: just each value's place in it, and
    // the value at the front.
    std::array<uint8_t, 256> places{};
    size_t count = 0;
    uint8_t front = 0;
    for (size_t value = 256; value-- > 0;) {
        if (occurs[value]) front = static_cast<uint8_t>(value);
    }
    for (size_t value = 0; value < 256; ++value) {
        if (occurs[value]) places[value] = static_cast<uint8_t>(count++);
    }
    for (size_t i = 0; i < size; ++i) {
        const uint8_t value = in[i];
        if (value == front) {
            out[i] = 0;
            continue;
        }
        const uint8_t place = places[value];
        out[i] = place;
        places[front] = place;
        places[value] = 0;
        front = value;
    }
}

}  // namespace qv

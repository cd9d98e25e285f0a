#include <atomic>
#include <bit>
#include <cstdlib>
#include <ctime>

#include <QVFoundation/QVLibrary.h>

namespace {

constinit std::atomic<bool> randomSeeded{false};

}  // namespace

int QVRandom() noexcept {
    if (!randomSeeded.exchange(true, std::memory_order_relaxed))
        std::srand(static_cast<unsigned>(std::time(nullptr)));
    return std::rand();
}

int QVByteOrderGetNativeOrder() noexcept {
    return std::endian::native == std::endian::big ? 2 : 1;
}

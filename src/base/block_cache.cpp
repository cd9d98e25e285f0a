#include "base/block_cache.h"

#include <cstdint>
#include <new>

namespace qv {
namespace {

// Sanitizers follow single allocations; a cache would hide a use after release from them.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kCaching = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kCaching = false;
#else
constexpr bool kCaching = true;
#endif
#else
constexpr bool kCaching = true;
#endif

constexpr std::size_t kGranule = 16;
// Every object of the library but the largest coders fits 192 bytes, a dictionary's table of twelve keys 352.
constexpr std::size_t kClasses = 24;
constexpr std::size_t kLargest = kGranule * kClasses;
// At most this much is kept for a thread, of whatever sizes: enough to take a structure of tens of thousands
// of objects apart and to build the next one from its blocks.
constexpr std::uint32_t kMostBytesKept = 4 * 1024 * 1024;

struct KeptBlock {
    KeptBlock* next;
};

struct KeptBlocks {
    KeptBlock* first[kClasses];
    // How many more bytes may be kept; 0 until the thread has a janitor, and after it has gone.
    std::uint32_t room;
};

// Initial-exec storage costs one instruction to reach and is trivially destroyed, so that objects may still
// be released by other thread-local destructors at the thread's end.
[[gnu::tls_model("initial-exec")]] constinit thread_local KeptBlocks kept = {};

enum class Janitor : std::uint8_t { kNone, kWatching, kGone };
[[gnu::tls_model("initial-exec")]] constinit thread_local Janitor janitorState = Janitor::kNone;

void GiveBack(std::uint32_t roomLeft) noexcept {
    for (KeptBlock*& first : kept.first) {
        while (first != nullptr) {
            KeptBlock* block = first;
            first = block->next;
            ::operator delete(block);
        }
    }
    kept.room = roomLeft;
}

struct ThreadEnd {
    ThreadEnd() noexcept {
        janitorState = Janitor::kWatching;
        GiveBack(kMostBytesKept);
    }
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd() {
        janitorState = Janitor::kGone;
        GiveBack(0);
    }
};

// Makes sure that what is kept goes back when the thread ends; answers whether blocks may be kept. Rare, and
// kept out of the way of what is not.
[[gnu::noinline]] bool StartKeeping() noexcept {
    if (janitorState != Janitor::kNone) return false;
    static thread_local ThreadEnd threadEnd;
    return true;
}

constexpr std::size_t ClassOf(std::size_t size) {
    return (size - 1) / kGranule;
}
constexpr std::uint32_t SizeOfClass(std::size_t index) {
    return static_cast<std::uint32_t>((index + 1) * kGranule);
}

}  // namespace

void* AllocateBlock(std::size_t size) {
    if (!kCaching || size == 0 || size > kLargest) return ::operator new(size);
    const std::size_t index = ClassOf(size);
    KeptBlock* block = kept.first[index];
    if (block == nullptr) return ::operator new(SizeOfClass(index));
    kept.first[index] = block->next;
    kept.room += SizeOfClass(index);
    return block;
}

void FreeBlock(void* block, std::size_t size) noexcept {
    if (!kCaching || size == 0 || size > kLargest) return ::operator delete(block);
    const std::size_t index = ClassOf(size);
    if (kept.room < SizeOfClass(index) && !StartKeeping()) return ::operator delete(block);
    kept.first[index] = new (block) KeptBlock{kept.first[index]};
    kept.room -= SizeOfClass(index);
}

void ReleaseKeptBlocks() noexcept {
    if (janitorState == Janitor::kWatching) GiveBack(kMostBytesKept);
}

}  // namespace qv

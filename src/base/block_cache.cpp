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
// At most this much of a class is kept, 12 MiB for a thread in the worst case: enough to take a tree of
// several thousand objects apart and to build the next one from its blocks.
constexpr std::size_t kMostBytesKept = 512 * 1024;

constexpr std::uint16_t MostKept(std::size_t index) {
    return static_cast<std::uint16_t>(kMostBytesKept / ((index + 1) * kGranule));
}
static_assert(kMostBytesKept / kGranule <= 0xFFFF);

struct KeptBlock {
    KeptBlock* next;
};

struct FreeList {
    KeptBlock* first;
    std::uint16_t
        room;  // how many more blocks may be kept; 0 until the thread has a janitor, and after it has gone
};

// Initial-exec storage costs one instruction to reach and is trivially destroyed, so that objects may still
// be released by other thread-local destructors at the thread's end.
[[gnu::tls_model("initial-exec")]] constinit thread_local FreeList freeLists[kClasses] = {};

enum class Janitor : std::uint8_t { kNone, kWatching, kGone };
[[gnu::tls_model("initial-exec")]] constinit thread_local Janitor janitorState = Janitor::kNone;

void EmptyFreeLists(bool keepsMore) noexcept {
    for (std::size_t index = 0; index < kClasses; ++index) {
        FreeList& list = freeLists[index];
        while (list.first != nullptr) {
            KeptBlock* block = list.first;
            list.first = block->next;
            ::operator delete(block);
        }
        list.room = keepsMore ? MostKept(index) : 0;
    }
}

struct ThreadEnd {
    ThreadEnd() noexcept {
        janitorState = Janitor::kWatching;
        EmptyFreeLists(true);
    }
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd() {
        janitorState = Janitor::kGone;
        EmptyFreeLists(false);
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

}  // namespace

void* AllocateBlock(std::size_t size) {
    if (!kCaching || size == 0 || size > kLargest) return ::operator new(size);
    const std::size_t index = ClassOf(size);
    FreeList& list = freeLists[index];
    KeptBlock* block = list.first;
    if (block == nullptr) return ::operator new((index + 1) * kGranule);
    list.first = block->next;
    ++list.room;
    return block;
}

void FreeBlock(void* block, std::size_t size) noexcept {
    if (!kCaching || size == 0 || size > kLargest) return ::operator delete(block);
    FreeList& list = freeLists[ClassOf(size)];
    if (list.room == 0 && !StartKeeping()) return ::operator delete(block);
    list.first = new (block) KeptBlock{list.first};
    --list.room;
}

void ReleaseKeptBlocks() noexcept {
    if (janitorState == Janitor::kWatching) EmptyFreeLists(true);
}

}  // namespace qv

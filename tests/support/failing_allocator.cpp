#include "support/failing_allocator.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <malloc.h>
#include <new>

#include "base/block_cache.h"

namespace {

constinit std::atomic<std::ptrdiff_t> liveAllocations{0};
constinit std::atomic<std::ptrdiff_t> liveBytes{0};
constinit std::atomic<std::ptrdiff_t> peakBytes{0};
constinit std::ptrdiff_t bytesAtRestart = 0;
constinit std::atomic<std::size_t> allocatedBytes{0};

struct FailurePlan {
    bool active;
    bool allLater;
    bool failed;
    std::size_t after;
};
constinit thread_local FailurePlan plan = {};

constinit thread_local qvtest::WatchFrees::Inspect inspectFree = nullptr;
constinit thread_local void* inspectContext = nullptr;

bool ShouldFail() {
    if (!plan.active) return false;
    if (plan.after > 0) {
        --plan.after;
        return false;
    }
    if (plan.failed && !plan.allLater) return false;
    plan.failed = true;
    return true;
}

void* Counted(void* block, std::size_t size) {
    liveAllocations.fetch_add(1, std::memory_order_relaxed);
    const auto usable = static_cast<std::ptrdiff_t>(malloc_usable_size(block));
    const std::ptrdiff_t live = liveBytes.fetch_add(usable, std::memory_order_relaxed) + usable;
    if (live > peakBytes.load(std::memory_order_relaxed)) peakBytes.store(live, std::memory_order_relaxed);
    allocatedBytes.fetch_add(size, std::memory_order_relaxed);
    return block;
}

void* Allocate(std::size_t size) {
    if (ShouldFail()) return nullptr;
    void* block = std::malloc(size == 0 ? 1 : size);
    return block == nullptr ? nullptr : Counted(block, size);
}

void Free(void* block) {
    if (block == nullptr) return;
    const std::size_t size = malloc_usable_size(block);
    if (inspectFree != nullptr) inspectFree(inspectContext, block, size);
    liveAllocations.fetch_sub(1, std::memory_order_relaxed);
    liveBytes.fetch_sub(static_cast<std::ptrdiff_t>(size), std::memory_order_relaxed);
    std::free(block);
}

void* AllocateAligned(std::size_t size, std::align_val_t alignment) {
    if (ShouldFail()) return nullptr;
    void* block = nullptr;
    if (posix_memalign(&block, static_cast<std::size_t>(alignment), size == 0 ? 1 : size) != 0)
        return nullptr;
    return Counted(block, size);
}

void* OrThrow(void* block) {
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

void* operator new(std::size_t size) {
    return OrThrow(Allocate(size));
}
void* operator new[](std::size_t size) {
    return OrThrow(Allocate(size));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return OrThrow(AllocateAligned(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return OrThrow(AllocateAligned(size, alignment));
}
void operator delete(void* block) noexcept {
    Free(block);
}
void operator delete[](void* block) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    Free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    Free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    Free(block);
}

namespace qvtest {

std::size_t LiveAllocations() {
    qv::ReleaseKeptBlocks();
    return static_cast<std::size_t>(liveAllocations.load(std::memory_order_relaxed));
}

std::size_t LiveBytes() {
    qv::ReleaseKeptBlocks();
    return static_cast<std::size_t>(liveBytes.load(std::memory_order_relaxed));
}

std::size_t AllocatedBytes() {
    return allocatedBytes.load(std::memory_order_relaxed);
}

void RestartPeak() {
    qv::ReleaseKeptBlocks();
    bytesAtRestart = liveBytes.load(std::memory_order_relaxed);
    peakBytes.store(bytesAtRestart, std::memory_order_relaxed);
}

std::size_t PeakBytesSinceRestart() {
    return static_cast<std::size_t>(peakBytes.load(std::memory_order_relaxed) - bytesAtRestart);
}

FailAllocation::FailAllocation(std::size_t after, bool allLater) {
    qv::ReleaseKeptBlocks();
    plan = {true, allLater, false, after};
}

FailAllocation::~FailAllocation() {
    plan = {};
}

bool FailAllocation::HasFailed() const {
    return plan.failed;
}

WatchFrees::WatchFrees(Inspect inspect, void* context) {
    qv::ReleaseKeptBlocks();
    inspectContext = context;
    inspectFree = inspect;
}

WatchFrees::~WatchFrees() {
    qv::ReleaseKeptBlocks();
    inspectFree = nullptr;
}

}  // namespace qvtest

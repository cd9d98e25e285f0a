// The test programs replace the global operator new and delete with ones that count, and that fail where a
// test asks.
#pragma once

#include <cstddef>

namespace qvtest {

// Blocks that are allocated and not freed at the moment, by all threads. What the library's thread-local
// cache keeps is handed back first, so it does not count.
std::size_t LiveAllocations();
// Their bytes, counted as the C library rounds them up.
std::size_t LiveBytes();

// Bytes asked for so far by all threads; differences tell what a piece of work allocates.
std::size_t AllocatedBytes();

// The most bytes that were live at once while `work` ran, beyond those that were before. For one thread at a
// time.
void RestartPeak();
std::size_t PeakBytesSinceRestart();
template <class Work>
std::size_t PeakBytes(Work work) {
    RestartPeak();
    work();
    return PeakBytesSinceRestart();
}

// Makes one allocation of the calling thread fail while it lives: the one that comes after `after` successful
// ones. With `allLater`, every later one fails too. The thread's block cache is emptied first, so that object
// storage counts.
class FailAllocation {
public:
    explicit FailAllocation(std::size_t after, bool allLater = false);
    FailAllocation(const FailAllocation&) = delete;
    FailAllocation& operator=(const FailAllocation&) = delete;
    ~FailAllocation();

    // Whether an allocation was refused.
    [[nodiscard]] bool HasFailed() const;
};

// Runs `attempt` with the first, second, ... allocation failing in turn, until it runs through without
// meeting the failure. Answers how many allocations were made to fail. `attempt` is called without a failure
// last.
template <class Attempt>
std::size_t FailEachAllocation(Attempt attempt) {
    for (std::size_t k = 0;; ++k) {
        bool failed = false;
        {
            FailAllocation failing(k);
            attempt();
            failed = failing.HasFailed();
        }
        if (!failed) return k;
    }
}

// Looks at what is freed: while it lives, `inspect` is called with every block that the calling thread gives
// back, and the block's usable size. For tests that secrets are wiped.
class WatchFrees {
public:
    using Inspect = void (*)(void* context, const void* block, std::size_t size);
    WatchFrees(Inspect inspect, void* context);
    WatchFrees(const WatchFrees&) = delete;
    WatchFrees& operator=(const WatchFrees&) = delete;
    ~WatchFrees();
};

}  // namespace qvtest

#include "runtime/pool_stacks.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <mutex>
#include <pthread.h>
#include <vector>

#include "runtime/QVCTemporaryObjectsPool.h"

// One thread's pools, bottom first; a null pool is the tombstone of one that was released out of order. An
// entry lies where it was made until the thread's last pool goes.
struct QVTempObjPoolStackPerThreadMac {
    pthread_t thread;
    std::vector<QVCTemporaryObjectsPool*> pools;
    QVTempObjPoolStackPerThreadMac* next = nullptr;
};

namespace qv {
namespace {

using ThreadEntry = QVTempObjPoolStackPerThreadMac;

// The mutex guards the list, nothing else: a thread reaches its own entry through thread-local storage.
// Nothing here is destroyed at process exit, because another thread may still use its entry.
constinit std::mutex listMutex;
constinit ThreadEntry* firstEntry = nullptr;

[[gnu::tls_model("initial-exec")]] constinit thread_local ThreadEntry* ownEntry = nullptr;
// The top of the own stack, kept beside it: handing over a temporary needs nothing else.
[[gnu::tls_model("initial-exec")]] constinit thread_local QVCTemporaryObjectsPool* topPool = nullptr;

void Link(ThreadEntry* entry) noexcept {
    const std::lock_guard lock(listMutex);
    entry->next = firstEntry;
    firstEntry = entry;
}

void Unlink(ThreadEntry* entry) noexcept {
    const std::lock_guard lock(listMutex);
    ThreadEntry** link = &firstEntry;
    while (*link != entry)
        link = &(*link)->next;
    *link = entry->next;
}

// Fork copies only the calling thread: the child drops the others' entries (their pools are out of reach, not
// owned by anyone there), and takes over a mutex that nobody else can hold.
void BeforeFork() noexcept {
    listMutex.lock();
}
void AfterForkInParent() noexcept {
    listMutex.unlock();
}
void AfterForkInChild() noexcept {
    firstEntry = ownEntry;
    if (ownEntry != nullptr) ownEntry->next = nullptr;
    listMutex.unlock();
}

void PopTombstones() noexcept {
    std::vector<QVCTemporaryObjectsPool*>& pools = ownEntry->pools;
    while (!pools.empty() && pools.back() == nullptr)
        pools.pop_back();
    topPool = pools.empty() ? nullptr : pools.back();
    if (topPool != nullptr) return;
    Unlink(ownEntry);
    delete std::exchange(ownEntry, nullptr);
}

// A thread that ends with open pools has them drained, top first. The pools themselves belong to whoever
// created them.
struct ThreadEnd {
    ThreadEnd() noexcept = default;
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd() {
        while (topPool != nullptr) {
            topPool->ReleaseTemporaryObjects();
            ownEntry->pools.back() = nullptr;
            PopTombstones();
        }
    }
};

void MakeOwnEntry() {
    static std::once_flag forkHandlers;
    std::call_once(forkHandlers, [] { pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild); });
    static thread_local ThreadEnd threadEnd;
    ownEntry = new ThreadEntry{pthread_self(), {}};
    Link(ownEntry);
}

}  // namespace

void PushPool(QVCTemporaryObjectsPool* pool) {
    if (ownEntry == nullptr) MakeOwnEntry();
    try {
        ownEntry->pools.push_back(pool);
    } catch (...) {
        PopTombstones();
        throw;
    }
    topPool = pool;
}

QVCTemporaryObjectsPool* GetTopPool() noexcept {
    return topPool;
}

bool PopPool(QVCTemporaryObjectsPool* pool) noexcept {
    if (ownEntry == nullptr) return false;
    std::vector<QVCTemporaryObjectsPool*>& pools = ownEntry->pools;
    const auto place = std::find(pools.begin(), pools.end(), pool);
    if (place == pools.end()) return false;
    *place = nullptr;
    if (pool != topPool) return false;
    PopTombstones();
    return true;
}

std::size_t CountThreadsWithPools() noexcept {
    const std::lock_guard lock(listMutex);
    std::size_t count = 0;
    for (const ThreadEntry* entry = firstEntry; entry != nullptr; entry = entry->next)
        ++count;
    return count;
}

}  // namespace qv

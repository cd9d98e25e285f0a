#include "runtime/pool_stacks.h"

#include <algorithm>
#include <mutex>
#include <pthread.h>
#include <utility>
#include <vector>

#include "runtime/QVCTemporaryObjectsPool.h"

// One thread's pools, bottom first; a null pool is the tombstone of one that was released out of order. An
// entry lies where it was made until the thread's last pool goes.
struct QVTempObjPoolStackPerThreadMac {
    pthread_t thread;
    std::vector<QVCTemporaryObjectsPool*> pools;
    QVCTemporaryObjectsPool* top = nullptr;
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

// Buries a pool: true when the entry has it. Tombstones at the top go at once.
bool Bury(ThreadEntry& entry, const QVCTemporaryObjectsPool* pool) noexcept {
    std::vector<QVCTemporaryObjectsPool*>& pools = entry.pools;
    const auto place = std::find(pools.begin(), pools.end(), pool);
    if (place == pools.end()) return false;
    *place = nullptr;
    while (!pools.empty() && pools.back() == nullptr)
        pools.pop_back();
    entry.top = pools.empty() ? nullptr : pools.back();
    return true;
}

void DropOwnEntryIfEmpty() noexcept {
    if (ownEntry->top != nullptr) return;
    Unlink(ownEntry);
    delete std::exchange(ownEntry, nullptr);
}

// A pool that a wrong thread releases must not stay in its own thread's stack.
void BuryInOtherThread(const QVCTemporaryObjectsPool* pool) noexcept {
    const std::lock_guard lock(listMutex);
    for (ThreadEntry* entry = firstEntry; entry != nullptr; entry = entry->next) {
        if (entry != ownEntry && Bury(*entry, pool)) return;
    }
}

// A thread that ends with open pools has them drained, top first. The pools themselves belong to whoever
// created them.
struct ThreadEnd {
    ThreadEnd() noexcept = default;
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd() {
        while (QVCTemporaryObjectsPool* top = GetTopPool()) {
            top->ReleaseTemporaryObjects();
            Bury(*ownEntry, top);
        }
        if (ownEntry != nullptr) DropOwnEntryIfEmpty();
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
        DropOwnEntryIfEmpty();
        throw;
    }
    ownEntry->top = pool;
}

QVCTemporaryObjectsPool* GetTopPool() noexcept {
    return ownEntry == nullptr ? nullptr : ownEntry->top;
}

bool PopPool(QVCTemporaryObjectsPool* pool) noexcept {
    const bool wasTop = pool == GetTopPool();
    if (ownEntry == nullptr || !Bury(*ownEntry, pool)) {
        BuryInOtherThread(pool);
        return false;
    }
    DropOwnEntryIfEmpty();
    return wasTop;
}

std::size_t CountThreadsWithPools() noexcept {
    const std::lock_guard lock(listMutex);
    std::size_t count = 0;
    for (const ThreadEntry* entry = firstEntry; entry != nullptr; entry = entry->next)
        ++count;
    return count;
}

}  // namespace qv

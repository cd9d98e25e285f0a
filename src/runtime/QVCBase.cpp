#include "runtime/QVCBase.h"

#include <functional>
#include <limits>

#include "base/block_cache.h"
#include "runtime/Handle.h"

// Deep structures. An object whose last reference goes destroys itself at once, which releases what it holds,
// and so on down. Beyond a small depth a dead object is queued instead, and the outermost release destroys
// the queue, so millions of nested containers need little stack. Queueing must not fail, so the queue's link
// lies in a prefix that every object was allocated with.

namespace {

struct Prefix {
    QVCBase* nextDead;
};
// 8 bytes on every machine, so that an object keeps the alignment of its block up to 8.
constexpr std::size_t kPrefixSize = 8;
static_assert(sizeof(Prefix) <= kPrefixSize);

// Deep enough for ordinary structures to be destroyed in order, shallow enough for the smallest of thread
// stacks.
constexpr int kDestructionDepth = 32;

// A dying object's count: a retain and release during its destruction never meets zero again.
constexpr std::int32_t kDyingCount = std::numeric_limits<std::int32_t>::min() / 2;

struct Destruction {
    int depth;
    QVCBase* firstDead;
    QVCBase* lastDead;
};
[[gnu::tls_model("initial-exec")]] constinit thread_local Destruction destruction = {};

Prefix& PrefixOf(QVCBase* object) {
    return *reinterpret_cast<Prefix*>(reinterpret_cast<char*>(object) - kPrefixSize);
}

void Queue(QVCBase* object) {
    PrefixOf(object).nextDead = nullptr;
    if (destruction.firstDead == nullptr) {
        destruction.firstDead = object;
    } else {
        PrefixOf(destruction.lastDead).nextDead = object;
    }
    destruction.lastDead = object;
}

QVCBase* TakeFirstDead() {
    QVCBase* object = destruction.firstDead;
    destruction.firstDead = PrefixOf(object).nextDead;
    return object;
}

void Destroy(QVCBase* object) {
    if (destruction.depth >= kDestructionDepth) return Queue(object);
    ++destruction.depth;
    delete object;
    if (destruction.depth == 1) {
        while (destruction.firstDead != nullptr)
            delete TakeFirstDead();
    }
    --destruction.depth;
}

}  // namespace

void* QVCBase::operator new(std::size_t size) {
    return static_cast<char*>(qv::AllocateBlock(size + kPrefixSize)) + kPrefixSize;
}

void QVCBase::operator delete(void* object, std::size_t size) noexcept {
    qv::FreeBlock(static_cast<char*>(object) - kPrefixSize, size + kPrefixSize);
}

void QVCBase::Die() {
    retainCount_ = kDyingCount;
    Destroy(this);
}

int QVCBase::CompareToObject(void* other) const {
    const void* self = qv::ToHandle(this);
    if (self == other) return 0;
    return std::less<const void*>()(self, other) ? -1 : 1;
}

void* QVCBase::CreateCopy() const {
    return nullptr;
}

void* QVCBase::GetNSObject() {
    return nullptr;
}

void* QVCBase::CreateCFObject() {
    return nullptr;
}

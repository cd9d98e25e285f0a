#include <utility>

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "runtime/Guard.h"
#include "runtime/QVCTemporaryObjectsPool.h"
#include "runtime/pool_stacks.h"

using qv::Guard;

namespace {

// The bottom pool of the thread that brought the library up; null while the library is down.
constinit void* mainPool = nullptr;

void LogMissingPool() {
    QVLog(L"The temporary objects pool is not created for this thread. The object will leak");
}

}  // namespace

void* QVTemporaryObjectsPoolCreate() noexcept {
    return qv::CreateObject<QVCTemporaryObjectsPool>();
}

void* QVTEMPOBJ(void* object) noexcept {
    QVCTemporaryObjectsPool* pool = qv::GetTopPool();
    if (pool == nullptr) {
        LogMissingPool();
        return object;
    }
    const bool added = Guard(false, [&] {
        pool->AddTemporaryObject(object);
        return true;
    });
    if (added) return object;
    QVRelease(object);
    return nullptr;
}

void* QVSTR(const wchar_t* text) noexcept {
    if (text == nullptr) text = L"";
    QVCTemporaryObjectsPool* pool = qv::GetTopPool();
    if (pool == nullptr) {
        LogMissingPool();
        return QVStringCreateWithWideString(text);
    }
    return Guard<void*>(nullptr, [&] { return pool->GetTemporaryString(text); });
}

void* QVTemporaryObjectsPoolGetFrontPool() noexcept {
    const QVCTemporaryObjectsPool* pool = qv::GetTopPool();
    return pool == nullptr ? nullptr : qv::ToHandle(pool);
}

void QVTemporaryObjectsPoolInstallEventsCallBack() noexcept {
    if (mainPool == nullptr) mainPool = QVTemporaryObjectsPoolCreate();
}

void QVTemporaryObjectsPoolRemoveEventsCallBack() noexcept {
    QVRelease(std::exchange(mainPool, nullptr));
}

void QVTemporaryObjectsPoolHandleEvents() noexcept {
    QVCTemporaryObjectsPool* pool = qv::GetTopPool();
    if (pool != nullptr && mainPool != nullptr) pool->ReleaseTemporaryObjects();
}

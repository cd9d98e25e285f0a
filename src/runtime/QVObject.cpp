// The functions that every object answers. They take no guard where nothing behind them can throw.
#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVObject.h>

#include "runtime/Guard.h"
#include "runtime/QVCCallBack.h"
#include "runtime/QVNullImpl.h"

using qv::CreateObject;
using qv::FromHandle;
using qv::With;

void* QVRetain(void* object) noexcept {
    if (object != nullptr) FromHandle<QVCBase>(object)->Retain();
    return object;
}

void QVRelease(void* object) noexcept {
    if (object != nullptr) FromHandle<QVCBase>(object)->Release();
}

unsigned long QVGetRetainCount(void* object) noexcept {
    return With<QVCBase>(object, 0UL, [](const QVCBase& o) { return o.GetRetainCount(); });
}

unsigned short QVGetTypeID(void* object) noexcept {
    return With<QVCBase>(object, static_cast<unsigned short>(0),
                         [](const QVCBase& o) { return o.GetTypeID(); });
}

void* QVCreateCopy(void* object) noexcept {
    if (object == nullptr) return nullptr;
    void* copy =
        With<QVCBase>(object, static_cast<void*>(nullptr), [](const QVCBase& o) { return o.CreateCopy(); });
    if (copy == nullptr) QVLog(L"The object is not support CreateCopy method.");
    return copy;
}

int QVCompareObject(void* object1, void* object2) noexcept {
    if (object1 == nullptr) return object2 == nullptr ? 0 : -1;
    return With<QVCBase>(object1, 1, [object2](const QVCBase& o) { return o.CompareToObject(object2); });
}

void* QVGetNSObject(void* object) noexcept {
    return With<QVCBase>(object, static_cast<void*>(nullptr), [](QVCBase& o) { return o.GetNSObject(); });
}

void* QVCreateCFObject(void* object) noexcept {
    return With<QVCBase>(object, static_cast<void*>(nullptr), [](QVCBase& o) { return o.CreateCFObject(); });
}

void* QVCreateData(void*) noexcept {
    return nullptr;
}

void* QVNullCreate() noexcept {
    return CreateObject<QVNullImpl>();
}

void* QVCallBackCreate(void* address, void* context) noexcept {
    return CreateObject<QVCCallBack>(address, context);
}

void* QVCallBackGetAddress(void* callback) noexcept {
    return With<QVCCallBack>(callback, static_cast<void*>(nullptr),
                             [](const QVCCallBack& c) { return c.GetAddress(); });
}

void* QVCallBackGetContext(void* callback) noexcept {
    return With<QVCCallBack>(callback, static_cast<void*>(nullptr),
                             [](const QVCCallBack& c) { return c.GetContext(); });
}

#include "runtime/QVCTemporaryObjectsPool.h"

#include <utility>

#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVObject.h>

#include "runtime/pool_stacks.h"

QVCTemporaryObjectsPool::QVCTemporaryObjectsPool() {
    qv::PushPool(this);
}

QVCTemporaryObjectsPool::~QVCTemporaryObjectsPool() {
    if (this == qv::GetTopPool()) ReleaseTemporaryObjects();
    if (qv::PopPool(this)) return;
    QVLog(L"The temporary objects pool is not balanced (QVTemporaryObjectsPoolCreate and QVRelease).");
}

std::uint16_t QVCTemporaryObjectsPool::GetTypeID() const {
    return QVTypeIDTemporaryObjectsPool;
}

void* QVCTemporaryObjectsPool::GetTemporaryString(const wchar_t* text) {
    return strings_.Get(text);
}

void QVCTemporaryObjectsPool::ReleaseTemporaryObjects() noexcept {
    while (!objects_.empty() || !strings_.IsEmpty()) {
        const bool hasStrings = !strings_.IsEmpty();
        std::vector<void*> objects = std::exchange(objects_, std::move(spareObjects_));
        qv::InternedStrings strings;
        if (hasStrings) strings = std::exchange(strings_, std::move(spareStrings_));
        for (void* object : objects)
            QVRelease(object);
        objects.clear();
        spareObjects_ = std::move(objects);
        if (hasStrings) {
            strings.ReleaseAll();
            spareStrings_ = std::move(strings);
        }
    }
}

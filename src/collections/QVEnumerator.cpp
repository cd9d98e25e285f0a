#include <QVFoundation/QVEnumerator.h>

#include "collections/QVEnumeratorImpl.h"
#include "runtime/Guard.h"

using qv::With;

void* QVEnumeratorNextObject(void* enumerator) noexcept {
    return With<QVEnumeratorImpl>(enumerator, static_cast<void*>(nullptr),
                                  [](QVEnumeratorImpl& e) { return e.NextObject(); });
}

void QVEnumeratorReset(void* enumerator) noexcept {
    With<QVEnumeratorImpl>(enumerator, [](QVEnumeratorImpl& e) { e.Reset(); });
}

// Library start and end, and the registry of shared objects. All of it belongs to the main thread.
#include <utility>

#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "runtime/shared_objects.h"
#include "runtime/singleton_keys.h"

namespace {

// Calls of QVFoundationInit less calls of QVFoundationExit; below zero after surplus exits.
constinit int initialisationCount = 0;
constinit void* singletons = nullptr;

// The registry keeps the object; the reference of its creation goes with the pool, or at once when the pool
// could not be made. An object that could not be made stays absent.
void Share(void* created, const wchar_t* key) {
    if (created == nullptr) return;
    QVSingletonSetObject(created, key);
    if (QVTemporaryObjectsPoolGetFrontPool() == nullptr) return QVRelease(created);
    QVTEMPOBJ(created);
}

}  // namespace

int QVFoundationInit() noexcept {
    if (initialisationCount == 0) {
        singletons = QVDictionaryCreate();
        QVTemporaryObjectsPoolInstallEventsCallBack();
        Share(QVNullCreate(), qv::kNullKey);
        Share(qv::CreateSharedFileManager(), qv::kSharedFileManagerKey);
    }
    ++initialisationCount;
    return 0;
}

int QVFoundationExit() noexcept {
    const int countBefore = initialisationCount--;
    if (countBefore != 1) return 0;
    QVTemporaryObjectsPoolRemoveEventsCallBack();
    QVRelease(std::exchange(singletons, nullptr));
    return 0;
}

void QVSingletonSetObject(void* object, const wchar_t* key) noexcept {
    if (singletons == nullptr) return QVLog(L"QVFoundation is not initialized.");
    QVDictionarySetObject(singletons, object, key);
}

void* QVSingletonGetObject(const wchar_t* key) noexcept {
    if (singletons != nullptr) return QVDictionaryGetObject(singletons, key);
    QVLog(L"QVFoundation is not initialized.");
    return nullptr;
}

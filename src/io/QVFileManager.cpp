// The file manager: the C functions. They work on the shared manager in the singleton registry.
#include <QVFoundation/QVFileManager.h>
#include <QVFoundation/QVLibrary.h>

#include "io/QVCFileManagerMac.h"
#include "runtime/Guard.h"
#include "runtime/shared_objects.h"
#include "runtime/singleton_keys.h"

namespace {

// The body's result code. Without the shared manager, or when an exception says so, memory has run out; the
// registry logs why there is no manager.
template <class Body>
int WithManager(Body&& body) noexcept {
    void* manager = QVSingletonGetObject(qv::kSharedFileManagerKey);
    return qv::With<QVCFileManager>(manager, int{QVErrMemory}, body);
}

}  // namespace

void* qv::CreateSharedFileManager() noexcept {
    return CreateObject<QVCFileManagerMac>();
}

QVBoolean QVFileManagerIsExistsAtPath(void* path) noexcept {
    if (path == nullptr) return 0;
    void* manager = QVSingletonGetObject(qv::kSharedFileManagerKey);
    return qv::With<QVCFileManager>(manager, QVBoolean{0},
                                    [&](QVCFileManager& m) { return m.IsExistsAtPath(path); });
}

int QVFileManagerMakeDirectory(void* path, QVBoolean intermediate) noexcept {
    if (path == nullptr) return QVErrParam;
    return WithManager([&](QVCFileManager& m) { return m.MakeDirectory(path, intermediate != 0); });
}

int QVFileManagerDeleteItem(void* path) noexcept {
    if (path == nullptr) return QVErrParam;
    return WithManager([&](QVCFileManager& m) { return m.DeleteItem(path); });
}

int QVFileManagerCopyItem(void* source, void* destination) noexcept {
    if (source == nullptr) return QVErrParam;
    return WithManager([&](QVCFileManager& m) { return m.CopyItem(source, destination); });
}

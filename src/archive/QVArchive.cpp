// The archive's C functions.
#include <QVFoundation/QVArchive.h>

#include "archive/QVArchiveImpl.h"
#include "runtime/Guard.h"

namespace {

// Null is a bad argument; what C++ throws in here is want of memory.
template <class Body>
int WithArchive(void* archive, Body&& body) noexcept {
    if (archive == nullptr) return QVErrParam;
    return qv::With<QVArchiveImpl>(archive, int{QVErrMemory}, body);
}

}  // namespace

void* QVArchiveCreate() noexcept {
    return qv::CreateObject<QVArchiveImpl>();
}

int QVArchiveNew(void* archive, void* path, void* options) noexcept {
    return WithArchive(archive, [&](QVArchiveImpl& a) { return a.NewArchive(path, options); });
}

int QVArchiveMakeRootDirectory(void* archive, unsigned long capacity) noexcept {
    return WithArchive(archive, [&](QVArchiveImpl& a) { return a.MakeRootDirectory(capacity); });
}

int QVArchiveAddFile(void* archive, void* path, unsigned int* itemID) noexcept {
    return WithArchive(archive, [&](QVArchiveImpl& a) { return a.AddFile(path, itemID); });
}

int QVArchiveAddItemIntoDirectory(void* archive, unsigned int directoryID, void* itemIDs) noexcept {
    return WithArchive(archive,
                       [&](QVArchiveImpl& a) { return a.AddItemIntoDirectory(directoryID, itemIDs); });
}

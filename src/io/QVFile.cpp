// Files: the C functions.
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVLibrary.h>

#include "io/QVFileMacImpl.h"
#include "runtime/Guard.h"

using qv::CreateObject;
using qv::FromHandle;
using qv::Guard;
using qv::With;

namespace {

// The body's result code; a null file is a bad argument, and an exception means that memory ran out.
template <class Body>
int WithFile(void* file, Body&& body) noexcept {
    if (file == nullptr) return QVErrParam;
    return Guard(int{QVErrMemory}, [&] { return body(*FromHandle<QVFileImpl>(file)); });
}

void* CreateWithUniquePath(void* path, bool temporary) noexcept {
    if (path == nullptr) return nullptr;
    qv::Owned file(QVFileCreate());
    const int code = WithFile(file.Get(), [&](QVFileImpl& f) { return f.SetPathForUnique(path, temporary); });
    return code == QVNoErr ? file.Detach() : nullptr;
}

}  // namespace

void* QVFileCreate() noexcept {
    void* file = CreateObject<QVFileMacImpl>();
    if (file == nullptr) QVLog(L"Couldn't allocate the buffer for the QVFile.");
    return file;
}

int QVFileSetPath(void* file, void* path) noexcept {
    return WithFile(file, [&](QVFileImpl& f) { return f.SetPath(path); });
}

void* QVFileGetPath(void* file) noexcept {
    return With<QVFileImpl>(file, static_cast<void*>(nullptr),
                            [](const QVFileImpl& f) { return f.GetPath(); });
}

int QVFileOpenForReading(void* file) noexcept {
    return WithFile(file, [](QVFileImpl& f) { return f.OpenForReading(); });
}

int QVFileOpenForWriting(void* file) noexcept {
    return WithFile(file, [](QVFileImpl& f) { return f.OpenForWriting(); });
}

int QVFileSetMarker(void* file, int origin, long long offset) noexcept {
    return WithFile(file, [&](QVFileImpl& f) { return f.SetMarker(origin, offset); });
}

unsigned long long QVFileGetMarker(void* file) noexcept {
    return With<QVFileImpl>(file, 0ULL, [](const QVFileImpl& f) { return f.GetMarker(); });
}

int QVFileReadBytes(void* file, void* buffer, unsigned long size, unsigned long* done,
                    QVBoolean exact) noexcept {
    return WithFile(file, [&](QVFileImpl& f) { return f.ReadBytes(buffer, size, done, exact != 0); });
}

int QVFileWriteBytes(void* file, const void* buffer, unsigned long size, unsigned long* done,
                     QVBoolean exact) noexcept {
    return WithFile(file, [&](QVFileImpl& f) { return f.WriteBytes(buffer, size, done, exact != 0); });
}

int QVFileFlush(void* file) noexcept {
    return WithFile(file, [](QVFileImpl& f) { return f.Flush(); });
}

unsigned long long QVFileGetSize(void* file) noexcept {
    return With<QVFileImpl>(file, 0ULL, [](const QVFileImpl& f) { return f.GetSize(); });
}

int QVFileSetSize(void* file, unsigned long long size) noexcept {
    return WithFile(file, [&](QVFileImpl& f) { return f.SetSize(size); });
}

int QVFileClose(void* file) noexcept {
    return WithFile(file, [](QVFileImpl& f) { return f.Close(); });
}

int QVFileDelete(void* file, QVBoolean toTrash) noexcept {
    return WithFile(file, [&](QVFileImpl& f) { return f.Delete(toTrash != 0); });
}

void* QVFileCreateTemporary(void* path) noexcept {
    return CreateWithUniquePath(path, true);
}

void* QVFileCreateUnique(void* path) noexcept {
    return CreateWithUniquePath(path, false);
}

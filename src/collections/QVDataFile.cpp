// Data in and out of files, through the file functions.
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "runtime/Owned.h"

using qv::Owned;

namespace {

// The file of this size and all above it do not fit into one Data object.
constexpr unsigned long long kTooLarge = 0xFFFFFFFF;

// What lies behind the marker afterwards is the tail of a longer old file, or follows a write that failed.
int WriteAndCut(void* file, void* data) noexcept {
    const int code = QVFileWriteBytes(file, QVDataGetImutableBuffer(data), QVDataGetSize(data), nullptr, 1);
    QVFileFlush(file);
    QVFileSetSize(file, QVFileGetMarker(file));
    return code;
}

Owned ReadWhole(void* file) noexcept {
    const unsigned long long size = QVFileGetSize(file);
    if (size >= kTooLarge) return Owned();
    Owned data(QVDataCreate(nullptr, static_cast<unsigned long>(size)));
    if (!data) return data;
    const int code =
        QVFileReadBytes(file, QVDataGetMutableBuffer(data.Get()), QVDataGetSize(data.Get()), nullptr, 1);
    return code == QVNoErr ? Owned(data.Detach()) : Owned();
}

}  // namespace

int QVDataWriteToFile(void* data, void* path) noexcept {
    const Owned file(QVFileCreate());
    if (!file) return QVErrMemory;
    QVFileSetPath(file.Get(), path);
    int code = QVFileOpenForWriting(file.Get());
    if (code != QVNoErr) return code;
    code = QVFileSetMarker(file.Get(), 0, 0);
    if (code == QVNoErr && QVDataGetSize(data) > 0) code = WriteAndCut(file.Get(), data);
    QVFileClose(file.Get());
    return code;
}

void* QVDataCreateFromFile(void* path) noexcept {
    const Owned file(QVFileCreate());
    if (!file) return nullptr;
    QVFileSetPath(file.Get(), path);
    if (QVFileOpenForReading(file.Get()) != QVNoErr) return nullptr;
    Owned data = ReadWhole(file.Get());
    QVFileClose(file.Get());
    return data ? QVTEMPOBJ(data.Detach()) : nullptr;
}

#include <utility>

#include <QVFoundation/QVBinaryFormat.h>
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVStream.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "formats/binary_reader.h"
#include "formats/binary_writer.h"
#include "runtime/Guard.h"

using qv::Guard;
using qv::Owned;

namespace {

// Opens a file at a path with one of the two open functions and makes a stream over it; both are null after a
// failure.
struct OpenFile {
    Owned file;
    Owned stream;
    int result = QVErrMemory;

    OpenFile(void* path, int (*open)(void*)) : file(QVFileCreate()) {
        if (!file) return;
        QVFileSetPath(file.Get(), path);
        result = open(file.Get());
        if (result != QVNoErr) return;
        stream.Reset(QVStreamCreateWithFile(file.Get()));
        if (!stream) result = QVErrMemory;
    }
};

// Runs a reader and parks what it read. A boolean comes with a code of its own, which stays.
template <class Read>
int ReadTemporary(void** object, Read read) noexcept {
    return Guard(static_cast<int>(QVErrMemory), [&] {
        Owned value;
        const int result = read(value);
        if (!value) return result;
        *object = QVTEMPOBJ(value.Detach());
        return *object == nullptr ? static_cast<int>(QVErrMemory) : result;
    });
}

int WriteToOpenFile(const OpenFile& opened, void* object) noexcept {
    const int result = QVBinaryFormatWriteToStream(opened.stream.Get(), object);
    if (result != QVNoErr) return result;
    return QVFileSetSize(opened.file.Get(),
                         static_cast<unsigned long long>(QVStreamGetMarker(opened.stream.Get())));
}

}  // namespace

void* QVBinaryFormatCreateData(void* object) noexcept {
    return Guard<void*>(nullptr, [object] { return qv::CreateBinaryData(object).Detach(); });
}

int QVBinaryFormatWriteToStream(void* stream, void* object) noexcept {
    if (stream == nullptr || object == nullptr) return QVErrParam;
    const int result =
        Guard(static_cast<int>(QVErrMemory), [=] { return qv::WriteBinaryObject(stream, object); });
    // Streams over Data answer 1 where others answer 0; only a negative code is a failure.
    const int flushed = QVStreamFlush(stream);
    return result == QVNoErr && flushed < 0 ? flushed : result;
}

int QVBinaryFormatWriteToFile(void* path, void* object) noexcept {
    if (path == nullptr || object == nullptr) return QVErrParam;
    const OpenFile opened(path, QVFileOpenForWriting);
    if (opened.result != QVNoErr) return opened.result;
    const int result = WriteToOpenFile(opened, object);
    const int closed = QVFileClose(opened.file.Get());
    return result != QVNoErr ? result : closed;
}

int QVBinaryFormatReadFromStream(void* stream, void** object) noexcept {
    if (stream == nullptr || object == nullptr) return QVErrParam;
    *object = nullptr;
    return ReadTemporary(object,
                         [stream](Owned& value) { return qv::ReadBinaryObjectFromStream(stream, value); });
}

int QVBinaryFormatReadFromData(void* data, void** object) noexcept {
    if (data == nullptr || object == nullptr) return QVErrParam;
    *object = nullptr;
    return ReadTemporary(object, [data](Owned& value) { return qv::ReadBinaryObjectFromData(data, value); });
}

int QVBinaryFormatReadFromFile(void* path, void** object) noexcept {
    if (path == nullptr || object == nullptr) return QVErrParam;
    const Owned ownPath{path};  // the caller's reference is consumed, whatever happens
    *object = nullptr;
    const OpenFile opened(path, QVFileOpenForReading);
    if (opened.result != QVNoErr) return opened.result;
    const int result = QVBinaryFormatReadFromStream(opened.stream.Get(), object);
    QVFileClose(opened.file.Get());
    return result;
}

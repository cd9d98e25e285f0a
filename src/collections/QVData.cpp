#include <limits>

#include <QVFoundation/QVData.h>
#include <QVFoundation/QVLibrary.h>

#include "collections/QVHeapBaseDataImpl.h"
#include "collections/QVNoCopyData.h"
#include "collections/raw_data.h"
#include "runtime/Guard.h"
#include "runtime/Owned.h"

using qv::CreateObject;
using qv::With;

namespace {

void* DataOrLog(void* data, unsigned long size) {
    if (data == nullptr) {
        QVLog(L"Can't allocate the object for the QVDataRef. (size=%d)", static_cast<int>(size));
    }
    return data;
}

}  // namespace

void* QVDataCreate(const void* bytes, unsigned long size) noexcept {
    return DataOrLog(CreateObject<QVHeapBaseDataImpl>(bytes, size), size);
}

void* QVDataCreateNoCopy(void* bytes, unsigned long size, QVBoolean writable) noexcept {
    if (bytes == nullptr && size > 0) return nullptr;
    if (size > std::numeric_limits<std::uint32_t>::max()) return DataOrLog(nullptr, size);
    return DataOrLog(CreateObject<QVNoCopyData>(bytes, static_cast<std::uint32_t>(size), writable != 0),
                     size);
}

const void* QVDataGetImutableBuffer(void* data) noexcept {
    return With<QVDataImpl>(data, static_cast<const void*>(nullptr),
                            [](const QVDataImpl& d) { return d.GetImutableBuffer(); });
}

void* QVDataGetMutableBuffer(void* data) noexcept {
    return With<QVDataImpl>(data, static_cast<void*>(nullptr),
                            [](const QVDataImpl& d) { return d.GetMutableBuffer(); });
}

unsigned long QVDataGetSize(void* data) noexcept {
    return With<QVDataImpl>(data, 0UL, [](const QVDataImpl& d) { return d.GetSize(); });
}

QVBoolean QVDataSetSize(void* data, unsigned long size) noexcept {
    return With<QVDataImpl>(data, QVBoolean{0}, [size](QVDataImpl& d) { return d.SetSize(size); });
}

QVBoolean QVDataReserve(void* data, unsigned long capacity) noexcept {
    return With<QVDataImpl>(data, QVBoolean{0}, [capacity](QVDataImpl& d) { return d.Reserve(capacity); });
}

QVBoolean QVDataAppendData(void* data, void* other) noexcept {
    return With<QVDataImpl>(data, QVBoolean{0}, [other](QVDataImpl& d) { return d.AppendData(other); });
}

QVBoolean QVDataAppendBuffer(void* data, const void* bytes, unsigned long length) noexcept {
    return With<QVDataImpl>(data, QVBoolean{0}, [=](QVDataImpl& d) { return d.AppendBuffer(bytes, length); });
}

QVBoolean QVDataSetBytes(void* data, const void* bytes, unsigned long offset, unsigned long length) noexcept {
    return With<QVDataImpl>(data, QVBoolean{0},
                            [=](QVDataImpl& d) { return d.SetBytes(bytes, offset, length); });
}

QVBoolean QVDataGetBytes(void* data, void* buffer, unsigned long offset, unsigned long length,
                         unsigned long* copied) noexcept {
    return With<QVDataImpl>(data, QVBoolean{0},
                            [=](QVDataImpl& d) { return d.GetBytes(buffer, offset, length, copied); });
}

void* qv::CreateDataToFill(std::size_t size) noexcept {
    return Guard(static_cast<void*>(nullptr), [size]() -> void* {
        Owned data{ToHandle(new QVHeapBaseDataImpl)};
        auto& heap = *FromHandle<QVHeapBaseDataImpl>(data.Get());
        // Exactly as much room as asked for; nothing to extend keeps the buffer null.
        if (!heap.Reserve(static_cast<unsigned long>(size))) return nullptr;
        if (size > 0) heap.Extend(static_cast<unsigned long>(size));
        return data.Detach();
    });
}

unsigned char* qv::ExtendData(void* data, std::size_t count) noexcept {
    auto* heap = CheckedHandle<QVHeapBaseDataImpl>(data);
    if (heap == nullptr) return nullptr;
    return Guard(static_cast<unsigned char*>(nullptr),
                 [=] { return heap->Extend(static_cast<unsigned long>(count)); });
}

qv::ByteStore* qv::OwnedBytes(void* data) noexcept {
    auto* heap = CheckedHandle<QVHeapBaseDataImpl>(data);
    return heap == nullptr ? nullptr : &heap->Store();
}

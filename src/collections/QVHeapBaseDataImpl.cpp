#include "collections/QVHeapBaseDataImpl.h"

#include "runtime/Guard.h"

QVHeapBaseDataImpl::QVHeapBaseDataImpl(const void* bytes, unsigned long size) {
    if (size == 0) return;
    store_.Reserve(size);
    if (bytes != nullptr) {
        store_.Append(bytes, size);
    } else {
        store_.Resize(size);
    }
}

bool QVHeapBaseDataImpl::SetSize(unsigned long size) {
    return qv::Guard(false, [=, this] {
        store_.Resize(size);
        return true;
    });
}

bool QVHeapBaseDataImpl::Reserve(unsigned long capacity) {
    return qv::Guard(false, [=, this] {
        store_.Reserve(capacity);
        return true;
    });
}

bool QVHeapBaseDataImpl::AppendData(void* data) {
    if (data == nullptr) return false;
    const auto& other = *qv::FromHandle<QVDataImpl>(data);
    return AppendBuffer(other.GetImutableBuffer(), other.GetSize());
}

bool QVHeapBaseDataImpl::AppendBuffer(const void* bytes, unsigned long length) {
    if (bytes == nullptr) return length == 0;
    return qv::Guard(false, [=, this] {
        store_.Append(bytes, length);
        return true;
    });
}

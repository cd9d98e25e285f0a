#include "collections/QVArrayImpl.h"

#include <exception>

#include <QVFoundation/QVLibrary.h>

#include "collections/handle_scan.h"
#include "runtime/Guard.h"
#include "runtime/Owned.h"

QVArrayImpl::~QVArrayImpl() {
    for (void* object : store_)
        QVRelease(object);
}

void QVArrayImpl::AppendObject(void* object) {
    store_.Append(object);
    QVRetain(object);
}

void QVArrayImpl::AddObject(void* object) {
    if (object == nullptr) return QVLog(L"Add NULL object into the array.");
    // The reference is taken first and stays taken when there is no room for the element.
    qv::FromHandle<QVCBase>(object)->Retain();
    if (store_.IsFull()) return GrowAndAppend(object);
    store_.Append(object);
}

void QVArrayImpl::GrowAndAppend(void* object) noexcept {
    try {
        store_.Append(object);
    } catch (const std::exception&) {
        QVLog(L"Failed adding the object into the array.");
    }
}

void QVArrayImpl::InsertObject(void* object, std::size_t index) {
    if (index > GetCount()) return QVLog(L"The index(%d) is out of range.", static_cast<int>(index));
    QVRetain(object);
    try {
        store_.Insert(index, object);
    } catch (const std::exception&) {
        QVLog(L"Failed inserting the object.");
    }
}

void QVArrayImpl::RemoveObject(std::size_t index) {
    if (index >= GetCount()) return QVLog(L"The index(%d) is out of range.", static_cast<int>(index));
    QVRelease(store_.Remove(index));
}

void QVArrayImpl::RemoveObject(void* object) {
    const long index = IndexOfObject(object);
    if (index >= 0) RemoveObject(static_cast<std::size_t>(index));
}

void QVArrayImpl::RemoveAllObjects() {
    // An element's end may release this array, or even change it: the elements are taken out before the first
    // goes.
    const qv::Owned self = qv::Owned::Retaining(qv::ToHandle(this));
    qv::HandleStore dropped;
    store_.Swap(dropped);
    for (void* object : dropped)
        QVRelease(object);
    dropped.Clear();
    if (GetCount() == 0) store_.Swap(dropped);  // the room stays
}

void QVArrayImpl::SetObjectAtIndex(void* object, std::size_t index) {
    if (index >= GetCount()) return;
    // Retained before the old element goes: it may be the same object.
    QVRetain(object);
    QVRelease(store_.Exchange(index, object));
}

long QVArrayImpl::IndexOfObject(void* object) const {
    const std::size_t index = qv::FindHandle(store_.begin(), GetCount(), object);
    return index < GetCount() ? static_cast<long>(index) : -1;
}

void* QVArrayImpl::CreateObjectEnumerator() {
    void* enumerator = qv::CreateObject<QVArrayImplObjectEnumerator>(this);
    if (enumerator == nullptr) QVLog(L"Couldn't allocate the instance of the QVEnumerator for the array.");
    return enumerator;
}

void* QVArrayImplObjectEnumerator::NextObject() noexcept {
    if (cursor_ >= array_->GetCount()) return nullptr;
    return array_->GetObject(cursor_++);
}

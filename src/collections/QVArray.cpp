#include <cstdarg>
#include <cstdint>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVLibrary.h>

#include "collections/QVArrayImpl.h"
#include "collections/handover.h"
#include "runtime/Guard.h"
#include "runtime/Owned.h"

// The macro of this name ends argument lists for callers; the function itself is defined here.
#undef QVArrayCreateWithObjects

using qv::CreateObject;
using qv::Guard;
using qv::Owned;
using qv::With;

namespace {

// -1 ends a list of objects. A plain -1 fills only half of a 64-bit argument, so half of it is looked at.
bool IsEndMark(void* argument) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(argument)) == 0xFFFFFFFFU;
}

bool EndsCounting(void* argument) {
    return argument == nullptr || IsEndMark(argument);
}

// Counts `first` as well.
std::size_t CountObjects(void* first, std::va_list rest) {
    std::size_t count = 0;
    for (void* object = first; !EndsCounting(object); object = va_arg(rest, void*))
        ++count;
    return count;
}

void AppendObjects(QVArrayImpl& array, std::va_list objects) {
    for (void* object = va_arg(objects, void*); !IsEndMark(object); object = va_arg(objects, void*)) {
        array.AppendObject(object);
    }
}

void* ArrayOrLog(void* array) {
    if (array == nullptr) QVLog(L"Couldn't allocate the instance of the QVArray.");
    return array;
}

}  // namespace

void* QVArrayCreateWithCapacity(unsigned long capacity) noexcept {
    void* array = CreateObject<QVArrayImpl>(capacity);
    if (array == nullptr) {
        QVLog(L"Couldn't allocate the instance of the QVArray. (capacity=%d)", static_cast<int>(capacity));
    }
    return array;
}

void* QVArrayCreateWithObjects(void* first, ...) noexcept {
    std::va_list objects;
    va_start(objects, first);
    std::va_list counted;
    va_copy(counted, objects);
    const std::size_t count = CountObjects(first, counted);
    va_end(counted);

    void* result = Guard(static_cast<void*>(nullptr), [&]() -> void* {
        Owned array{qv::ToHandle(new QVArrayImpl(count))};
        // The first object only counts: what is stored begins with the second.
        if (count > 0) AppendObjects(*qv::FromHandle<QVArrayImpl>(array.Get()), objects);
        return array.Detach();
    });
    va_end(objects);
    return ArrayOrLog(result);
}

void* QVArrayCreateWithObject(void* object) noexcept {
    const bool isEmpty = EndsCounting(object);
    return ArrayOrLog(Guard(static_cast<void*>(nullptr), [&]() -> void* {
        Owned array{qv::ToHandle(new QVArrayImpl(isEmpty ? 0 : 1))};
        if (!isEmpty) qv::FromHandle<QVArrayImpl>(array.Get())->AppendObject(object);
        return array.Detach();
    }));
}

void* QVArrayGetObjectAtIndex(void* array, unsigned long index) noexcept {
    return With<QVArrayImpl>(array, static_cast<void*>(nullptr),
                             [index](const QVArrayImpl& a) { return a.GetObject(index); });
}

void* QVArrayGetLastObject(void* array) noexcept {
    return With<QVArrayImpl>(array, static_cast<void*>(nullptr),
                             [](const QVArrayImpl& a) { return a.GetLastObject(); });
}

unsigned long QVArrayGetCount(void* array) noexcept {
    return With<QVArrayImpl>(array, 0UL, [](const QVArrayImpl& a) { return a.GetCount(); });
}

void QVArrayAddObject(void* array, void* object) noexcept {
    With<QVArrayImpl>(array, [object](QVArrayImpl& a) { a.AddObject(object); });
}

void QVArrayInsertObjectAtIndex(void* array, void* object, unsigned long index) noexcept {
    With<QVArrayImpl>(array, [=](QVArrayImpl& a) { a.InsertObject(object, index); });
}

void QVArrayRemoveObjectAtIndex(void* array, unsigned long index) noexcept {
    With<QVArrayImpl>(array, [index](QVArrayImpl& a) { a.RemoveObject(index); });
}

void QVArrayRemoveObject(void* array, void* object) noexcept {
    With<QVArrayImpl>(array, [object](QVArrayImpl& a) { a.RemoveObject(object); });
}

void QVArrayRemoveAllObjects(void* array) noexcept {
    With<QVArrayImpl>(array, [](QVArrayImpl& a) { a.RemoveAllObjects(); });
}

void* QVArrayCreateObjectEnumerator(void* array) noexcept {
    return With<QVArrayImpl>(array, static_cast<void*>(nullptr),
                             [](QVArrayImpl& a) { return a.CreateObjectEnumerator(); });
}

void QVArraySetObjectAtIndex(void* array, void* object, unsigned long index) noexcept {
    With<QVArrayImpl>(array, [=](QVArrayImpl& a) { a.SetObjectAtIndex(object, index); });
}

long QVArrayIndexOfObject(void* array, void* object) noexcept {
    return With<QVArrayImpl>(array, -1L, [object](const QVArrayImpl& a) { return a.IndexOfObject(object); });
}

void qv::HandToArray(void* array, Owned&& object) {
    FromHandle<QVArrayImpl>(array)->AdoptObject(object.Get());
    (void)object.Detach();
}

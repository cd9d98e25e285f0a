#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVLinkedList.h>

#include "collections/QVLinkedListImpl.h"
#include "runtime/Guard.h"

using qv::CreateObject;
using qv::With;

void* QVLinkedListCreate() noexcept {
    void* list = CreateObject<QVLinkedListImpl>();
    if (list == nullptr) QVLog(L"Couldn't allocate the instance of the QVLinkedList.");
    return list;
}

unsigned long QVLinkedListGetCount(void* list) noexcept {
    return With<QVLinkedListImpl>(list, 0UL, [](const QVLinkedListImpl& l) { return l.GetCount(); });
}

void* QVLinkedListGetFrontObject(void* list) noexcept {
    return With<QVLinkedListImpl>(list, static_cast<void*>(nullptr),
                                  [](const QVLinkedListImpl& l) { return l.GetFrontObject(); });
}

void* QVLinkedListGetLastObject(void* list) noexcept {
    return With<QVLinkedListImpl>(list, static_cast<void*>(nullptr),
                                  [](const QVLinkedListImpl& l) { return l.GetLastObject(); });
}

void* QVLinkedListGetObjectAtIndex(void* list, unsigned long index) noexcept {
    return With<QVLinkedListImpl>(list, static_cast<void*>(nullptr),
                                  [index](const QVLinkedListImpl& l) { return l.GetObject(index); });
}

void QVLinkedListAddObject(void* list, void* object) noexcept {
    With<QVLinkedListImpl>(list, [object](QVLinkedListImpl& l) { l.AddObject(object); });
}

void QVLinkedListRemoveFrontObject(void* list) noexcept {
    With<QVLinkedListImpl>(list, [](QVLinkedListImpl& l) { l.RemoveFrontObject(); });
}

void QVLinkedListRemoveLastObject(void* list) noexcept {
    With<QVLinkedListImpl>(list, [](QVLinkedListImpl& l) { l.RemoveLastObject(); });
}

void* QVLinkedListCreateObjectEnumerator(void* list) noexcept {
    return With<QVLinkedListImpl>(list, static_cast<void*>(nullptr),
                                  [](QVLinkedListImpl& l) { return l.CreateObjectEnumerator(); });
}

long QVLinkedListIndexOfObject(void* list, void* object) noexcept {
    return With<QVLinkedListImpl>(list, -1L,
                                  [object](const QVLinkedListImpl& l) { return l.IndexOfObject(object); });
}

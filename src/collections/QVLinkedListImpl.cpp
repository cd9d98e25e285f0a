#include "collections/QVLinkedListImpl.h"

#include <exception>

#include <QVFoundation/QVLibrary.h>

#include "runtime/Guard.h"

QVLinkedListImpl::~QVLinkedListImpl() {
    while (!list_.IsEmpty())
        QVRelease(list_.Remove(list_.Front()));
}

long QVLinkedListImpl::IndexOfObject(void* object) const {
    long index = 0;
    for (const auto* node = list_.Front(); node != list_.End(); node = node->next, ++index) {
        if (node->handle == object) return index;
    }
    return -1;
}

std::size_t QVLinkedListImpl::GetCount() const {
    std::size_t count = 0;
    for (const auto* node = list_.Front(); node != list_.End(); node = node->next)
        ++count;
    return count;
}

void* QVLinkedListImpl::GetObject(unsigned long index) const {
    const auto* node = list_.Front();
    for (unsigned long steps = 0; steps < index && node != list_.End(); ++steps)
        node = node->next;
    if (node == list_.End()) QVLog(L"The index(%u) is an out of range.", static_cast<unsigned int>(index));
    return node->handle;
}

void QVLinkedListImpl::AddObject(void* object) {
    if (object == nullptr) return QVLog(L"Add the NULL item into the list.");
    // The reference is taken first and stays taken when there is no room for the element.
    QVRetain(object);
    try {
        list_.Append(object);
    } catch (const std::exception&) {
        QVLog(L"Couldn't add the object into the list.");
    }
}

void QVLinkedListImpl::RemoveFrontObject() {
    if (!list_.IsEmpty()) QVRelease(list_.Remove(list_.Front()));
}

void QVLinkedListImpl::RemoveLastObject() {
    if (!list_.IsEmpty()) QVRelease(list_.Remove(list_.Back()));
}

void* QVLinkedListImpl::CreateObjectEnumerator() {
    void* enumerator = qv::CreateObject<QVLinkedListImplObjectEnumerator>(*this);
    if (enumerator == nullptr)
        QVLog(L"Couldn't allocate the instance of the QVEnumerator for the linked list.");
    return enumerator;
}

#include <QVFoundation/QVPlatformObject.h>

void* QVCreateNSObjectFromString(void*) noexcept {
    return nullptr;
}

void* QVCreateNSObjectFromNumber(void*, int) noexcept {
    return nullptr;
}

void* QVCreateNSObjectFromData(void*) noexcept {
    return nullptr;
}

void* QVCreateNSObjectFromArray(void*) noexcept {
    return nullptr;
}

void* QVCreateNSObjectFromLinkedList(void*) noexcept {
    return nullptr;
}

void* QVStringCreateWithNSString(void*) noexcept {
    return nullptr;
}

void* QVStringFromNSString(void*) noexcept {
    return nullptr;
}

void* QVStringCreateWithCFString(void*) noexcept {
    return nullptr;
}

void* QVStringCreateCFString(void* string) noexcept {
    return QVCreateCFObject(string);
}

// An ordered collection that is added to at the back and taken from at either end. It owns one reference to
// each element, which is never null.
#pragma once

#include <QVFoundation/QVObject.h>

#include "collections/QVEnumeratorImpl.h"
#include "collections/handle_list.h"
#include "runtime/Handle.h"
#include "runtime/Owned.h"
#include "runtime/QVCBase.h"

class QVLinkedListImpl final : public QVCBase {
public:
    // Throws when there is no memory.
    QVLinkedListImpl() = default;
    ~QVLinkedListImpl() override;

    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDLinkedList; }

    // The first element that equals the object, or -1. No class has a comparison of its own, so an object
    // equals itself only, and comparing handles says what QVCompareObject would.
    [[nodiscard]] virtual long IndexOfObject(void* object) const;

    // The number is not kept: counting walks the list.
    [[nodiscard]] std::size_t GetCount() const;
    // All three are borrowed; null when the list is empty or too short.
    [[nodiscard]] void* GetFrontObject() const { return list_.Front()->handle; }
    [[nodiscard]] void* GetLastObject() const { return list_.Back()->handle; }
    [[nodiscard]] void* GetObject(unsigned long index) const;

    void AddObject(void* object);
    void RemoveFrontObject();
    void RemoveLastObject();

    [[nodiscard]] void* CreateObjectEnumerator();

    [[nodiscard]] qv::HandleList& Nodes() { return list_; }

private:
    qv::HandleList list_;
};

class QVLinkedListImplObjectEnumerator final : public QVEnumeratorImpl {
public:
    explicit QVLinkedListImplObjectEnumerator(QVLinkedListImpl& list)
        : list_(qv::Owned::Retaining(qv::ToHandle(&list))), cursor_(list.Nodes()) {}

    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDLinkedListEnumerator; }
    void* NextObject() noexcept override { return cursor_.Next(); }
    void Reset() noexcept override { cursor_.Reset(); }

private:
    // The cursor goes before the list it stands in.
    qv::Owned list_;
    qv::HandleList::Cursor cursor_;
};

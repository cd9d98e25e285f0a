// An ordered collection that owns one reference to each element. Elements may be null when they came by
// insertion or replacement.
#pragma once

#include <QVFoundation/QVObject.h>

#include "collections/QVEnumeratorImpl.h"
#include "collections/handle_store.h"
#include "runtime/QVCBase.h"

class QVArrayImpl final : public QVCBase {
public:
    // Throws when the room cannot be had.
    explicit QVArrayImpl(std::size_t capacity) { store_.Reserve(capacity); }
    ~QVArrayImpl() override;

    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDArray; }

    [[nodiscard]] std::size_t GetCount() const { return store_.Count(); }
    // Borrowed; null beyond the end.
    [[nodiscard]] void* GetObject(std::size_t index) const {
        return index < store_.Count() ? store_.At(index) : nullptr;
    }
    [[nodiscard]] void* GetLastObject() const { return GetObject(GetCount() - 1); }

    // Retains and appends without a word: throws when there is no room, and then has retained nothing.
    void AppendObject(void* object);

    // The same with the caller's reference, which stays the caller's when it throws.
    void AdoptObject(void* object) { store_.Append(object); }

    void AddObject(void* object);
    void InsertObject(void* object, std::size_t index);
    void RemoveObject(std::size_t index);
    void RemoveObject(void* object);
    void RemoveAllObjects();
    void SetObjectAtIndex(void* object, std::size_t index);

    // The first element that equals the object, or -1. No class has a comparison of its own, so an object
    // equals itself only, and comparing handles says what QVCompareObject would.
    [[nodiscard]] long IndexOfObject(void* object) const;

    [[nodiscard]] void* CreateObjectEnumerator();

private:
    // Rare, and kept out of the way of what is not.
    [[gnu::noinline]] void GrowAndAppend(void* object) noexcept;

    qv::HandleStore store_;
};

// Holds an index that is checked at every step, so the array may change under it.
class QVArrayImplObjectEnumerator final : public QVEnumeratorImpl {
public:
    explicit QVArrayImplObjectEnumerator(QVArrayImpl* array) : array_(array) { array_->Retain(); }
    ~QVArrayImplObjectEnumerator() override { array_->Release(); }

    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDArrayEnumerator; }
    void* NextObject() noexcept override;
    void Reset() noexcept override { cursor_ = 0; }

private:
    QVArrayImpl* array_;
    std::size_t cursor_ = 0;
};

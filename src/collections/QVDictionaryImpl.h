// A collection of values by wide text. It copies its keys and owns one reference to each value, which is
// never null.
#pragma once

#include <QVFoundation/QVObject.h>

#include "collections/keyed_map.h"
#include "runtime/QVCBase.h"

class QVDictionaryImpl final : public QVCBase {
public:
    QVDictionaryImpl() noexcept = default;
    ~QVDictionaryImpl() override;

    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDDictionary; }

    [[nodiscard]] std::size_t GetCount() const { return map_.Count(); }
    // Borrowed; null when there is none.
    [[nodiscard]] void* GetObject(const wchar_t* key) const;
    void SetObject(void* value, const wchar_t* key);
    // Puts a value that is not null under the key, with the caller's reference, which stays the caller's when
    // this throws.
    void AdoptObject(void* value, const wchar_t* key);
    void RemoveObject(const wchar_t* key);
    void AddEntriesFromDictionary(QVDictionaryImpl* other);

    // Both in key order, owned by the caller; null when memory runs out.
    [[nodiscard]] void* KeyArray() const;
    [[nodiscard]] void* ObjectArray() const;

    // Reserved: always null.
    [[nodiscard]] void* CreateData() { return nullptr; }

    [[nodiscard]] const qv::KeyedMap& Entries() const { return map_; }

private:
    qv::KeyedMap map_;
};

// Arrays, dictionaries and linked lists.

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cwchar>
#include <glib.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVEnumerator.h>
#include <QVFoundation/QVLinkedList.h>
#include <QVFoundation/QVObject.h>

#include "bench.h"
#include "gnustep.h"

namespace bench {

namespace {

// Borrowed handles of objects that live as long as the program.
std::vector<void*> MakeObjects(std::size_t count) {
    std::vector<void*> objects(count);
    for (void*& object : objects)
        object = QVNullCreate();
    return objects;
}

void* MakeArray(const std::vector<void*>& objects) {
    void* array = QVArrayCreateWithCapacity(0);
    for (void* object : objects)
        QVArrayAddObject(array, object);
    return array;
}

Comparison CompareAdding() {
    constexpr std::size_t kCount = 1000;
    struct Peer {
        int value = 0;
    };
    const std::vector<std::shared_ptr<Peer>> peers(kCount, std::make_shared<Peer>());
    const std::vector<void*> objects(kCount, QVNullCreate());
    void* filled = MakeArray(objects);
    Require(QVArrayGetCount(filled) == kCount, "elements");
    QVRelease(filled);
    Require(QVGetRetainCount(objects.front()) == 1, "references left behind");
    return {Times([objects] {
                void* array = MakeArray(objects);
                Keep(array);
                QVRelease(array);
            }),
            Times([peers] {
                std::vector<std::shared_ptr<Peer>> array;
                for (const auto& peer : peers)
                    array.push_back(peer);
                Keep(array);
            }),
            "std::vector<shared_ptr>",
            kCount,
            false,
            EmptyCalls(kCount)};
}

Comparison CompareGetting() {
    constexpr std::size_t kCount = 1000;
    const std::vector<void*> objects = MakeObjects(kCount);
    void* array = MakeArray(objects);
    for (std::size_t i = 0; i < kCount; ++i)
        Require(QVArrayGetObjectAtIndex(array, i) == objects[i], "another element");
    const Message add("addObject:");
    const Message objectAt("objectAtIndex:");
    const id peer = PeerClass("NSMutableArray").NewObject();
    const PeerClass objectClass("NSObject");
    for (std::size_t i = 0; i < kCount; ++i) {
        const id object = objectClass.NewObject();
        add(peer, object);
        Require(objectAt(peer, i) == object, "another element of the peer");
    }
    return {Times([array] {
                for (std::size_t i = 0; i < kCount; ++i)
                    Keep(QVArrayGetObjectAtIndex(array, i));
            }),
            Times([=] {
                for (unsigned long i = 0; i < kCount; ++i)
                    Keep(objectAt(peer, i));
            }),
            "GNUstep NSMutableArray",
            kCount,
            false,
            EmptyCalls(kCount)};
}

constexpr std::size_t kFrontCount = 10'000;

Comparison CompareInsertingAtTheFront() {
    return {Times([object = QVNullCreate()] {
                void* array = QVArrayCreateWithCapacity(0);
                for (std::size_t i = 0; i < kFrontCount; ++i)
                    QVArrayInsertObjectAtIndex(array, object, 0);
                Keep(array);
                QVRelease(array);
            }),
            Times([object = QVNullCreate()] {
                std::vector<void*> array;
                for (std::size_t i = 0; i < kFrontCount; ++i)
                    array.insert(array.begin(), object);
                Keep(array);
            }),
            "std::vector<void*>", kFrontCount};
}

Comparison CompareRemovingFromTheFront() {
    const std::vector<void*> objects(kFrontCount, QVNullCreate());
    return {Times([objects] {
                void* array = MakeArray(objects);
                for (std::size_t i = 0; i < kFrontCount; ++i)
                    QVArrayRemoveObjectAtIndex(array, 0);
                Keep(array);
                QVRelease(array);
            }),
            Times([objects] {
                std::vector<void*> array;
                for (void* object : objects)
                    array.push_back(object);
                for (std::size_t i = 0; i < kFrontCount; ++i)
                    array.erase(array.begin());
                Keep(array);
            }),
            "std::vector<void*>", kFrontCount};
}

Comparison CompareSearching() {
    const std::vector<void*> objects = MakeObjects(1000);
    void* array = MakeArray(objects);
    void* last = objects.back();
    Require(QVArrayIndexOfObject(array, last) == 999, "found elsewhere");
    return {Times([=] { Keep(QVArrayIndexOfObject(array, last)); }),
            Times([objects, last] { Keep(std::find(objects.begin(), objects.end(), last)); }),
            "floor: std::find on pointers"};
}

// Keys as applications have them: a few words and a number, in no order.
std::vector<std::wstring> MakeKeys(std::size_t count) {
    std::vector<std::wstring> keys;
    for (std::size_t i = 0; i < count; ++i)
        keys.push_back(L"record." + std::to_wstring(i * 7919 % 1'000'003));
    std::shuffle(keys.begin(), keys.end(), std::mt19937(3));
    return keys;
}

int CompareKeys(const void* a, const void* b, void*) {
    return std::wcscmp(static_cast<const wchar_t*>(a), static_cast<const wchar_t*>(b));
}

GTree* NewTree() {
    return g_tree_new_full(CompareKeys, nullptr, std::free, nullptr);
}

void* BuildDictionary(const std::vector<std::wstring>& keys, void* value) {
    void* dictionary = QVDictionaryCreate();
    for (const auto& key : keys)
        QVDictionarySetObject(dictionary, value, key.c_str());
    return dictionary;
}

GTree* BuildTree(const std::vector<std::wstring>& keys, void* value) {
    GTree* tree = NewTree();
    for (const auto& key : keys)
        g_tree_insert(tree, wcsdup(key.c_str()), value);
    return tree;
}

constexpr const char* kTree = "GTree with wcscmp";

// What no table can do without: a pass over the key, then two dependent loads that the caches hold as little
// of as of ours, one from a table of twice as many places and one from a block as large as an entry.
Floor TwoLoadsEach(std::size_t count, std::shared_ptr<const std::vector<std::wstring>> keys) {
    struct Entry {
        std::uint64_t value;
        char rest[72];
    };
    struct Table {
        std::vector<Entry> entries;
        std::vector<std::array<std::uint64_t, 2>> places;  // of entries, as wide as a handle and a hash
    };
    const auto table = std::make_shared<Table>();
    table->entries.resize(count);
    table->places.resize(std::bit_ceil(count + count / 3));
    std::mt19937_64 random(5);
    for (auto& place : table->places)
        place = {random() % count, 0};
    return {"the key read, two dependent loads", Times([table, keys = std::move(keys)] {
                for (const auto& key : *keys) {
                    std::uint64_t hash = 0;
                    for (const wchar_t* at = key.c_str(); *at != L'\0'; ++at)
                        hash = (hash ^ static_cast<std::uint32_t>(*at)) * 0x9E3779B97F4A7C15U;
                    const std::size_t place = (hash >> 32) & (table->places.size() - 1);
                    Keep(table->entries[table->places[place][0]].value);
                }
            })};
}

Comparison CompareLookups(std::size_t count) {
    void* value = QVNullCreate();
    auto keys = MakeKeys(count);
    void* dictionary = BuildDictionary(keys, value);
    const std::shared_ptr<GTree> tree(BuildTree(keys, value), g_tree_unref);
    std::shuffle(keys.begin(), keys.end(), std::mt19937(4));
    keys.resize(std::min<std::size_t>(keys.size(), 100'000));
    for (const auto& key : keys)
        Require(QVDictionaryGetObject(dictionary, key.c_str()) == value, "key not found");
    const std::shared_ptr<void> owner(dictionary, QVRelease);
    const auto shared = std::make_shared<const std::vector<std::wstring>>(std::move(keys));
    return {Times([owner, shared] {
                for (const auto& key : *shared)
                    Keep(QVDictionaryGetObject(owner.get(), key.c_str()));
            }),
            Times([tree, shared] {
                for (const auto& key : *shared)
                    Keep(g_tree_lookup(tree.get(), key.c_str()));
            }),
            kTree,
            static_cast<double>(shared->size()),
            false,
            TwoLoadsEach(count, shared)};
}

Comparison CompareBuilding(std::size_t count) {
    void* value = QVNullCreate();
    const auto keys = std::make_shared<const std::vector<std::wstring>>(MakeKeys(count));
    void* built = BuildDictionary(*keys, value);
    Require(QVDictionaryCount(built) == count, "entries");
    QVRelease(built);
    return {Times([=] {
                void* dictionary = BuildDictionary(*keys, value);
                Keep(dictionary);
                QVRelease(dictionary);
            }),
            Times([=] {
                GTree* tree = BuildTree(*keys, value);
                Keep(tree);
                g_tree_unref(tree);
            }),
            kTree, static_cast<double>(count)};
}

Comparison CompareWalking(std::size_t count) {
    const auto keys = MakeKeys(count);
    void* value = QVNullCreate();
    const std::shared_ptr<void> dictionary(BuildDictionary(keys, value), QVRelease);
    const std::shared_ptr<GTree> tree(BuildTree(keys, value), g_tree_unref);
    void* checked = QVDictionaryObjectArray(dictionary.get());
    Require(QVArrayGetCount(checked) == count, "values");
    QVRelease(checked);
    return {Times([=] {
                void* values = QVDictionaryObjectArray(dictionary.get());
                for (std::size_t i = 0; i < count; ++i)
                    Keep(QVArrayGetObjectAtIndex(values, i));
                QVRelease(values);
            }),
            Times([=] {
                const auto visit = [](void*, void* element, void*) -> gboolean {
                    Keep(element);
                    return FALSE;
                };
                g_tree_foreach(tree.get(), visit, nullptr);
            }),
            "GTree", static_cast<double>(count)};
}

constexpr std::size_t kListCount = 1000;

// The peer's elements are counted as well.
GBytes* MakePeerElement() {
    return g_bytes_new_static("element", 7);
}

Comparison CompareListEnds() {
    void* element = QVNullCreate();
    void* checked = QVLinkedListCreate();
    QVLinkedListAddObject(checked, element);
    QVLinkedListRemoveFrontObject(checked);
    Require(QVLinkedListGetCount(checked) == 0 && QVGetRetainCount(element) == 1, "an element left behind");
    QVRelease(checked);
    return {Times([object = element] {
                void* list = QVLinkedListCreate();
                for (std::size_t i = 0; i < kListCount; ++i)
                    QVLinkedListAddObject(list, object);
                for (std::size_t i = 0; i < kListCount; ++i)
                    QVLinkedListRemoveFrontObject(list);
                QVRelease(list);
            }),
            Times([element = MakePeerElement()] {
                GQueue* queue = g_queue_new();
                for (std::size_t i = 0; i < kListCount; ++i)
                    g_queue_push_tail(queue, g_bytes_ref(element));
                for (std::size_t i = 0; i < kListCount; ++i) {
                    g_bytes_unref(static_cast<GBytes*>(g_queue_pop_head(queue)));
                }
                g_queue_free(queue);
            }),
            "GQueue + GBytes references", kListCount};
}

Comparison CompareListWalks() {
    const std::shared_ptr<void> list(QVLinkedListCreate(), QVRelease);
    const std::shared_ptr<GQueue> queue(g_queue_new(), g_queue_free);
    for (void* object : MakeObjects(kListCount)) {
        QVLinkedListAddObject(list.get(), object);
        g_queue_push_tail(queue.get(), object);
    }
    const std::shared_ptr<void> checked(QVLinkedListCreateObjectEnumerator(list.get()), QVRelease);
    for (const GList* node = queue->head; node != nullptr; node = node->next)
        Require(QVEnumeratorNextObject(checked.get()) == node->data, "another element");
    return {Times([list] {
                void* enumerator = QVLinkedListCreateObjectEnumerator(list.get());
                while (void* object = QVEnumeratorNextObject(enumerator))
                    Keep(object);
                QVRelease(enumerator);
            }),
            Times([queue] {
                const auto visit = [](void* object, void*) { Keep(object); };
                g_queue_foreach(queue.get(), visit, nullptr);
            }),
            "GQueue",
            kListCount,
            false,
            EmptyCalls(kListCount)};
}

}  // namespace

void AddCollectionsComparisons(Suite& suite) {
    suite.Add("array.add", CompareAdding);
    suite.Add("array.get", CompareGetting);
    suite.Add("array.insert_front_10000", CompareInsertingAtTheFront);
    suite.Add("array.remove_front_10000", CompareRemovingFromTheFront);
    suite.Add("array.index_of_1000", CompareSearching);
    for (const std::size_t count : {100, 1'000, 10'000, 100'000, 1'000'000}) {
        suite.Add("dictionary.get." + std::to_string(count), [=] { return CompareLookups(count); });
    }
    for (const std::size_t count : {100, 1'000, 10'000, 100'000, 1'000'000}) {
        suite.Add("dictionary.build." + std::to_string(count), [=] { return CompareBuilding(count); });
    }
    suite.Add("dictionary.walk.10000", [] { return CompareWalking(10'000); });
    suite.Add("dictionary.walk.1000000", [] { return CompareWalking(1'000'000); });
    suite.Add("list.add_remove", CompareListEnds);
    suite.Add("list.walk", CompareListWalks);
}

}  // namespace bench

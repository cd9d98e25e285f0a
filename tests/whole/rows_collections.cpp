// Arrays, linked lists, enumerators, dictionaries and trees.
#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVEnumerator.h>
#include <QVFoundation/QVLinkedList.h>
#include <QVFoundation/QVTree.h>

#include "support/strings.h"
#include "whole/row.h"

namespace qvtest {
namespace {

using qv::Owned;

constexpr const wchar_t* kKey = L"a key that is too long for a string's own room, so that it needs another";

// A full array: one more element needs room. Its elements are all the same object.
Owned FullArray(void* element) {
    Owned array{QVArrayCreateWithCapacity(4)};
    for (int i = 0; i < 4; ++i)
        QVArrayAddObject(array.Get(), element);
    return array;
}

Owned ListOf(void* element) {
    Owned list{QVLinkedListCreate()};
    QVLinkedListAddObject(list.Get(), element);
    QVLinkedListAddObject(list.Get(), element);
    return list;
}

Owned DictionaryOf(void* value) {
    Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), value, kKey);
    return dictionary;
}

Owned ParentOf(void* child) {
    Owned tree{QVTreeCreate()};
    QVTreeAddChild(tree.Get(), child);
    return tree;
}

// Something that needs no memory, done to a collection of one object: `isRight` tells whether it went well.
Row OnCollection(const char* name, Owned (*make)(void*), bool (*isRight)(void* collection, void* element),
                 bool (*isRightForNull)()) {
    return {name,
            [=](Attempt& attempt) {
                const Owned element{QVNullCreate()};
                const Owned collection = make(element.Get());
                attempt.NeedsNoMemory([&] { return isRight(collection.Get(), element.Get()); });
            },
            isRightForNull};
}

Row OnArray(const char* name, bool (*isRight)(void* array, void* element), bool (*isRightForNull)()) {
    return OnCollection(name, FullArray, isRight, isRightForNull);
}
Row OnList(const char* name, bool (*isRight)(void* list, void* element), bool (*isRightForNull)()) {
    return OnCollection(name, ListOf, isRight, isRightForNull);
}
Row OnDictionary(const char* name, bool (*isRight)(void* dictionary, void* value), bool (*isRightForNull)()) {
    return OnCollection(name, DictionaryOf, isRight, isRightForNull);
}

// The same for the parent of a tree without children.
Row OnTree(const char* name, bool (*isRight)(void* parent, void* child), bool (*isRightForNull)()) {
    return {name,
            [=](Attempt& attempt) {
                const Owned child{QVTreeCreate()};
                const Owned parent = ParentOf(child.Get());
                attempt.NeedsNoMemory([&] { return isRight(parent.Get(), child.Get()); });
            },
            isRightForNull};
}

// Adds to a full array; a failure keeps the reference taken.
Row AddsToArray(const char* name, const char* line, void (*add)(void* array, void* object),
                bool (*isRightForNull)()) {
    return {name,
            [=](Attempt& attempt) {
                const Owned element{QVNullCreate()};
                const Owned array = FullArray(element.Get());
                const Owned added{QVNullCreate()};
                attempt.Logs(line)
                    .Keeps(added.Get())
                    .Changes(
                        5U, 4U, [&] { add(array.Get(), added.Get()); },
                        [&] { return QVArrayGetCount(array.Get()); });
            },
            isRightForNull};
}

Rows ArrayRows() {
    return {
        {"QVArrayCreateWithCapacity",
         [](Attempt& attempt) {
             attempt.Logs("Couldn't allocate the instance of the QVArray. (capacity=300)").Creates([] {
                 return QVArrayCreateWithCapacity(300);
             });
         },
         TakesNoHandle},
        {"QVArrayCreateWithObjects",
         [](Attempt& attempt) {
             const Owned object{QVNullCreate()};
             void* const o = object.Get();
             attempt.Logs("Couldn't allocate the instance of the QVArray.").Creates([&] {
                 return QVArrayCreateWithObjects(o, nullptr, o, o, o, o, o, o, o, o);
             });
             EXPECT_EQ(QVGetRetainCount(o), 1U);
         },
         [] {
             const Owned array{QVArrayCreateWithObjects(nullptr)};
             return array && QVArrayGetCount(array.Get()) == 0;
         }},
        {"QVArrayCreateWithObject",
         [](Attempt& attempt) {
             const Owned object{QVNullCreate()};
             attempt.Logs("Couldn't allocate the instance of the QVArray.").Creates([&] {
                 return QVArrayCreateWithObject(object.Get());
             });
             EXPECT_EQ(QVGetRetainCount(object.Get()), 1U);
         },
         [] {
             const Owned array{QVArrayCreateWithObject(nullptr)};
             return array && QVArrayGetCount(array.Get()) == 0;
         }},
        OnArray(
            "QVArrayGetObjectAtIndex",
            [](void* array, void* element) { return QVArrayGetObjectAtIndex(array, 3) == element; },
            [] { return QVArrayGetObjectAtIndex(nullptr, 0) == nullptr; }),
        OnArray(
            "QVArrayGetLastObject",
            [](void* array, void* element) { return QVArrayGetLastObject(array) == element; },
            [] { return QVArrayGetLastObject(nullptr) == nullptr; }),
        OnArray(
            "QVArrayGetCount", [](void* array, void*) { return QVArrayGetCount(array) == 4; },
            [] { return QVArrayGetCount(nullptr) == 0; }),
        AddsToArray("QVArrayAddObject", "Failed adding the object into the array.", QVArrayAddObject,
                    [] {
                        const Owned object{QVNullCreate()};
                        const Owned array{QVArrayCreateWithCapacity(0)};
                        QVArrayAddObject(nullptr, nullptr);
                        QVArrayAddObject(nullptr, object.Get());
                        QVArrayAddObject(array.Get(), nullptr);
                        return QVArrayGetCount(array.Get()) == 0;
                    }),
        AddsToArray(
            "QVArrayInsertObjectAtIndex", "Failed inserting the object.",
            [](void* array, void* object) { QVArrayInsertObjectAtIndex(array, object, 1); },
            [] {
                const Owned object{QVNullCreate()};
                const Owned array{QVArrayCreateWithCapacity(0)};
                QVArrayInsertObjectAtIndex(nullptr, nullptr, 0);
                QVArrayInsertObjectAtIndex(nullptr, object.Get(), 0);
                QVArrayInsertObjectAtIndex(array.Get(), nullptr, 0);
                return QVArrayGetCount(array.Get()) == 1;  // a null element
            }),
        OnArray(
            "QVArrayRemoveObjectAtIndex",
            [](void* array, void*) {
                QVArrayRemoveObjectAtIndex(array, 1);
                return QVArrayGetCount(array) == 3;
            },
            [] {
                QVArrayRemoveObjectAtIndex(nullptr, 0);
                return true;
            }),
        OnArray(
            "QVArrayRemoveObject",
            [](void* array, void* element) {
                QVArrayRemoveObject(array, element);
                return QVArrayGetCount(array) == 3;
            },
            [] {
                const Owned object{QVNullCreate()};
                const Owned array{QVArrayCreateWithObject(object.Get())};
                QVArrayRemoveObject(nullptr, nullptr);
                QVArrayRemoveObject(nullptr, object.Get());
                QVArrayRemoveObject(array.Get(), nullptr);
                return QVArrayGetCount(array.Get()) == 1;
            }),
        OnArray(
            "QVArrayRemoveAllObjects",
            [](void* array, void*) {
                QVArrayRemoveAllObjects(array);
                return QVArrayGetCount(array) == 0;
            },
            [] {
                QVArrayRemoveAllObjects(nullptr);
                return true;
            }),
        {"QVArrayCreateObjectEnumerator",
         [](Attempt& attempt) {
             const Owned array{QVArrayCreateWithCapacity(0)};
             attempt.Logs("Couldn't allocate the instance of the QVEnumerator for the array.").Creates([&] {
                 return QVArrayCreateObjectEnumerator(array.Get());
             });
         },
         [] { return QVArrayCreateObjectEnumerator(nullptr) == nullptr; }},
        OnArray(
            "QVArraySetObjectAtIndex",
            [](void* array, void*) {
                QVArraySetObjectAtIndex(array, nullptr, 2);
                return QVArrayGetObjectAtIndex(array, 2) == nullptr;
            },
            [] {
                const Owned object{QVNullCreate()};
                QVArraySetObjectAtIndex(nullptr, nullptr, 0);
                QVArraySetObjectAtIndex(nullptr, object.Get(), 0);
                return true;
            }),
        OnArray(
            "QVArrayIndexOfObject",
            [](void* array, void* element) { return QVArrayIndexOfObject(array, element) == 0; },
            [] {
                const Owned object{QVNullCreate()};
                const Owned array{QVArrayCreateWithObject(object.Get())};
                return QVArrayIndexOfObject(nullptr, nullptr) == -1 &&
                       QVArrayIndexOfObject(nullptr, object.Get()) == -1 &&
                       QVArrayIndexOfObject(array.Get(), nullptr) == -1;
            }),
    };
}

Rows LinkedListRows() {
    return {
        {"QVLinkedListCreate",
         [](Attempt& attempt) {
             attempt.Logs("Couldn't allocate the instance of the QVLinkedList.").Creates(QVLinkedListCreate);
         },
         TakesNoHandle},
        OnList(
            "QVLinkedListGetCount", [](void* list, void*) { return QVLinkedListGetCount(list) == 2; },
            [] { return QVLinkedListGetCount(nullptr) == 0; }),
        OnList(
            "QVLinkedListGetFrontObject",
            [](void* list, void* element) { return QVLinkedListGetFrontObject(list) == element; },
            [] { return QVLinkedListGetFrontObject(nullptr) == nullptr; }),
        OnList(
            "QVLinkedListGetLastObject",
            [](void* list, void* element) { return QVLinkedListGetLastObject(list) == element; },
            [] { return QVLinkedListGetLastObject(nullptr) == nullptr; }),
        OnList(
            "QVLinkedListGetObjectAtIndex",
            [](void* list, void* element) { return QVLinkedListGetObjectAtIndex(list, 1) == element; },
            [] { return QVLinkedListGetObjectAtIndex(nullptr, 0) == nullptr; }),
        {"QVLinkedListAddObject",
         [](Attempt& attempt) {
             const Owned list{QVLinkedListCreate()};
             const Owned added{QVNullCreate()};
             attempt.Logs("Couldn't add the object into the list.")
                 .Keeps(added.Get())
                 .Changes(
                     1U, 0U, [&] { QVLinkedListAddObject(list.Get(), added.Get()); },
                     [&] { return QVLinkedListGetCount(list.Get()); });
         },
         [] {
             const Owned object{QVNullCreate()};
             const Owned list{QVLinkedListCreate()};
             QVLinkedListAddObject(nullptr, nullptr);
             QVLinkedListAddObject(nullptr, object.Get());
             QVLinkedListAddObject(list.Get(), nullptr);
             return QVLinkedListGetCount(list.Get()) == 0;
         }},
        OnList(
            "QVLinkedListRemoveFrontObject",
            [](void* list, void*) {
                QVLinkedListRemoveFrontObject(list);
                return QVLinkedListGetCount(list) == 1;
            },
            [] {
                QVLinkedListRemoveFrontObject(nullptr);
                return true;
            }),
        OnList(
            "QVLinkedListRemoveLastObject",
            [](void* list, void*) {
                QVLinkedListRemoveLastObject(list);
                return QVLinkedListGetCount(list) == 1;
            },
            [] {
                QVLinkedListRemoveLastObject(nullptr);
                return true;
            }),
        {"QVLinkedListCreateObjectEnumerator",
         [](Attempt& attempt) {
             const Owned list{QVLinkedListCreate()};
             attempt.Logs("Couldn't allocate the instance of the QVEnumerator for the linked list.")
                 .Creates([&] { return QVLinkedListCreateObjectEnumerator(list.Get()); });
         },
         [] { return QVLinkedListCreateObjectEnumerator(nullptr) == nullptr; }},
        OnList(
            "QVLinkedListIndexOfObject",
            [](void* list, void* element) { return QVLinkedListIndexOfObject(list, element) == 0; },
            [] {
                const Owned object{QVNullCreate()};
                const Owned list = ListOf(object.Get());
                return QVLinkedListIndexOfObject(nullptr, nullptr) == -1 &&
                       QVLinkedListIndexOfObject(nullptr, object.Get()) == -1 &&
                       QVLinkedListIndexOfObject(list.Get(), nullptr) == -1;
            }),
        OnCollection(
            "QVEnumeratorNextObject",
            [](void* element) { return Owned{QVLinkedListCreateObjectEnumerator(ListOf(element).Get())}; },
            [](void* enumerator, void* element) { return QVEnumeratorNextObject(enumerator) == element; },
            [] { return QVEnumeratorNextObject(nullptr) == nullptr; }),
        OnCollection(
            "QVEnumeratorReset",
            [](void* element) { return Owned{QVArrayCreateObjectEnumerator(FullArray(element).Get())}; },
            [](void* enumerator, void* element) {
                QVEnumeratorReset(enumerator);
                return QVEnumeratorNextObject(enumerator) == element;
            },
            [] {
                QVEnumeratorReset(nullptr);
                return true;
            }),
    };
}

Rows DictionaryRows() {
    return {
        {"QVDictionaryCreate",
         [](Attempt& attempt) {
             attempt.Logs("Could not allocate the dictionary.").Creates(QVDictionaryCreate);
         },
         TakesNoHandle},
        OnDictionary(
            "QVDictionaryGetObject",
            [](void* dictionary, void* value) { return QVDictionaryGetObject(dictionary, kKey) == value; },
            [] { return QVDictionaryGetObject(nullptr, L"a") == nullptr; }),
        OnDictionary(
            "QVDictionaryCount", [](void* dictionary, void*) { return QVDictionaryCount(dictionary) == 1; },
            [] { return QVDictionaryCount(nullptr) == 0; }),
        {"QVDictionarySetObject",
         [](Attempt& attempt) {
             const Owned dictionary{QVDictionaryCreate()};
             const Owned value{QVNullCreate()};
             attempt.Logs("The dictionary could not insert the value.")
                 .Changes(
                     1U, 0U, [&] { QVDictionarySetObject(dictionary.Get(), value.Get(), kKey); },
                     [&] { return QVDictionaryCount(dictionary.Get()); });
         },
         [] {
             const Owned value{QVNullCreate()};
             const Owned dictionary{QVDictionaryCreate()};
             QVDictionarySetObject(nullptr, nullptr, L"a");
             QVDictionarySetObject(nullptr, value.Get(), L"a");
             QVDictionarySetObject(dictionary.Get(), nullptr, L"a");
             return QVDictionaryCount(dictionary.Get()) == 0;
         }},
        {"QVDictionaryAddEntriesFromDictionary",
         [](Attempt& attempt) {
             const Owned value{QVNullCreate()};
             const Owned other = DictionaryOf(value.Get());
             const Owned dictionary{QVDictionaryCreate()};
             attempt.Logs("The dictionary could not insert the value.")
                 .OrNothing()
                 .Changes(
                     1U, 0U, [&] { QVDictionaryAddEntriesFromDictionary(dictionary.Get(), other.Get()); },
                     [&] { return QVDictionaryCount(dictionary.Get()); });
         },
         [] {
             const Owned dictionary{QVDictionaryCreate()};
             QVDictionaryAddEntriesFromDictionary(nullptr, nullptr);
             QVDictionaryAddEntriesFromDictionary(nullptr, dictionary.Get());
             QVDictionaryAddEntriesFromDictionary(dictionary.Get(), nullptr);
             return QVDictionaryCount(dictionary.Get()) == 0;
         }},
        {"QVDictionaryKeyArray",
         [](Attempt& attempt) {
             const Owned value{QVNullCreate()};
             const Owned dictionary = DictionaryOf(value.Get());
             attempt.OthersLog().Creates([&] { return QVDictionaryKeyArray(dictionary.Get()); });
         },
         [] { return QVDictionaryKeyArray(nullptr) == nullptr; }},
        {"QVDictionaryObjectArray",
         [](Attempt& attempt) {
             const Owned value{QVNullCreate()};
             const Owned dictionary = DictionaryOf(value.Get());
             attempt.OthersLog().Creates([&] { return QVDictionaryObjectArray(dictionary.Get()); });
         },
         [] { return QVDictionaryObjectArray(nullptr) == nullptr; }},
        OnDictionary(
            "QVDictionaryRemoveObject",
            [](void* dictionary, void*) {
                QVDictionaryRemoveObject(dictionary, kKey);
                return QVDictionaryCount(dictionary) == 0;
            },
            [] {
                QVDictionaryRemoveObject(nullptr, L"a");
                return true;
            }),
        OnDictionary(
            "QVDictionaryCreateData",
            [](void* dictionary, void*) { return QVDictionaryCreateData(dictionary) == nullptr; },
            [] { return QVDictionaryCreateData(nullptr) == nullptr; }),
    };
}

Rows TreeRows() {
    return {
        {"QVTreeCreate", [](Attempt& attempt) { attempt.OthersLog().Creates(QVTreeCreate); }, TakesNoHandle},
        OnTree(
            "QVTreeIsRoot",
            [](void* parent, void* child) { return QVTreeIsRoot(parent) == 1 && QVTreeIsRoot(child) == 0; },
            [] { return QVTreeIsRoot(nullptr) == 0; }),
        OnTree(
            "QVTreeIsLeaf",
            [](void* parent, void* child) { return QVTreeIsLeaf(parent) == 0 && QVTreeIsLeaf(child) == 1; },
            [] { return QVTreeIsLeaf(nullptr) == 0; }),
        OnTree(
            "QVTreeGetParent", [](void* parent, void* child) { return QVTreeGetParent(child) == parent; },
            [] { return QVTreeGetParent(nullptr) == nullptr; }),
        OnTree(
            "QVTreeGetChildren",
            [](void* parent, void*) { return QVArrayGetCount(QVTreeGetChildren(parent)) == 1; },
            [] { return QVTreeGetChildren(nullptr) == nullptr; }),
        OnTree(
            "QVTreeGetContext", [](void* parent, void*) { return QVTreeGetContext(parent) == nullptr; },
            [] { return QVTreeGetContext(nullptr) == nullptr; }),
        {"QVTreeAddChild",
         [](Attempt& attempt) {
             const Owned child{QVTreeCreate()};
             const Owned parent{QVTreeCreate()};
             attempt.Logs("Failed adding the object into the array.")
                 .Keeps(child.Get())
                 .Changes(
                     1U, 0U, [&] { QVTreeAddChild(parent.Get(), child.Get()); },
                     [&] { return QVArrayGetCount(QVTreeGetChildren(parent.Get())); });
         },
         [] {
             const Owned tree{QVTreeCreate()};
             QVTreeAddChild(nullptr, nullptr);
             QVTreeAddChild(nullptr, tree.Get());
             QVTreeAddChild(tree.Get(), nullptr);
             return QVTreeIsLeaf(tree.Get()) == 1;
         }},
        {"QVTreeAddChildren",
         [](Attempt& attempt) {
             const Owned child{QVTreeCreate()};
             const Owned children{QVArrayCreateWithObject(child.Get())};
             const Owned parent{QVTreeCreate()};
             attempt.Logs("Failed adding the object into the array.")
                 .Keeps(child.Get())
                 .Changes(
                     1U, 0U, [&] { QVTreeAddChildren(parent.Get(), children.Get()); },
                     [&] { return QVArrayGetCount(QVTreeGetChildren(parent.Get())); });
         },
         [] {
             const Owned tree{QVTreeCreate()};
             const Owned array{QVArrayCreateWithObject(tree.Get())};
             QVTreeAddChildren(nullptr, nullptr);
             QVTreeAddChildren(nullptr, array.Get());
             QVTreeAddChildren(tree.Get(), nullptr);
             return QVTreeIsLeaf(tree.Get()) == 1;
         }},
        OnTree(
            "QVTreeRemoveChild",
            [](void* parent, void*) {
                QVTreeRemoveChild(parent, 0);
                return QVTreeIsLeaf(parent) == 1;
            },
            [] {
                QVTreeRemoveChild(nullptr, 0);
                return true;
            }),
        OnTree(
            "QVTreeRemoveChildren",
            [](void* parent, void*) {
                QVTreeRemoveChildren(parent);
                return QVTreeIsLeaf(parent) == 1;
            },
            [] {
                QVTreeRemoveChildren(nullptr);
                return true;
            }),
        OnTree(
            "QVTreeSetContext",
            [](void* parent, void*) {
                const void* const front = QVTreeGetChildren(parent);
                QVTreeSetContext(parent, QVTreeGetChildren(parent));
                const bool isSet = QVTreeGetContext(parent) == front;
                QVTreeSetContext(parent, nullptr);
                return isSet && QVTreeGetContext(parent) == nullptr;
            },
            [] {
                const Owned object{QVNullCreate()};
                QVTreeSetContext(nullptr, nullptr);
                QVTreeSetContext(nullptr, object.Get());
                return true;
            }),
    };
}

}  // namespace

Rows CollectionRows() {
    return Joined({ArrayRows(), LinkedListRows(), DictionaryRows(), TreeRows()});
}

}  // namespace qvtest

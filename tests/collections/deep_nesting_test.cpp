// Collections nested so deeply that releasing them level by level on the stack would overflow it a hundred
// times.
#include <gtest/gtest.h>
#include <pthread.h>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVLinkedList.h>
#include <QVFoundation/QVTree.h>

#include "runtime/Owned.h"
#include "support/failing_allocator.h"

namespace {

constexpr int kLevels = 200000;
constexpr std::size_t kStackSize = 256 * 1024;

void* RunBody(void* body) {
    reinterpret_cast<void (*)()>(body)();
    return nullptr;
}

// Runs the body on a thread with a small stack; answers how many blocks it left behind.
std::size_t LeftBehindOnSmallStack(void (*body)()) {
    const std::size_t before = qvtest::LiveAllocations();
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstacksize(&attributes, kStackSize), 0);
    pthread_t thread;
    EXPECT_EQ(pthread_create(&thread, &attributes, RunBody, reinterpret_cast<void*>(body)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return qvtest::LiveAllocations() - before;
}

// Wraps a collection in another one, level by level, and releases the outermost.
template <class Wrap>
void NestAndRelease(void* innermost, Wrap wrap) {
    void* outer = innermost;
    for (int level = 0; level < kLevels; ++level) {
        void* wrapped = wrap(outer);
        QVRelease(outer);
        outer = wrapped;
    }
    QVRelease(outer);
}

void* InArray(void* inner) {
    return QVArrayCreateWithObject(inner);
}

void* InList(void* inner) {
    void* list = QVLinkedListCreate();
    QVLinkedListAddObject(list, inner);
    return list;
}

void* InDictionary(void* inner) {
    void* dictionary = QVDictionaryCreate();
    QVDictionarySetObject(dictionary, inner, L"inner");
    return dictionary;
}

void* InTree(void* inner) {
    void* node = QVTreeCreate();
    QVTreeAddChild(node, inner);
    return node;
}

void* InContext(void* inner) {
    void* node = QVTreeCreate();
    QVTreeSetContext(node, inner);
    return node;
}

TEST(DeepNesting, OfArraysIsReleasedOnASmallStack) {
    EXPECT_EQ(LeftBehindOnSmallStack([] { NestAndRelease(QVNullCreate(), InArray); }), 0U);
}

TEST(DeepNesting, OfListsIsReleasedOnASmallStack) {
    EXPECT_EQ(LeftBehindOnSmallStack([] { NestAndRelease(QVNullCreate(), InList); }), 0U);
}

TEST(DeepNesting, OfDictionariesIsReleasedOnASmallStack) {
    EXPECT_EQ(LeftBehindOnSmallStack([] { NestAndRelease(QVNullCreate(), InDictionary); }), 0U);
}

TEST(DeepNesting, OfTreeNodesIsReleasedOnASmallStack) {
    EXPECT_EQ(LeftBehindOnSmallStack([] { NestAndRelease(QVTreeCreate(), InTree); }), 0U);
    EXPECT_EQ(LeftBehindOnSmallStack([] { NestAndRelease(QVTreeCreate(), InContext); }), 0U);
}

// A node far down that outlives the rest knows no parent afterwards, although its parent was destroyed last
// of all.
TEST(DeepNesting, ASurvivorForgetsItsParent) {
    EXPECT_EQ(LeftBehindOnSmallStack([] {
                  void* survivor = QVTreeCreate();
                  NestAndRelease(QVRetain(survivor), InTree);
                  EXPECT_EQ(QVTreeGetParent(survivor), nullptr);
                  EXPECT_EQ(QVGetRetainCount(survivor), 1UL);
                  QVRelease(survivor);
              }),
              0U);
}

}  // namespace

#include "collections/handle_list.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <optional>
#include <random>
#include <vector>

#include "support/failing_allocator.h"

namespace {

using qv::HandleList;

void* HandleNumber(std::size_t number) {
    return reinterpret_cast<void*>(number);
}

// The plain model: a vector, and cursors that are indices. Removing an element in front of a cursor moves it
// down.
class ModelledList {
public:
    static constexpr std::size_t kEnd = SIZE_MAX;

    void Append() {
        list_.Append(HandleNumber(next_));
        model_.push_back(HandleNumber(next_++));
    }
    void RemoveAt(std::size_t index) {
        HandleList::Node* node = list_.Front();
        for (std::size_t i = 0; i < index; ++i)
            node = node->next;
        ASSERT_EQ(list_.Remove(node), model_[index]);
        model_.erase(model_.begin() + static_cast<std::ptrdiff_t>(index));
        for (ModelledCursor& cursor : cursors_) {
            if (cursor.index != kEnd && cursor.index > index) --cursor.index;
            if (cursor.index == model_.size()) cursor.index = kEnd;
        }
    }
    void Step(std::size_t which) {
        ModelledCursor& cursor = cursors_[which];
        void* expected = cursor.index == kEnd ? nullptr : model_[cursor.index];
        ASSERT_EQ(cursor.real->Next(), expected);
        if (cursor.index != kEnd && ++cursor.index == model_.size()) cursor.index = kEnd;
    }
    void Reset(std::size_t which) {
        cursors_[which].real->Reset();
        cursors_[which].index = model_.empty() ? kEnd : 0;
    }
    // A new cursor in the place of an old one, so that the list's own record of them is exercised.
    void Renew(std::size_t which) {
        cursors_[which].real.emplace(list_);
        cursors_[which].index = model_.empty() ? kEnd : 0;
    }
    void Check() {
        const HandleList::Node* node = list_.Front();
        for (void* handle : model_) {
            ASSERT_EQ(node->handle, handle);
            node = node->next;
        }
        ASSERT_EQ(node, list_.End());
        for (std::size_t i = model_.size(); i-- > 0;) {
            node = node->previous;
            ASSERT_EQ(node->handle, model_[i]);
        }
    }

    [[nodiscard]] std::size_t Count() const { return model_.size(); }
    static constexpr std::size_t kCursorCount = 6;

private:
    struct ModelledCursor {
        std::optional<HandleList::Cursor> real;
        std::size_t index = kEnd;
    };

    HandleList list_;
    std::vector<void*> model_;
    std::array<ModelledCursor, kCursorCount> cursors_;
    std::size_t next_ = 1;

public:
    ModelledList() {
        for (std::size_t i = 0; i < kCursorCount; ++i)
            Renew(i);
    }
};

TEST(HandleList, ListAndCursorsDoWhatAVectorWithIndicesDoes) {
    constexpr unsigned kSeed = 3404;
    std::mt19937 random(kSeed);
    ModelledList list;
    for (int step = 0; step < 120000; ++step) {
        const std::size_t which = random() % ModelledList::kCursorCount;
        const std::size_t count = list.Count();
        const std::size_t growth = step % 4000 < 2000 ? 6 : 4;
        const std::size_t choice = random() % 16;
        ASSERT_NO_FATAL_FAILURE({
            if (choice < growth) {
                list.Append();
            } else if (choice < 10) {
                const std::size_t at = choice == 8 ? 0 : choice == 9 ? count - 1 : random() % (count + 1);
                if (at < count) list.RemoveAt(at);
            } else if (choice < 14) {
                list.Step(which);
            } else if (choice == 14) {
                list.Reset(which);
            } else {
                list.Renew(which);
            }
        }) << "seed "
           << kSeed << " step " << step;
        if (step % 199 == 0) {
            ASSERT_NO_FATAL_FAILURE(list.Check()) << "seed " << kSeed << " step " << step;
        }
    }
    while (list.Count() > 0)
        list.RemoveAt(list.Count() / 2);
    list.Check();
}

TEST(HandleList, AFailedAdditionChangesNothing) {
    HandleList list;
    for (std::size_t i = 1; i <= 7; ++i)
        list.Append(HandleNumber(i));
    {
        const qvtest::FailAllocation failing(0, true);
        EXPECT_THROW(list.Append(HandleNumber(8)), std::bad_alloc);
        EXPECT_EQ(list.Back()->handle, HandleNumber(7));
        list.Remove(list.Front());
        list.Append(HandleNumber(9));  // takes the free node
    }
    EXPECT_EQ(list.Back()->handle, HandleNumber(9));
    list.Append(HandleNumber(10));
    EXPECT_EQ(list.Back()->handle, HandleNumber(10));
}

TEST(HandleList, GivesMemoryBackWhenItIsEmptied) {
    HandleList list;
    list.Append(HandleNumber(1));
    for (std::size_t i = 2; i < 100000; ++i)
        list.Append(HandleNumber(i));
    const std::size_t full = qvtest::LiveAllocations();
    while (!list.IsEmpty())
        list.Remove(list.Front());
    EXPECT_LT(qvtest::LiveAllocations() + 500, full);
    const std::size_t before = qvtest::AllocatedBytes();
    for (std::size_t i = 1; i < 100; ++i)
        list.Append(HandleNumber(i));
    EXPECT_EQ(qvtest::AllocatedBytes(), before);
}

TEST(HandleList, AQueueReusesItsNodes) {
    HandleList list;
    for (std::size_t i = 1; i <= 10; ++i)
        list.Append(HandleNumber(i));
    const std::size_t before = qvtest::AllocatedBytes();
    for (std::size_t i = 11; i < 100000; ++i) {
        ASSERT_EQ(list.Remove(list.Front()), HandleNumber(i - 10));
        list.Append(HandleNumber(i));
    }
    EXPECT_EQ(qvtest::AllocatedBytes(), before);
}

}  // namespace

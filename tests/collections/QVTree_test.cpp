#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVTree.h>

#include "collections/QVTreeImpl.h"
#include "collections/probes.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;
using qvtest::CreateProbe;
using qvtest::Objects;
using Messages = std::vector<std::string>;
using Handles = std::vector<void*>;

Handles ChildrenOf(void* node) {
    void* array = QVTreeGetChildren(node);
    Handles children;
    for (unsigned long i = 0; i < QVArrayGetCount(array); ++i)
        children.push_back(QVArrayGetObjectAtIndex(array, i));
    return children;
}

TEST(Tree, ANewNodeIsARootAndALeaf) {
    const Owned node{QVTreeCreate()};
    EXPECT_EQ(QVGetTypeID(node.Get()), 16);
    EXPECT_EQ(QVGetRetainCount(node.Get()), 1UL);
    EXPECT_EQ(QVTreeIsRoot(node.Get()), 1);
    EXPECT_EQ(QVTreeIsLeaf(node.Get()), 1);
    EXPECT_EQ(QVTreeGetParent(node.Get()), nullptr);
    EXPECT_EQ(QVTreeGetContext(node.Get()), nullptr);
    EXPECT_TRUE(ChildrenOf(node.Get()).empty());
    EXPECT_EQ(QVGetRetainCount(QVTreeGetChildren(node.Get())), 1UL);
    EXPECT_EQ(QVGetNSObject(node.Get()), nullptr);
    EXPECT_EQ(QVCreateCFObject(node.Get()), nullptr);
}

TEST(Tree, AParentHoldsItsChildAndTheChildKnowsIt) {
    const Owned child{QVTreeCreate()};
    {
        const Owned parent{QVTreeCreate()};
        QVTreeAddChild(parent.Get(), child.Get());
        EXPECT_EQ(QVTreeIsLeaf(parent.Get()), 0);
        EXPECT_EQ(QVTreeIsRoot(parent.Get()), 1);
        EXPECT_EQ(QVTreeIsRoot(child.Get()), 0);
        EXPECT_EQ(QVTreeIsLeaf(child.Get()), 1);
        EXPECT_EQ(QVTreeGetParent(child.Get()), parent.Get());
        EXPECT_EQ(ChildrenOf(parent.Get()), Handles{child.Get()});
        EXPECT_EQ(QVGetRetainCount(child.Get()), 2UL);
        EXPECT_EQ(QVGetRetainCount(parent.Get()), 1UL);
    }
    EXPECT_EQ(QVGetRetainCount(child.Get()), 1UL);
}

TEST(Tree, TheParentReadsNullOnceItIsGone) {
    const Owned child{QVTreeCreate()};
    const Owned removed{QVTreeCreate()};
    Owned parent{QVTreeCreate()};
    QVTreeAddChild(parent.Get(), child.Get());
    QVTreeAddChild(parent.Get(), removed.Get());
    QVTreeRemoveChild(parent.Get(), 1);
    EXPECT_EQ(QVTreeGetParent(removed.Get()), parent.Get());  // a removed child keeps knowing it
    parent.Reset();
    EXPECT_EQ(QVTreeGetParent(child.Get()), nullptr);
    EXPECT_EQ(QVTreeGetParent(removed.Get()), nullptr);
    EXPECT_EQ(QVTreeIsRoot(child.Get()), 1);
}

TEST(Tree, AddingNullIsRefusedAndLogged) {
    const Owned node{QVTreeCreate()};
    const qvtest::LogCapture log;
    QVTreeAddChild(node.Get(), nullptr);
    EXPECT_EQ(QVTreeIsLeaf(node.Get()), 1);
    EXPECT_EQ(log.Messages(), Messages{"Couldn't add the child tree, because the child is a NULL."});
}

TEST(Tree, AChildOfTwoParentsStandsInBothAndKnowsTheLatest) {
    const Owned child{QVTreeCreate()};
    Owned first{QVTreeCreate()};
    Owned second{QVTreeCreate()};
    QVTreeAddChild(first.Get(), child.Get());
    QVTreeAddChild(second.Get(), child.Get());
    EXPECT_EQ(ChildrenOf(first.Get()), Handles{child.Get()});
    EXPECT_EQ(ChildrenOf(second.Get()), Handles{child.Get()});
    EXPECT_EQ(QVGetRetainCount(child.Get()), 3UL);
    EXPECT_EQ(QVTreeGetParent(child.Get()), second.Get());
    first.Reset();
    EXPECT_EQ(QVTreeGetParent(child.Get()), second.Get());
    second.Reset();
    EXPECT_EQ(QVTreeGetParent(child.Get()), nullptr);
    EXPECT_EQ(QVGetRetainCount(child.Get()), 1UL);
}

TEST(Tree, AChildAddedTwiceStandsTwice) {
    const Owned node{QVTreeCreate()};
    const Owned child{QVTreeCreate()};
    QVTreeAddChild(node.Get(), child.Get());
    QVTreeAddChild(node.Get(), child.Get());
    EXPECT_EQ(ChildrenOf(node.Get()), (Handles{child.Get(), child.Get()}));
    EXPECT_EQ(QVGetRetainCount(child.Get()), 3UL);
}

TEST(Tree, ANodeMayBeItsOwnChild) {
    Owned node{QVTreeCreate()};
    void* handle = node.Get();
    QVTreeAddChild(handle, handle);
    EXPECT_EQ(QVTreeGetParent(handle), handle);
    EXPECT_EQ(QVGetRetainCount(handle), 2UL);
    node.Reset();
    EXPECT_EQ(QVGetRetainCount(handle), 1UL);  // it holds itself now
    const std::size_t before = qvtest::LiveAllocations();
    QVTreeRemoveChildren(handle);
    EXPECT_LT(qvtest::LiveAllocations(), before);
}

TEST(TreeChildren, AreAddedInTheOrderOfTheArray) {
    const Owned node{QVTreeCreate()};
    const Owned array{QVArrayCreateWithCapacity(3)};
    for (int i = 0; i < 3; ++i)
        QVArrayAddObject(array.Get(), Owned{QVTreeCreate()}.Get());
    QVTreeAddChildren(node.Get(), array.Get());
    const Handles children = ChildrenOf(node.Get());
    ASSERT_EQ(children.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(children[i], QVArrayGetObjectAtIndex(array.Get(), i));
        EXPECT_EQ(QVTreeGetParent(children[i]), node.Get());
        EXPECT_EQ(QVGetRetainCount(children[i]), 2UL);
    }
}

TEST(TreeChildren, OfAnArrayEndAtItsFirstNull) {
    const Owned node{QVTreeCreate()};
    const Owned first{QVTreeCreate()};
    const Owned second{QVTreeCreate()};
    const Owned array{QVArrayCreateWithCapacity(3)};
    QVArrayInsertObjectAtIndex(array.Get(), first.Get(), 0);
    QVArrayInsertObjectAtIndex(array.Get(), nullptr, 1);
    QVArrayInsertObjectAtIndex(array.Get(), second.Get(), 2);
    const qvtest::LogCapture log;
    QVTreeAddChildren(node.Get(), array.Get());
    EXPECT_EQ(ChildrenOf(node.Get()), Handles{first.Get()});
    EXPECT_TRUE(log.Messages().empty());
}

TEST(TreeChildren, LeaveOutWhatIsNoNode) {
    const Objects o;
    const Owned node{QVTreeCreate()};
    const Owned child{QVTreeCreate()};
    const Owned array{QVArrayCreateWithCapacity(2)};
    QVArrayAddObject(array.Get(), o[0]);
    QVArrayAddObject(array.Get(), child.Get());
    QVTreeAddChildren(node.Get(), array.Get());
    EXPECT_EQ(ChildrenOf(node.Get()), Handles{child.Get()});
    EXPECT_EQ(QVGetRetainCount(o[0]), 2UL);
}

TEST(TreeChildren, MayBeAddedToThemselves) {
    const Owned node{QVTreeCreate()};
    const Owned child{QVTreeCreate()};
    QVTreeAddChild(node.Get(), child.Get());
    QVTreeAddChildren(node.Get(), QVTreeGetChildren(node.Get()));
    EXPECT_EQ(ChildrenOf(node.Get()), (Handles{child.Get(), child.Get()}));
}

TEST(TreeChildren, AreRemovedByIndex) {
    const Owned node{QVTreeCreate()};
    const Owned first{QVTreeCreate()};
    const Owned second{QVTreeCreate()};
    QVTreeAddChild(node.Get(), first.Get());
    QVTreeAddChild(node.Get(), second.Get());
    const qvtest::LogCapture log;
    QVTreeRemoveChild(node.Get(), 5);
    QVTreeRemoveChild(node.Get(), 2);
    EXPECT_EQ(log.Messages(), (Messages{"The index(5) is out of range.", "The index(2) is out of range."}));
    QVTreeRemoveChild(node.Get(), 0);
    EXPECT_EQ(ChildrenOf(node.Get()), Handles{second.Get()});
    EXPECT_EQ(QVGetRetainCount(first.Get()), 1UL);
    EXPECT_EQ(QVTreeGetParent(first.Get()), node.Get());
}

TEST(TreeChildren, AreRemovedAltogether) {
    const Owned node{QVTreeCreate()};
    const Owned child{QVTreeCreate()};
    QVTreeAddChild(node.Get(), child.Get());
    QVTreeAddChild(node.Get(), Owned{QVTreeCreate()}.Get());
    QVTreeRemoveChildren(node.Get());
    EXPECT_EQ(QVTreeIsLeaf(node.Get()), 1);
    EXPECT_EQ(QVGetRetainCount(child.Get()), 1UL);
    EXPECT_EQ(QVTreeGetParent(child.Get()), node.Get());
}

TEST(TreeContext, IsHeldUntilItIsReplaced) {
    const Objects o;
    {
        const Owned node{QVTreeCreate()};
        QVTreeSetContext(node.Get(), o[0]);
        QVTreeSetContext(node.Get(), o[0]);
        EXPECT_EQ(QVTreeGetContext(node.Get()), o[0]);
        EXPECT_EQ(QVGetRetainCount(o[0]), 2UL);
        QVTreeSetContext(node.Get(), o[1]);
        EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
        EXPECT_EQ(QVGetRetainCount(o[1]), 2UL);
        QVTreeSetContext(node.Get(), nullptr);
        EXPECT_EQ(QVTreeGetContext(node.Get()), nullptr);
        EXPECT_EQ(QVGetRetainCount(o[1]), 1UL);
        QVTreeSetContext(node.Get(), o[2]);
    }
    EXPECT_EQ(QVGetRetainCount(o[2]), 1UL);
}

TEST(TreeContext, MayHoldTheNodeThatItLeaves) {
    Owned node{QVTreeCreate()};
    void* handle = node.Get();
    {
        const Owned keeper{QVArrayCreateWithObject(handle)};
        QVTreeSetContext(handle, keeper.Get());
    }
    node.Reset();  // now only its context holds the node
    const std::size_t before = qvtest::LiveAllocations();
    QVTreeSetContext(handle, nullptr);
    EXPECT_LT(qvtest::LiveAllocations(), before);
}

TEST(Tree, DestructionReleasesTheChildrenThenTheContext) {
    std::vector<int> deaths;
    Owned node{QVTreeCreate()};
    QVTreeSetContext(node.Get(), Owned{CreateProbe(9, &deaths)}.Get());
    for (int i = 0; i < 3; ++i) {
        const Owned child{QVTreeCreate()};
        QVTreeSetContext(child.Get(), Owned{CreateProbe(i, &deaths)}.Get());
        QVTreeAddChild(node.Get(), child.Get());
    }
    node.Reset();
    EXPECT_EQ(deaths, (std::vector<int>{0, 1, 2, 9}));
}

// The class is meant to be derived from; whatever derives from it counts as a tree.
class DerivedNode final : public QVTreeImpl {};

TEST(Tree, DerivedNodesMixWithPlainOnes) {
    const Owned plain{QVTreeCreate()};
    const Owned derived{qv::ToHandle(new DerivedNode)};
    EXPECT_EQ(QVGetTypeID(derived.Get()), 16);
    QVTreeAddChild(plain.Get(), derived.Get());
    const Owned leaf{QVTreeCreate()};
    QVTreeAddChildren(derived.Get(), Owned{QVArrayCreateWithObject(leaf.Get())}.Get());
    EXPECT_EQ(QVTreeGetParent(derived.Get()), plain.Get());
    EXPECT_EQ(QVTreeGetParent(leaf.Get()), derived.Get());
}

TEST(Tree, NullHandlesDoNothingAndLogNothing) {
    const Objects o;
    const qvtest::LogCapture log;
    EXPECT_EQ(QVTreeIsRoot(nullptr), 0);
    EXPECT_EQ(QVTreeIsLeaf(nullptr), 0);
    EXPECT_EQ(QVTreeGetParent(nullptr), nullptr);
    EXPECT_EQ(QVTreeGetChildren(nullptr), nullptr);
    EXPECT_EQ(QVTreeGetContext(nullptr), nullptr);
    QVTreeAddChild(nullptr, nullptr);
    QVTreeAddChildren(nullptr, nullptr);
    QVTreeRemoveChild(nullptr, 0);
    QVTreeRemoveChildren(nullptr);
    QVTreeSetContext(nullptr, o[0]);
    const Owned node{QVTreeCreate()};
    QVTreeAddChildren(node.Get(), nullptr);
    EXPECT_EQ(QVTreeIsLeaf(node.Get()), 1);
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_TRUE(log.Messages().empty());
}

// ---- Memory runs out ----

TEST(TreeWithoutMemory, CreationGivesNullAndLogsNothing) {
    const qvtest::LogCapture log;
    std::size_t nulls = 0;
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([&nulls] {
        const Owned node{QVTreeCreate()};
        if (!node) ++nulls;
    });
    EXPECT_EQ(qvtest::LiveAllocations(), before);
    EXPECT_EQ(failures, 2U);
    EXPECT_EQ(nulls, 2U);
    EXPECT_TRUE(log.Messages().empty());
}

TEST(TreeWithoutMemory, AChildThatFindsNoRoomKnowsTheParentAndKeepsTheReferenceTaken) {
    const Owned node{QVTreeCreate()};
    const Owned child{QVTreeCreate()};
    const qvtest::LogCapture log;
    {
        const qvtest::FailAllocation failing(0, true);
        QVTreeAddChild(node.Get(), child.Get());
    }
    EXPECT_EQ(log.Messages(), Messages{"Failed adding the object into the array."});
    EXPECT_EQ(QVTreeIsLeaf(node.Get()), 1);
    EXPECT_EQ(QVTreeGetParent(child.Get()), node.Get());
    EXPECT_EQ(QVGetRetainCount(child.Get()), 2UL);
    QVRelease(child.Get());
}

// ---- Everything together ----

// Nodes are added, removed, given up and made again at random; the model keeps, for each, whom it was last
// added to and its children.
class ForestModel {
public:
    explicit ForestModel(unsigned seed) : random_(seed) {
        for (Node& node : nodes_)
            node.handle.Reset(QVTreeCreate());
    }

    void Step() {
        const std::size_t parent = Below(kCount);
        const std::size_t child = Below(kCount);
        switch (Below(10)) {
            default:
                // Only downward, so that nothing becomes its own descendant and stays for ever.
                if (parent >= child) break;
                QVTreeAddChild(nodes_[parent].handle.Get(), nodes_[child].handle.Get());
                nodes_[parent].children.push_back(nodes_[child].handle.Get());
                nodes_[child].parent = nodes_[parent].handle.Get();
                break;
            case 6:
            case 7:
                if (nodes_[parent].children.empty()) break;
                RemoveChild(nodes_[parent], Below(nodes_[parent].children.size()));
                break;
            case 8:
                QVTreeRemoveChildren(nodes_[parent].handle.Get());
                nodes_[parent].children.clear();
                break;
            case 9:
                Renew(nodes_[child]);
                break;
        }
    }

    void Check() {
        for (const Node& node : nodes_) {
            void* handle = node.handle.Get();
            ASSERT_EQ(QVTreeGetParent(handle), node.parent);
            ASSERT_EQ(QVTreeIsRoot(handle), node.parent == nullptr);
            ASSERT_EQ(ChildrenOf(handle), node.children);
            unsigned long held = 1;
            for (const Node& other : nodes_) {
                held += static_cast<unsigned long>(
                    std::count(other.children.begin(), other.children.end(), handle));
            }
            ASSERT_EQ(QVGetRetainCount(handle), held);
        }
    }

private:
    static constexpr std::size_t kCount = 12;

    struct Node {
        Owned handle;
        void* parent = nullptr;
        Handles children;
    };

    std::size_t Below(std::size_t limit) { return random_() % limit; }

    static void RemoveChild(Node& node, std::size_t index) {
        QVTreeRemoveChild(node.handle.Get(), index);
        node.children.erase(node.children.begin() + static_cast<std::ptrdiff_t>(index));
    }

    // Takes the node out of all children, gives it up, which destroys it, and makes a new one.
    void Renew(Node& node) {
        void* old = node.handle.Get();
        for (Node& other : nodes_) {
            for (std::size_t i = other.children.size(); i-- > 0;) {
                if (other.children[i] == old) RemoveChild(other, i);
            }
        }
        node.handle.Reset(QVTreeCreate());
        node.children.clear();
        node.parent = nullptr;
        for (Node& other : nodes_) {
            if (other.parent == old) other.parent = nullptr;
        }
    }

    std::mt19937 random_;
    Node nodes_[kCount];
};

TEST(Tree, BehavesAsAModelOfNodesWithWeakParents) {
    constexpr unsigned kSeed = 3606;
    ForestModel forest(kSeed);
    for (int step = 0; step < 100000; ++step) {
        forest.Step();
        if (step % 53 == 0) {
            ASSERT_NO_FATAL_FAILURE(forest.Check()) << "seed " << kSeed << " step " << step;
        }
    }
}

}  // namespace

#include <gtest/gtest.h>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVPlatformObject.h>

#include "support/strings.h"

namespace {

using qv::Owned;

TEST(PlatformObjects, ThisBuildHasNone) {
    const Owned string = qvtest::MakeString(L"a");
    const Owned data{QVDataCreate("a", 1)};
    const Owned array{QVArrayCreateWithCapacity(0)};
    for (void* object : {string.Get(), data.Get(), array.Get(), static_cast<void*>(nullptr)}) {
        EXPECT_EQ(QVGetNSObject(object), nullptr);
        EXPECT_EQ(QVCreateCFObject(object), nullptr);
        EXPECT_EQ(QVCreateNSObjectFromString(object), nullptr);
        EXPECT_EQ(QVCreateNSObjectFromNumber(object, 0), nullptr);
        EXPECT_EQ(QVCreateNSObjectFromData(object), nullptr);
        EXPECT_EQ(QVCreateNSObjectFromArray(object), nullptr);
        EXPECT_EQ(QVCreateNSObjectFromLinkedList(object), nullptr);
        EXPECT_EQ(QVStringCreateWithNSString(object), nullptr);
        EXPECT_EQ(QVStringFromNSString(object), nullptr);
        EXPECT_EQ(QVStringCreateWithCFString(object), nullptr);
        EXPECT_EQ(QVStringCreateCFString(object), nullptr);
    }
    EXPECT_EQ(QVGetRetainCount(string.Get()), 1U);
}

}  // namespace

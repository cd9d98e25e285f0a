#include "base/path_text.h"

#include <gtest/gtest.h>

namespace {

TEST(PathText, TheDirectoryKeepsItsSeparator) {
    EXPECT_EQ(qv::DirectoryOfPath(L"/a/b"), L"/a/");
    EXPECT_EQ(qv::DirectoryOfPath(L"a/b/"), L"a/b/");
    EXPECT_EQ(qv::DirectoryOfPath(L"/"), L"/");
    EXPECT_EQ(qv::DirectoryOfPath(L"name"), L"");
    EXPECT_EQ(qv::DirectoryOfPath(L""), L"");
}

TEST(PathText, OneTrailingSeparatorDoesNotCountForTheLastComponent) {
    EXPECT_EQ(qv::LastPathComponent(L"/usr/lib"), L"lib");
    EXPECT_EQ(qv::LastPathComponent(L"a/b/"), L"b");
    EXPECT_EQ(qv::LastPathComponent(L"a//"), L"");
    EXPECT_EQ(qv::LastPathComponent(L"abc"), L"abc");
    EXPECT_EQ(qv::LastPathComponent(L"/"), L"");
    EXPECT_EQ(qv::LastPathComponent(L""), L"");
}

TEST(PathText, ASeparatorIsNeededWhenNeitherTextBringsOne) {
    EXPECT_TRUE(qv::NeedsSeparator(L"a", L"b", L'/'));
    EXPECT_FALSE(qv::NeedsSeparator(L"a/", L"b", L'/'));
    EXPECT_FALSE(qv::NeedsSeparator(L"a", L"/b", L'/'));
    EXPECT_FALSE(qv::NeedsSeparator(L"a/", L"/b", L'/'));
    EXPECT_FALSE(qv::NeedsSeparator(L"", L"b", L'/'));
    EXPECT_FALSE(qv::NeedsSeparator(L"a", L"", L'/'));
    EXPECT_TRUE(qv::NeedsSeparator(L"a/", L"b", L'.'));
}

}  // namespace

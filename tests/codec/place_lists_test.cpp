#include "codec/place_lists.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <vector>

#include "codec/coder_inputs.h"

namespace {

using qv::PlaceLists;

std::vector<int> PlacesOf(PlaceLists& lists, PlaceLists::Key key, int base) {
    std::vector<int> places;
    for (int place = lists.Oldest(key, base); place != PlaceLists::kNone; place = lists.Next(place))
        places.push_back(place);
    return places;
}

class PlaceListsTest : public testing::Test {
protected:
    PlaceListsTest() { lists_->Reset(); }

    const std::unique_ptr<PlaceLists> lists_ = std::make_unique<PlaceLists>();
    const PlaceLists::Key key_ = PlaceLists::KeyOf(0x616263);
};

TEST_F(PlaceListsTest, RunFromTheOldestPlaceToTheNewest) {
    EXPECT_EQ(lists_->Oldest(key_, 0), PlaceLists::kNone);
    for (const int place : {0, 5, 6, PlaceLists::kPlaces - 1})
        lists_->Enter(key_, place);
    EXPECT_EQ(PlacesOf(*lists_, key_, 0), (std::vector<int>{0, 5, 6, PlaceLists::kPlaces - 1}));
}

TEST_F(PlaceListsTest, ForgetPlacesThatAreLeftBehindAndGoOn) {
    for (const int place : {1, 2, 3})
        lists_->Enter(key_, place);
    EXPECT_EQ(PlacesOf(*lists_, key_, 3), std::vector<int>{3});
    EXPECT_EQ(PlacesOf(*lists_, key_, 4), std::vector<int>{});
    lists_->Enter(key_, 9);
    EXPECT_EQ(PlacesOf(*lists_, key_, 4), std::vector<int>{9});
}

TEST_F(PlaceListsTest, ForgetEverythingWhenReset) {
    lists_->Enter(key_, 7);
    lists_->Reset();
    EXPECT_EQ(lists_->Oldest(key_, 0), PlaceLists::kNone);
    lists_->Enter(key_, 3);
    EXPECT_EQ(PlacesOf(*lists_, key_, 0), std::vector<int>{3});
}

TEST_F(PlaceListsTest, HoldEveryPlaceOfAPrefixAmongThoseOfOthers) {
    constexpr unsigned kSeed = 14;
    SCOPED_TRACE(testing::Message() << "seed " << kSeed);
    qvtest::ShapedInput random(kSeed);
    std::map<unsigned, std::vector<int>> entered;
    for (int place = 0; place < PlaceLists::kPlaces; ++place) {
        const unsigned prefix = random.Below(3000);
        lists_->Enter(PlaceLists::KeyOf(prefix), place);
        entered[prefix].push_back(place);
        if (place % 8 != 0) continue;
        // Places are left behind as a window of 8192 leaves them.
        const int base = place > 8192 ? place - 8192 : 0;
        const unsigned sought = random.Below(6000);
        std::vector<int> found = PlacesOf(*lists_, PlaceLists::KeyOf(sought), base);
        EXPECT_TRUE(std::is_sorted(found.begin(), found.end()));
        EXPECT_TRUE(found.empty() || found.front() >= base);
        std::vector<int> expected = entered[sought];
        std::erase_if(expected, [=](int p) { return p < base; });
        EXPECT_TRUE(std::includes(found.begin(), found.end(), expected.begin(), expected.end()));
    }
}

}  // namespace

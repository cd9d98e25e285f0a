// Every exported function when memory runs out, and with null handles.
#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <QVFoundation/QVLibrary.h>

#include "support/failing_allocator.h"
#include "support/log_capture.h"
#include "whole/row.h"

namespace {

using qvtest::Row;
using qvtest::Rows;

Rows AllRows() {
    using namespace qvtest;
    return Joined({RuntimeRows(), StringRows(), ValueRows(), CollectionRows(), FileRows(), StreamRows(),
                   CodecRows(), CryptoRows(), FormatRows()});
}

std::vector<std::string> ExportedNames() {
    std::ifstream file(QV_EXPORTS_FILE);
    std::vector<std::string> names;
    for (std::string line; std::getline(file, line);)
        names.push_back(line);
    return names;
}

TEST(EveryFunction, HasOneRow) {
    std::vector<std::string> rows;
    for (const Row& row : AllRows())
        rows.push_back(row.function);
    std::sort(rows.begin(), rows.end());
    ASSERT_FALSE(rows.empty());
    EXPECT_EQ(rows, ExportedNames());
}

class EveryFunction : public testing::TestWithParam<Row> {};

// Attempts the call with the first, second, ... allocation refused, until it meets no refusal. What the
// library keeps while it is up goes with it, so every attempt has a library of its own.
void MeetEveryShortage(const Row& row, bool forGood) {
    bool metShortage = true;
    for (std::size_t after = 0; metShortage && !testing::Test::HasFailure(); ++after) {
        SCOPED_TRACE(row.function + " with a refusal after " + std::to_string(after) + " allocations");
        const std::size_t before = qvtest::LiveAllocations();
        QVFoundationInit();
        {
            qvtest::Attempt attempt({after, forGood});
            row.attempt(attempt);
            metShortage = attempt.MetShortage();
        }
        QVFoundationExit();
        EXPECT_EQ(qvtest::LiveAllocations(), before) << "allocations are left behind";
    }
}

TEST_P(EveryFunction, FailsCleanlyWhenOneAllocationIsRefused) {
    MeetEveryShortage(GetParam(), false);
}

TEST_P(EveryFunction, FailsCleanlyWhenMemoryHasRunOut) {
    MeetEveryShortage(GetParam(), true);
}

TEST_P(EveryFunction, TakesNullForEveryHandle) {
    const std::size_t before = qvtest::LiveAllocations();
    QVFoundationInit();
    {
        const qvtest::LogCapture log;
        EXPECT_TRUE(GetParam().nullCalls());
    }
    QVFoundationExit();
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

INSTANTIATE_TEST_SUITE_P(Exported, EveryFunction, testing::ValuesIn(AllRows()),
                         [](const auto& row) { return row.param.function; });

}  // namespace

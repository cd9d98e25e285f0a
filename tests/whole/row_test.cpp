// The table's own judgement: what a row gets wrong is noticed.
#include "whole/row.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <QVFoundation/QVLibrary.h>

namespace {

using qvtest::Attempt;
using qvtest::Shortage;

constexpr Shortage kFirstIsRefused = {0, false};
constexpr Shortage kNoneIsRefused = {100, false};

// Makes an object, and hides whether it could.
int AllocateAndAnswer(int answer) {
    QVRelease(QVNullCreate());
    return answer;
}

TEST(Attempt, NoticesASuccessWithoutMemory) {
    EXPECT_NONFATAL_FAILURE(Attempt(kFirstIsRefused).Answers(1, 0, [] { return AllocateAndAnswer(1); }),
                            "the outcome is 1");
}

TEST(Attempt, NoticesAFailureWithMemory) {
    EXPECT_NONFATAL_FAILURE(Attempt(kNoneIsRefused).Answers(1, 0, [] { return AllocateAndAnswer(0); }),
                            "the outcome is 0");
}

TEST(Attempt, NoticesAnAnswerThatIsNeither) {
    EXPECT_NONFATAL_FAILURE(Attempt(kFirstIsRefused).Answers(1, 0, [] { return AllocateAndAnswer(2); }),
                            "the outcome is 2");
}

TEST(Attempt, NoticesAllocationsWhereNoneAreExpected) {
    EXPECT_NONFATAL_FAILURE(Attempt(kFirstIsRefused).NeedsNoMemory([] { return AllocateAndAnswer(1) == 1; }),
                            "allocates");
}

TEST(Attempt, NoticesThatNothingIsAllocated) {
    EXPECT_NONFATAL_FAILURE(Attempt(kFirstIsRefused).Answers(1, 0, [] { return 1; }), "needs no memory");
}

TEST(Attempt, NoticesAMissingLine) {
    EXPECT_NONFATAL_FAILURE(Attempt(kFirstIsRefused).Logs("no room").Creates(QVNullCreate), "logs nothing");
}

TEST(Attempt, NoticesALineThatIsNotExpected) {
    EXPECT_NONFATAL_FAILURE(
        Attempt(kNoneIsRefused).NeedsNoMemory([] { QVLog(L"hello"); }, [] { return true; }), "hello");
}

TEST(Attempt, NoticesAReferenceThatIsNotKept) {
    void* const object = QVRetain(QVNullCreate());
    EXPECT_NONFATAL_FAILURE(
        Attempt(kFirstIsRefused).Keeps(object).Answers(1, 0, [] { return AllocateAndAnswer(0); }), "kept");
    QVRelease(object);
}

TEST(Attempt, NoticesARowWithoutACall) {
    EXPECT_NONFATAL_FAILURE(Attempt{kNoneIsRefused}, "one call");
}

}  // namespace

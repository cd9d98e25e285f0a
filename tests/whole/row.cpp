#include "whole/row.h"

#include <algorithm>
#include <utility>

namespace qvtest {

Attempt& Attempt::Logs(std::string line) {
    return LogsOneOf({std::move(line)});
}

Attempt& Attempt::LogsOneOf(std::vector<std::string> lines) {
    linesOfFailure_ = std::move(lines);
    return *this;
}

Attempt& Attempt::OrNothing() {
    mayBeSilent_ = true;
    return *this;
}

Attempt& Attempt::AlwaysLogs(std::string line) {
    lineOfSuccess_ = line;
    return Logs(std::move(line));
}

Attempt& Attempt::OthersLog() {
    othersLog_ = true;
    return *this;
}

Attempt& Attempt::MayDoWithout() {
    mayDoWithout_ = true;
    return *this;
}

Attempt& Attempt::Keeps(void* object) {
    kept_ = object;
    keptCount_ = QVGetRetainCount(object);
    return *this;
}

Attempt& Attempt::UnderOwnPools() {
    underOwnPools_ = true;
    return *this;
}

void Attempt::Begin() {
    ++calls_;
    if (!underOwnPools_) pool_.Reset(QVTemporaryObjectsPoolCreate());
    log_.emplace();
    failing_.emplace(shortage_.after, shortage_.forGood);
}

void Attempt::End() {
    metShortage_ = failing_->HasFailed();
    failing_.reset();
    lines_ = log_->Messages();
    log_.reset();  // so that what fails from here on is seen
}

void Attempt::Judge(bool succeeded, bool failed, const std::string& outcome) {
    SCOPED_TRACE("the outcome is " + outcome);
    if (!metShortage_) {
        EXPECT_TRUE(succeeded) << "with memory";
        EXPECT_TRUE(shortage_.after > 0 || !needsMemory_) << "needs no memory at all";
    } else if (needsMemory_) {
        EXPECT_TRUE(failed || (mayDoWithout_ && succeeded)) << "without memory";
    } else {
        ADD_FAILURE() << "allocates";
    }
    const bool hasFailed = metShortage_ && failed;
    if (hasFailed && kept_ != nullptr) {
        EXPECT_EQ(QVGetRetainCount(kept_), keptCount_ + 1) << "references kept by a failed call";
        QVRelease(kept_);
    }
    if (!(othersLog_ && metShortage_)) JudgeLines(hasFailed);
}

void Attempt::JudgeLines(bool hasFailed) const {
    const std::vector<std::string> expected =
        hasFailed ? linesOfFailure_
                  : std::vector<std::string>(lineOfSuccess_.empty() ? 0 : 1, lineOfSuccess_);
    if (lines_.empty()) {
        EXPECT_TRUE(expected.empty() || (hasFailed && mayBeSilent_)) << "logs nothing";
    } else {
        EXPECT_EQ(lines_.size(), 1U);
        EXPECT_NE(std::find(expected.begin(), expected.end(), lines_.front()), expected.end())
            << lines_.front();
    }
}

Rows Joined(const std::vector<Rows>& families) {
    Rows all;
    for (const Rows& family : families)
        all.insert(all.end(), family.begin(), family.end());
    return all;
}

}  // namespace qvtest

// One row for each exported function: a call that meets running out of memory, what it then answers, and a
// call in which every handle is null.
#pragma once

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <optional>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include <QVFoundation/QVObject.h>

#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace qvtest {

// Which allocations of a call are refused: the one that comes after `after` others, and with `forGood` all
// later ones as well.
struct Shortage {
    std::size_t after = 0;
    bool forGood = false;
};

// One attempt at a function. The row makes the objects, makes one call through it, and says what the call
// answers when it succeeds and when an allocation was refused meanwhile.
class Attempt {
public:
    explicit Attempt(Shortage shortage) : shortage_(shortage) {}
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;
    ~Attempt() { EXPECT_EQ(calls_, 1) << "a row makes one call"; }

    // ---- said before the call

    // A failure logs this line, or one of these. Unless a row says so, nothing may be logged.
    Attempt& Logs(std::string line);
    Attempt& LogsOneOf(std::vector<std::string> lines);
    // A failure that has a line may be silent: that of parking a temporary object, for example.
    Attempt& OrNothing();
    // So does a success.
    Attempt& AlwaysLogs(std::string line);
    // The functions underneath log what they could not allocate.
    Attempt& OthersLog();
    // Some allocations can be done without: then the call succeeds although they are refused.
    Attempt& MayDoWithout();
    // A failed call keeps the reference that it took to the object. It is given back for it.
    Attempt& Keeps(void* object);
    // The call meets the pools that the row has left, not an empty one on top of them.
    Attempt& UnderOwnPools();

    // ---- the call; only what the body does meets the shortage

    // Gives a new object, or null.
    template <class Body>
    void Creates(Body body) {
        const qv::Owned created{Call(body)};
        JudgeHandle(created.Get());
    }

    // Gives something that another owner keeps, such as a temporary object, or null.
    template <class Body>
    void Lends(Body body) {
        const void* const lent = Call(body);
        JudgeHandle(lent);
    }

    // Answers one value or the other.
    template <class Value, class Body>
    void Answers(Value success, std::type_identity_t<Value> failure, Body body) {
        const auto value = static_cast<Value>(Call(body));
        Judge(value == success, value == failure, testing::PrintToString(value));
    }

    // Answers a result code: 0, or one of the failures.
    template <class Body>
    void AnswersCode(Body body, std::initializer_list<int> failures = {QVErrMemory}) {
        const int code = Call(body);
        const bool isFailure = std::find(failures.begin(), failures.end(), code) != failures.end();
        Judge(code == QVNoErr, isFailure, std::to_string(code));
    }

    // Answers nothing: `state()` is one value or the other afterwards.
    template <class Value, class Body, class State>
    void Changes(Value success, std::type_identity_t<Value> failure, Body body, State state) {
        Call(body);
        const auto value = static_cast<Value>(state());
        Judge(value == success, value == failure, testing::PrintToString(value));
    }

    // Allocates nothing; the body tells whether its answer is right, or `isRight` does afterwards.
    template <class Body>
    void NeedsNoMemory(Body body) {
        needsMemory_ = false;
        Judge(Call(body), false, "told by the row");
    }
    template <class Body, class Check>
    void NeedsNoMemory(Body body, Check isRight) {
        needsMemory_ = false;
        Call(body);
        Judge(isRight(), false, "told by the row");
    }

    // Whether an allocation was refused.
    [[nodiscard]] bool MetShortage() const { return metShortage_; }

private:
    template <class Body>
    auto Call(Body& body) {
        Begin();
        if constexpr (std::is_void_v<decltype(body())>) {
            body();
            End();
        } else {
            const auto result = body();
            End();
            return result;
        }
    }
    void Begin();
    void End();
    void Judge(bool succeeded, bool failed, const std::string& outcome);
    void JudgeHandle(const void* handle) {
        Judge(handle != nullptr, handle == nullptr, handle == nullptr ? "null" : "an object");
    }
    void JudgeLines(bool hasFailed) const;

    const Shortage shortage_;
    std::vector<std::string> linesOfFailure_;
    std::string lineOfSuccess_;
    bool mayBeSilent_ = false;
    bool othersLog_ = false;
    bool mayDoWithout_ = false;
    bool needsMemory_ = true;
    bool underOwnPools_ = false;
    void* kept_ = nullptr;
    unsigned long keptCount_ = 0;

    int calls_ = 0;
    qv::Owned pool_;  // empty before the call, so that its growth meets the shortage as well
    std::optional<LogCapture> log_;
    std::vector<std::string> lines_;
    std::optional<FailAllocation> failing_;
    bool metShortage_ = false;
};

struct Row {
    std::string function;
    // Makes its objects, and the call.
    std::function<void(Attempt&)> attempt;
    // Calls the function with each of its handles null, and tells whether the answers are right.
    std::function<bool()> nullCalls;
};
using Rows = std::vector<Row>;

inline std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.function;
}

// For the functions that take no handle.
inline bool TakesNoHandle() {
    return true;
}

// The rows of several families as those of one.
Rows Joined(const std::vector<Rows>& families);

Rows RuntimeRows();
Rows StringRows();
Rows ValueRows();
Rows CollectionRows();
Rows FileRows();
Rows StreamRows();
Rows CodecRows();
Rows CryptoRows();
Rows FormatRows();

}  // namespace qvtest

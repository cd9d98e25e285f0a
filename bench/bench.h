// Comparing two pieces of work that have the same result: ours and a peer's, in one process, in turn.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace bench {

// Does a piece of work as many times as it is told.
using Work = std::function<void(std::size_t times)>;

// The least that the same work can cost, where it is known.
struct Floor {
    std::string name;
    Work work;
};

struct Comparison {
    Work ours;
    Work reference;
    std::string referenceName;
    double unit = 1;       // the operations that one piece of work consists of: figures are for one of them
    bool standIn = false;  // the goal names another reference, which is not packaged
    Floor floor = {};
};

// Each room adds its comparisons: `make` prepares the input, checks that both sides give the same result and
// answers the two pieces of work. It is called only when the row is wanted, and what it prepared goes with
// it.
class Suite {
public:
    struct Entry {
        std::string work;
        std::function<Comparison()> make;
    };

    void Add(std::string work, std::function<Comparison()> make) {
        entries_.push_back({std::move(work), std::move(make)});
    }
    [[nodiscard]] const std::vector<Entry>& Entries() const { return entries_; }

private:
    std::vector<Entry> entries_;
};

// A result that is not what it should be: the row is reported as wrong and the whole run fails.
inline void Require(bool holds, std::string_view what) {
    if (!holds) throw std::runtime_error("wrong result: " + std::string(what));
}

// Keeps the compiler from dropping the computation of a value, or from knowing the value afterwards.
template <class T>
inline void Keep(T& value) {
    asm volatile("" : "+m"(value) : : "memory");
}
template <class T>
inline void Keep(T&& value) {
    T copy = value;
    asm volatile("" : : "g"(&copy) : "memory");
}

// The work of calling `once` again and again.
template <class Once>
Work Times(Once once) {
    return [once](std::size_t times) mutable {
        for (; times > 0; --times)
            once();
    };
}

// The same for library calls that leave temporary objects: the pool is drained after every `drainEach` calls.
Work DrainPool(std::function<void(std::size_t)> work, std::size_t drainEach);

// The least that `count` calls of the library can cost: calls of a function that does nothing.
Floor EmptyCalls(std::size_t count);

struct Figures {
    double ours;       // nanoseconds of the thread's processor time for one operation, median
    double reference;  // the same
    double floor;      // the same; 0 when none is known
    int samples;
};

// Measures both in turn, sample by sample, so that whatever else the machine does meets both alike.
Figures Measure(const Comparison& comparison);

// One for each room.
void AddRuntimeComparisons(Suite& suite);
void AddTextComparisons(Suite& suite);
void AddCollectionsComparisons(Suite& suite);
void AddIoComparisons(Suite& suite);
void AddCodecComparisons(Suite& suite);
void AddCompressionComparisons(Suite& suite);
void AddCryptoComparisons(Suite& suite);
void AddArchiveComparisons(Suite& suite);
void AddFormatsComparisons(Suite& suite);

}  // namespace bench

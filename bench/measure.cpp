#include <algorithm>
#include <array>
#include <time.h>

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVObject.h>

#include "bench.h"

namespace bench {

namespace {

// A sample should take about this long: long against the clock's own cost, short against a scheduler's slice.
constexpr double kSampleNanoseconds = 3e6;
// A row may take about this long in all.
constexpr double kRowNanoseconds = 400e6;
constexpr int kMostSamples = 31;
constexpr int kFewestSamples = 5;

double ThreadTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

double TimeOf(const Work& work, std::size_t times) {
    const double start = ThreadTime();
    work(times);
    return ThreadTime() - start;
}

// How many times the work fits into a sample. Warms caches and predictors up on the way. The first time does
// not count: it takes fresh pages from the system and binds functions, and may last as long as a sample
// alone.
std::size_t Calibrate(const Work& work) {
    work(1);
    std::size_t times = 1;
    while (true) {
        const double taken = TimeOf(work, times);
        if (taken >= kSampleNanoseconds / 2) return times;
        times = taken < kSampleNanoseconds / 20
                    ? times * 8
                    : static_cast<std::size_t>(static_cast<double>(times) * kSampleNanoseconds / taken) + 1;
    }
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace

Work DrainPool(std::function<void(std::size_t)> work, std::size_t drainEach) {
    return [work = std::move(work), drainEach](std::size_t times) {
        while (times > 0) {
            const std::size_t now = std::min(times, drainEach);
            work(now);
            QVTemporaryObjectsPoolHandleEvents();
            times -= now;
        }
    };
}

Floor EmptyCalls(std::size_t count) {
    return {"the calls alone", Times([count] {
                for (std::size_t i = 0; i < count; ++i)
                    Keep(QVCreateData(nullptr));
            })};
}

Figures Measure(const Comparison& comparison) {
    const std::array<const Work*, 3> sides = {&comparison.ours, &comparison.reference,
                                              &comparison.floor.work};
    const std::size_t sideCount = comparison.floor.work ? 3 : 2;
    std::array<std::size_t, 3> times{};
    std::array<std::vector<double>, 3> samples;
    double round = 0;
    for (std::size_t side = 0; side < sideCount; ++side) {
        times[side] = Calibrate(*sides[side]);
        round += TimeOf(*sides[side], times[side]);
    }
    const int count = std::clamp(static_cast<int>(kRowNanoseconds / round), kFewestSamples, kMostSamples);
    for (int i = 0; i < count; ++i) {
        for (std::size_t side = 0; side < sideCount; ++side) {
            const double taken = TimeOf(*sides[side], times[side]);
            samples[side].push_back(taken / static_cast<double>(times[side]) / comparison.unit);
        }
    }
    return {Median(samples[0]), Median(samples[1]), comparison.floor.work ? Median(samples[2]) : 0, count};
}

}  // namespace bench

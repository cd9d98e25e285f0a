#include "base/secure_wipe.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

#include "support/failing_allocator.h"

namespace {

using Secret = std::array<unsigned char, 200>;

// Tells the compiler that somebody may look at the bytes, so that it leaves out no store to them.
void LookAt(const void* bytes) {
    asm volatile("" : : "r"(bytes) : "memory");
}

// Counts the freed blocks that still hold a run of the secret's bytes.
class TracesInFreedMemory {
public:
    TracesInFreedMemory() : watch_(&Inspect, this) {}
    int Count() const { return traces_; }

private:
    static void Inspect(void* context, const void* block, std::size_t size) {
        static const std::string run(16, '\xA7');
        const auto* bytes = static_cast<const char*>(block);
        if (std::search(bytes, bytes + size, run.begin(), run.end()) != bytes + size)
            ++static_cast<TracesInFreedMemory*>(context)->traces_;
    }

    int traces_ = 0;
    qvtest::WatchFrees watch_;
};

TEST(SecureWipe, OverwritesEveryByteAndNoOther) {
    Secret bytes;
    bytes.fill(0xA7);
    qv::SecureWipe(bytes.data() + 1, 198);
    EXPECT_EQ(bytes.front(), 0xA7);
    EXPECT_EQ(bytes.back(), 0xA7);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), 198);
    qv::SecureWipe(nullptr, 0);
}

TEST(WipedPtr, LeavesNoTraceInFreedMemory) {
    TracesInFreedMemory traces;
    {
        const auto plain = std::make_unique<Secret>();
        plain->fill(0xA7);
        LookAt(plain.get());
    }
    EXPECT_EQ(traces.Count(), 1);  // an ordinary owner does
    {
        const auto secret = qv::MakeWiped<Secret>();
        secret->fill(0xA7);
        LookAt(secret.get());
    }
    EXPECT_EQ(traces.Count(), 1);
}

TEST(Wiped, LeavesNoTraceWhereItLay) {
    alignas(qv::Wiped<Secret>) unsigned char place[sizeof(qv::Wiped<Secret>)] = {};
    auto* secret = new (place) qv::Wiped<Secret>;
    (*secret)->fill(0xA7);
    LookAt(place);
    EXPECT_EQ(std::count(place, place + sizeof place, 0xA7), 200);
    secret->~Wiped();
    LookAt(place);
    EXPECT_EQ(std::count(place, place + sizeof place, 0xA7), 0);
}

}  // namespace

// A progress bar on stderr.
#pragma once

#include <chrono>
#include <cstdint>

namespace tool {

enum class ProgressMode { kWhenTerminal, kAlways, kNever };

class Progress final {
public:
    /// total: the bytes to be handled in all.
    Progress(std::uint64_t total, ProgressMode mode);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { Clear(); }

    /// Counts bytes as done; redraws the bar ten times a second at most.
    void Advance(std::uint64_t bytes);
    /// Takes the bar away, so that a message can stand in its line.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    void Draw(Clock::time_point now);

    std::uint64_t total_;
    std::uint64_t done_ = 0;
    bool shown_;
    bool drawn_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point lastDraw_ = start_;
};

}  // namespace tool

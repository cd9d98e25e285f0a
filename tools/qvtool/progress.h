// A progress bar on stderr.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace tool {

enum class ProgressMode { kWhenTerminal, kAlways, kNever };

class Progress final {
public:
    /// total: the bytes to be handled in all.
    Progress(std::uint64_t total, ProgressMode mode);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { Clear(); }

    [[nodiscard]] bool IsShown() const { return shown_; }
    /// The bytes counted so far.
    [[nodiscard]] std::uint64_t Done() const { return done_; }
    /// Counts bytes as done; redraws the bar ten times a second at most.
    void Advance(std::uint64_t bytes);
    /// Draws the bar as it will be when these bytes are counted, without counting them.
    void Preview(std::uint64_t bytes);
    /// Takes the bar away, so that a message can stand in its line.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    void Draw(std::uint64_t done, Clock::time_point now);

    std::uint64_t total_;
    std::uint64_t done_ = 0;
    bool shown_;
    bool drawn_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point lastDraw_ = start_;
};

/// Previews a file's growth while one long call of the library writes it. The library's objects are for one
/// thread at a time: the watching thread knows the file's path alone and asks the system for its size.
class GrowthWatch final {
public:
    /// The progress is the watch's alone as long as that lives.
    GrowthWatch(std::string path, Progress& progress);
    GrowthWatch(const GrowthWatch&) = delete;
    GrowthWatch& operator=(const GrowthWatch&) = delete;
    ~GrowthWatch();

private:
    void Watch(std::uint64_t sizeBefore);

    std::string path_;
    Progress& progress_;
    std::mutex mutex_;
    std::condition_variable ended_;
    bool hasEnded_ = false;
    std::thread thread_;
};

}  // namespace tool

#include "progress.h"

#include <algorithm>
#include <cstdio>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "tool.h"

namespace tool {

namespace {

constexpr char kFull[] = "########################################";
constexpr char kEmpty[] = "........................................";
constexpr int kBarWidth = sizeof kFull - 1;
constexpr auto kRedrawEvery = std::chrono::milliseconds(100);

std::uint64_t SizeOf(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace

Progress::Progress(std::uint64_t total, ProgressMode mode)
    : total_(total),
      shown_(mode == ProgressMode::kAlways ||
             (mode == ProgressMode::kWhenTerminal && isatty(STDERR_FILENO) == 1)) {}

void Progress::Advance(std::uint64_t bytes) {
    done_ += std::min(bytes, total_ - done_);
    if (!shown_) {
        return;
    }
    const Clock::time_point now = Clock::now();
    if (!drawn_ || done_ == total_ || now - lastDraw_ >= kRedrawEvery) {
        Draw(done_, now);
    }
}

void Progress::Preview(std::uint64_t bytes) {
    if (shown_) Draw(done_ + std::min(bytes, total_ - done_), Clock::now());
}

void Progress::Draw(std::uint64_t done, Clock::time_point now) {
    const double part = total_ == 0 ? 1 : static_cast<double>(done) / static_cast<double>(total_);
    const int filled = static_cast<int>(part * kBarWidth);
    const double seconds = std::chrono::duration<double>(now - start_).count();
    std::fprintf(stderr, "\r[%.*s%.*s] %3d%%  %.1f MB/s \033[K", filled, kFull, kBarWidth - filled, kEmpty,
                 static_cast<int>(part * 100), Rate(done, seconds));
    std::fflush(stderr);
    lastDraw_ = now;
    drawn_ = true;
}

void Progress::Clear() {
    if (drawn_) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        drawn_ = false;
    }
}

GrowthWatch::GrowthWatch(std::string path, Progress& progress) : path_(std::move(path)), progress_(progress) {
    if (!progress_.IsShown()) return;
    try {
        thread_ = std::thread([this, sizeBefore = SizeOf(path_)] { Watch(sizeBefore); });
    } catch (const std::system_error&) {
        // The work is worth doing without a bar that moves.
    }
}

GrowthWatch::~GrowthWatch() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard lock(mutex_);
        hasEnded_ = true;
    }
    ended_.notify_one();
    thread_.join();
}

void GrowthWatch::Watch(std::uint64_t sizeBefore) {
    std::unique_lock lock(mutex_);
    do {
        progress_.Preview(std::max(SizeOf(path_), sizeBefore) - sizeBefore);
    } while (!ended_.wait_for(lock, kRedrawEvery, [this] { return hasEnded_; }));
}

}  // namespace tool

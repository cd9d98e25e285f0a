#include "progress.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <unistd.h>

#include "tool.h"

namespace tool {

namespace {
constexpr int kBarWidth = 40;
constexpr auto kRedrawEvery = std::chrono::milliseconds(100);
}  // namespace

Progress::Progress(std::uint64_t total, ProgressMode mode)
    : total_(total),
      shown_(mode == ProgressMode::kAlways ||
             (mode == ProgressMode::kWhenTerminal && isatty(STDERR_FILENO) == 1)) {}

void Progress::Advance(std::uint64_t bytes) {
    done_ = std::min(done_ + bytes, total_);
    if (!shown_) {
        return;
    }
    const Clock::time_point now = Clock::now();
    if (!drawn_ || done_ == total_ || now - lastDraw_ >= kRedrawEvery) {
        Draw(now);
    }
}

void Progress::Draw(Clock::time_point now) {
    const double part = total_ == 0 ? 1 : static_cast<double>(done_) / static_cast<double>(total_);
    const auto filled = static_cast<std::size_t>(part * kBarWidth);
    const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
    const double seconds = std::chrono::duration<double>(now - start_).count();
    std::fprintf(stderr, "\r[%s] %3d%%  %.1f MB/s \033[K", bar.c_str(), static_cast<int>(part * 100),
                 Rate(done_, seconds));
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

}  // namespace tool

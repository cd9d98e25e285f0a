#include "unfinished_file.h"

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include "tool.h"

namespace tool {

namespace {

constexpr std::array kEndingSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

// What the signal handler needs. The folder is stored before the name.
std::atomic<int> unfinishedFolder{AT_FDCWD};
std::atomic<const char*> unfinishedName{nullptr};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<const char*>::is_always_lock_free);

// Keeps the signals back as long as it lives.
class HeldSignals final {
public:
    HeldSignals() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : kEndingSignals)
            sigaddset(&signals, signal);
        pthread_sigmask(SIG_BLOCK, &signals, &before_);
    }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;
    ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_{};
};

// Lets a signal that ends the program remove the unfinished file first.
void RemoveUnfinishedFileAtSignals() {
    struct sigaction action {};
    action.sa_flags = static_cast<int>(SA_RESETHAND);  // raised again, the signal has its ordinary effect
    action.sa_handler = [](int signal) {
        if (const char* name = unfinishedName.load()) unlinkat(unfinishedFolder.load(), name, 0);
        raise(signal);
    };
    sigemptyset(&action.sa_mask);
    for (const int signal : kEndingSignals) {
        struct sigaction before {};
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_DFL) {
            sigaction(signal, &action, nullptr);
        }
    }
}

}  // namespace

UnfinishedFile::UnfinishedFile(int folder, std::string name, const std::string& what)
    : folder_(folder), name_(std::move(name)) {
    RemoveUnfinishedFileAtSignals();
    const HeldSignals held;  // until the file's name is where the handler finds it
    file_.Reset(openat(folder_, name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (file_.Get() < 0) throw Failure(SystemText(what));
    unfinishedFolder = folder_;
    unfinishedName = name_.c_str();
}

UnfinishedFile::~UnfinishedFile() {
    if (!isWhole_) unlinkat(folder_, name_.c_str(), 0);
    unfinishedName = nullptr;
}

void UnfinishedFile::Keep() {
    isWhole_ = true;
    unfinishedName = nullptr;
}

// An earlier run with this run's number may have been killed and have left its file.
std::string UnfinishedFile::TemporaryName() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return ".qvtool-" + std::to_string(getpid()) + "-" + std::to_string(now);
}

}  // namespace tool

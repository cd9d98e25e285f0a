#include "secret_key.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include "descriptor.h"
#include "tool.h"

namespace tool {
namespace {

int Open(const std::string& path, int flags) {
    const int descriptor = open(path.c_str(), flags | O_CLOEXEC);
    if (descriptor < 0) throw Failure(SystemText(path));
    return descriptor;
}

// While it lives, the signals that would end the program only end a read from the terminal, so that the
// terminal is put right before the program goes.
class InterruptedReads final {
public:
    InterruptedReads() {
        struct sigaction action {};
        action.sa_handler = [](int) {};  // without SA_RESTART: read fails with EINTR
        sigemptyset(&action.sa_mask);
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            sigaction(kSignals[i], &action, &before_[i]);
    }
    InterruptedReads(const InterruptedReads&) = delete;
    InterruptedReads& operator=(const InterruptedReads&) = delete;
    ~InterruptedReads() {
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            sigaction(kSignals[i], &before_[i], nullptr);
    }

private:
    static constexpr std::array kSignals = {SIGINT, SIGTERM, SIGQUIT, SIGHUP};
    std::array<struct sigaction, kSignals.size()> before_{};
};

// A terminal that does not show what is typed.
class SilentTerminal final {
public:
    explicit SilentTerminal(int descriptor) : descriptor_(descriptor) {
        if (tcgetattr(descriptor, &before_) != 0) throw Failure(SystemText("the terminal"));
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        silent.c_lflag |= ICANON | ECHONL;
        if (tcsetattr(descriptor, TCSAFLUSH, &silent) != 0) throw Failure(SystemText("the terminal"));
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;
    // TCSAFLUSH also forgets the rest of a line that was too long: the shell must not see it.
    ~SilentTerminal() { tcsetattr(descriptor_, TCSAFLUSH, &before_); }

private:
    int descriptor_;
    termios before_{};
};

}  // namespace

SecretKey::~SecretKey() {
    explicit_bzero(bytes_.data(), bytes_.size());
}

void SecretKey::ReadFile(const std::string& path) {
    const Descriptor file(Open(path, O_RDONLY));
    Read(file.Get(), Until::kEnd, path);
}

void SecretKey::Ask(const char* prompt) {
    const Descriptor terminal(Open("/dev/tty", O_RDWR | O_NOCTTY));
    const InterruptedReads interruptedReads;
    const SilentTerminal silent(terminal.Get());
    const std::size_t length = std::strlen(prompt);
    if (write(terminal.Get(), prompt, length) != static_cast<ssize_t>(length)) {
        throw Failure(SystemText("the terminal"));
    }
    Read(terminal.Get(), Until::kLineFeed, "the terminal");
}

bool SecretKey::operator==(const SecretKey& other) const {
    return std::equal(Bytes(), Bytes() + size_, other.Bytes(), other.Bytes() + other.size_);
}

// Unbuffered, so that no other memory ever holds the key.
void SecretKey::Read(int descriptor, Until until, const std::string& name) {
    size_ = 0;
    const auto endsInLineFeed = [&] { return size_ > 0 && bytes_[size_ - 1] == '\n'; };
    while (size_ < bytes_.size() && !(until == Until::kLineFeed && endsInLineFeed())) {
        const ssize_t count = read(descriptor, bytes_.data() + size_, bytes_.size() - size_);
        if (count < 0) throw Failure(SystemText(name));
        if (count == 0) break;
        size_ += static_cast<std::size_t>(count);
    }
    if (endsInLineFeed()) --size_;
    if (size_ == 0) throw Failure(name + ": the key is empty");
    if (size_ > kMaximumSize) throw Failure(name + ": the key is longer than 56 bytes");
}

}  // namespace tool

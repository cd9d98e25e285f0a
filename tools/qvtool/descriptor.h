// A file descriptor that is closed when it is no longer needed.
#pragma once

#include <unistd.h>

namespace tool {

class Descriptor final {
public:
    /// Takes the descriptor over; a negative one is none.
    explicit Descriptor(int value = -1) : value_(value) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { Close(); }

    [[nodiscard]] int Get() const { return value_; }
    void Reset(int value) {
        Close();
        value_ = value;
    }
    /// False when the system could not keep what was written.
    bool Close() {
        const bool closed = value_ < 0 || close(value_) == 0;
        value_ = -1;
        return closed;
    }

private:
    int value_;
};

}  // namespace tool

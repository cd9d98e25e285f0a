// A key as the user gives it, wiped when it is no longer needed.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace tool {

// 1 to 56 bytes: what the cipher takes.
class SecretKey final {
public:
    static constexpr std::size_t kMaximumSize = 56;

    SecretKey() = default;
    SecretKey(const SecretKey&) = delete;
    SecretKey& operator=(const SecretKey&) = delete;
    ~SecretKey();

    // Takes the file's bytes without one line feed at their end. Throws a Failure when they are no key.
    void ReadFile(const std::string& path);

    // Asks for the key on the terminal, without showing what is typed. Throws a Failure when there is no
    // terminal, when the user interrupts, and for what is no key.
    void Ask(const char* prompt);

    [[nodiscard]] const char* Bytes() const { return bytes_.data(); }
    [[nodiscard]] std::size_t Size() const { return size_; }
    [[nodiscard]] bool operator==(const SecretKey& other) const;

private:
    enum class Until { kEnd, kLineFeed };
    void Read(int descriptor, Until until, const std::string& name);

    // Room for a line feed and for one byte that shows the key to be too long.
    std::array<char, kMaximumSize + 2> bytes_{};
    std::size_t size_ = 0;
};

}  // namespace tool

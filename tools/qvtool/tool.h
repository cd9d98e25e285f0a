// What every command of qvtool uses: how it fails, and how it holds the library and its objects.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

#include <QVFoundation/QVFoundation.h>

namespace tool {

/// Ends a command: the message goes to stderr after "qvtool: ", and the exit status is 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Tells an error on stderr, in one line: "qvtool: MESSAGE". Control characters, which a name may have, stand
/// as a backslash and three octal digits, so that no terminal takes orders from them.
void TellError(const std::string& message);

/// Collects the errors that do not end a command; they make it fail at its end.
class ErrorCount final {
public:
    void Tell(const std::string& message) {
        TellError(message);
        ++count_;
    }
    /// Throws a Failure when there were errors: "1 FILE could not be read", "2 FILES could not be read".
    void Finish(const std::string& one, const std::string& many, const std::string& what) const;

private:
    std::size_t count_ = 0;
};

/// The library between its start and its end, with a pool for the temporaries of one command.
class LibrarySession final {
public:
    LibrarySession() {
        QVFoundationInit();
        pool_ = QVTemporaryObjectsPoolCreate();
    }
    LibrarySession(const LibrarySession&) = delete;
    LibrarySession& operator=(const LibrarySession&) = delete;
    ~LibrarySession() {
        QVRelease(pool_);
        QVFoundationExit();
    }

private:
    void* pool_ = nullptr;
};

/// Owns one reference to an object of the library.
class Object final {
public:
    /// Takes over the reference that a create function gave; throws when it gave none.
    explicit Object(void* created) : handle_(created) {
        if (handle_ == nullptr) {
            throw Failure("out of memory");
        }
    }
    Object(Object&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Object& operator=(Object&&) = delete;
    ~Object() { QVRelease(handle_); }

    [[nodiscard]] void* Get() const { return handle_; }

private:
    void* handle_;
};

/// A string of the library with a path's text. Throws a Failure with the path when its bytes are not UTF-8:
/// no text names such a file.
[[nodiscard]] Object PathText(const std::string& path);

/// A name in one line that tells it exactly: control characters and the backslash stand as a backslash and
/// three octal digits.
[[nodiscard]] std::string OneLine(const std::string& name);

/// A result code in words, with its number: "no such file or directory (-100)".
[[nodiscard]] std::string ResultText(int code);

/// Throws "WHAT: TEXT OF THE CODE" unless the code is 0.
void Require(int code, const std::string& what);

/// The text of errno in the form "WHAT: text".
[[nodiscard]] std::string SystemText(const std::string& what);

/// A size in bytes as memory counts it; throws when no memory of this machine could hold that much.
[[nodiscard]] std::size_t MemorySize(std::uint64_t size);

/// 1234567 as "1,234,567".
[[nodiscard]] std::string Grouped(std::uint64_t number);

/// Megabytes (10^6) a second, or 0 when no time passed.
[[nodiscard]] double Rate(std::uint64_t bytes, double seconds);

}  // namespace tool

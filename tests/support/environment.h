// Changes of the process's surroundings that are undone at the end of a block.
#pragma once

#include <clocale>
#include <gtest/gtest.h>
#include <optional>
#include <stdlib.h>
#include <string>

namespace qvtest {

// Sets the locale of all categories.
class ScopedLocale {
public:
    explicit ScopedLocale(const char* name) : before_(std::setlocale(LC_ALL, nullptr)) {
        EXPECT_NE(std::setlocale(LC_ALL, name), nullptr) << "no locale " << name;
    }
    ScopedLocale(const ScopedLocale&) = delete;
    ScopedLocale& operator=(const ScopedLocale&) = delete;
    ~ScopedLocale() { std::setlocale(LC_ALL, before_.c_str()); }

private:
    std::string before_;
};

// Sets an environment variable, or removes it when the value is null.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        if (const char* before = getenv(name)) before_ = before;
        Set(value);
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;
    ~ScopedVariable() { Set(before_ ? before_->c_str() : nullptr); }

private:
    void Set(const char* value) const { value ? setenv(name_.c_str(), value, 1) : unsetenv(name_.c_str()); }

    std::string name_;
    std::optional<std::string> before_;
};

}  // namespace qvtest

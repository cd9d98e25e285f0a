// Collects what is written to standard output while it lives.
#pragma once

#include <string>
#include <vector>

namespace qvtest {

class LogCapture {
public:
    LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    ~LogCapture();

    // Everything written so far.
    [[nodiscard]] std::string Text() const;
    // The lines so far, without their line feeds.
    [[nodiscard]] std::vector<std::string> Lines() const;
    // The lines so far without the log's prefix "YY/MM/DD hh:mm:ss[n] ".
    [[nodiscard]] std::vector<std::string> Messages() const;

private:
    int file_;
    int savedOutput_;
};

}  // namespace qvtest

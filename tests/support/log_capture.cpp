#include "support/log_capture.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

namespace qvtest {

LogCapture::LogCapture() {
    fflush(stdout);
    char path[] = "/tmp/qv_log_capture_XXXXXX";
    file_ = mkstemp(path);
    if (file_ < 0) abort();
    unlink(path);
    // Appending, so that several writers do not overwrite each other.
    fcntl(file_, F_SETFL, O_APPEND);
    savedOutput_ = dup(STDOUT_FILENO);
    dup2(file_, STDOUT_FILENO);
}

LogCapture::~LogCapture() {
    fflush(stdout);
    dup2(savedOutput_, STDOUT_FILENO);
    close(savedOutput_);
    close(file_);
}

std::string LogCapture::Text() const {
    fflush(stdout);
    std::string text(static_cast<size_t>(lseek(file_, 0, SEEK_END)), '\0');
    const ssize_t size = pread(file_, text.data(), text.size(), 0);
    text.resize(size > 0 ? static_cast<size_t>(size) : 0);
    return text;
}

std::vector<std::string> LogCapture::Lines() const {
    const std::string text = Text();
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

std::vector<std::string> LogCapture::Messages() const {
    std::vector<std::string> messages = Lines();
    for (std::string& line : messages) {
        const size_t prefixEnd = line.find("] ");
        if (prefixEnd != std::string::npos) line.erase(0, prefixEnd + 2);
    }
    return messages;
}

}  // namespace qvtest

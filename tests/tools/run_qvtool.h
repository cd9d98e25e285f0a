// Runs qvtool as a user does.
#pragma once

#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace qvtest {

struct Outcome {
    int status = -1;
    std::string output;  // stdout and stderr
};

// Runs a line of the shell. The output is no terminal.
inline Outcome Shell(const std::string& line) {
    Outcome outcome;
    std::FILE* pipe = popen(("exec 2>&1; " + line).c_str(), "r");
    if (pipe == nullptr) return outcome;
    char buffer[4096];
    for (std::size_t size = 0; (size = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        outcome.output.append(buffer, size);
    }
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

// The arguments go through the shell, as a user's do.
inline Outcome Qvtool(const std::string& arguments) {
    return Shell(QVTOOL " " + arguments);
}

inline bool Says(const Outcome& outcome, const std::string& text) {
    return outcome.output.find(text) != std::string::npos;
}

}  // namespace qvtest

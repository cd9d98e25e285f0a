#include "support/consumers.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qvtest {

std::string OutputOf(const std::string& command, const std::string& input) {
    char path[] = "/tmp/qv_consumer_XXXXXX";
    const int file = mkstemp(path);
    if (file < 0) abort();
    if (write(file, input.data(), input.size()) != static_cast<ssize_t>(input.size())) abort();
    close(file);

    FILE* pipe = popen(("(" + command + ") 2>&1 <" + path).c_str(), "r");
    if (pipe == nullptr) abort();
    std::string output;
    char buffer[4096];
    for (size_t got; (got = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        output.append(buffer, got);
    const int status = pclose(pipe);
    unlink(path);
    if (status != 0) output += "exit " + std::to_string(WEXITSTATUS(status));
    return output;
}

}  // namespace qvtest

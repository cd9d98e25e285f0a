#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>

#include "commands.h"
#include "tool.h"

namespace tool {

std::vector<CommandFamily::Entry>& CommandFamily::Families() {
    static std::vector<Entry> families;  // made by the first registration, whichever file holds it
    return families;
}

void CommandFamily::SetUpAll(Command& program) {
    std::vector<Entry>& families = Families();
    std::sort(families.begin(), families.end(),
              [](const Entry& left, const Entry& right) { return left.name < right.name; });
    for (const Entry& family : families) {
        family.setup(program);
    }
}

}  // namespace tool

namespace {

int Fail(const char* message) {
    std::fflush(stdout);
    tool::TellError(message);
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const int status = tool::RunCommandLine(argc, argv, "qvtool", "Command-line access to QVFoundation",
                                                tool::CommandFamily::SetUpAll);
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
            return Fail("standard output cannot be written");
        return status;
    } catch (const std::bad_alloc&) {
        return Fail("out of memory");
    } catch (const std::exception& failure) {
        return Fail(failure.what());
    }
}

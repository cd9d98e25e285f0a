#include <algorithm>
#include <cstdio>
#include <exception>

#include "commands.h"

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

int main(int argc, char** argv) {
    try {
        return tool::RunCommandLine(argc, argv, "qvtool", "Command-line access to QVFoundation",
                                    tool::CommandFamily::SetUpAll);
    } catch (const std::exception& failure) {
        std::fflush(stdout);
        std::fprintf(stderr, "qvtool: %s\n", failure.what());
        return 1;
    }
}

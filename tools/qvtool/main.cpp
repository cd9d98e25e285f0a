#include <algorithm>
#include <cstdio>

#include "commands.h"
#include "tool.h"

namespace tool {

std::vector<CommandFamily::Entry>& CommandFamily::Families() {
    static std::vector<Entry> families;  // made by the first registration, whichever file holds it
    return families;
}

void CommandFamily::SetUpAll(CLI::App& app) {
    std::vector<Entry>& families = Families();
    std::sort(families.begin(), families.end(),
              [](const Entry& left, const Entry& right) { return left.name < right.name; });
    for (const Entry& family : families) {
        family.setup(app);
    }
}

}  // namespace tool

int main(int argc, char** argv) {
    try {
        CLI::App app{"Command-line access to QVFoundation", "qvtool"};
        app.require_subcommand(1);
        tool::CommandFamily::SetUpAll(app);
        CLI11_PARSE(app, argc, argv);
        return 0;
    } catch (const std::exception& failure) {
        std::fflush(stdout);
        std::fprintf(stderr, "qvtool: %s\n", failure.what());
        return 1;
    }
}

// How a family of commands joins qvtool. A file `<family>_commands.cpp` defines one registration:
//
//     const tool::CommandFamily family("base64", [](CLI::App& app) {
//         CLI::App* command = app.add_subcommand("base64", "Encode and decode Base64");
//         ...
//     });
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace tool {

class CommandFamily final {
public:
    using Setup = void (*)(CLI::App& app);

    CommandFamily(const char* name, Setup setup) { Families().push_back({name, setup}); }

    /// Adds the commands of every family to the program, in the order of the families' names.
    static void SetUpAll(CLI::App& app);

private:
    struct Entry {
        std::string name;
        Setup setup;
    };
    static std::vector<Entry>& Families();
};

}  // namespace tool

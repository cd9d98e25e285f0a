// How a family of commands joins qvtool. A file `<family>_commands.cpp` defines one registration:
//
//     const tool::CommandFamily family("base64", [](tool::Command& program) {
//         tool::Command base64 = program.Subcommand("base64", "Turn bytes into Base64 text and back");
//         ...
//     });
#pragma once

#include <string>
#include <vector>

#include "command_line.h"

namespace tool {

class CommandFamily final {
public:
    using Setup = void (*)(Command& program);

    CommandFamily(const char* name, Setup setup) { Families().push_back({name, setup}); }

    /// Adds the commands of every family to the program, in the order of the families' names.
    static void SetUpAll(Command& program);

private:
    struct Entry {
        std::string name;
        Setup setup;
    };
    static std::vector<Entry>& Families();
};

}  // namespace tool

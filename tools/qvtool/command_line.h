// What the program's commands see of its command line: their names, arguments and switches. The parser behind
// it is a header of many thousand lines that takes seconds to compile, so command_line.cpp alone includes it.
//
//     tool::Command compress = program.Subcommand("compress", "Write a file in the compressed block format");
//     const auto arguments = std::make_shared<Arguments>();
//     compress.Argument("input", arguments->input, "The file to read");
//     compress.Flag("-q,--quiet", arguments->quiet, "Errors only");
//     compress.Action([arguments] { Compress(*arguments); });
//
// The variables receive their values before the action runs and must live until then. A wrong command line
// ends the program with a message and a status above 100; `--help` comes by itself.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tool {

enum class Presence { kRequired, kOptional };

/// One command of the program. A copy stands for the same command.
class Command final {
public:
    using Text = const std::string&;

    explicit Command(CLI::App& app) : app_(&app) {}

    /// A command below this one, which from now on wants exactly one of them.
    [[nodiscard]] Command Subcommand(Text name, Text description);

    /// A value by its place; a missing optional one leaves the variable as it is.
    void Argument(Text name, std::string& value, Text description, Presence presence = Presence::kRequired);
    /// One value or more, to the end of the line.
    void Arguments(Text name, std::vector<std::string>& values, Text description);
    /// A value by its name: "--key-file FILE".
    void Option(Text name, std::string& value, Text description);
    /// A value by its name, which is one of the choices' keys in any case; the variable receives the key
    /// itself.
    template <class Choice>
    void Option(Text name, std::string& key, Text description, const std::map<std::string, Choice>& choices,
                Presence presence = Presence::kOptional) {
        std::vector<std::string> keys;
        for (const auto& choice : choices)
            keys.push_back(choice.first);
        AddChoice(name, key, description, keys, presence);
    }
    /// A switch: "-q,--quiet".
    void Flag(Text names, bool& value, Text description);
    /// Two switches or options of this command that must not come together.
    void Exclude(Text name, Text other);

    /// Stands at the end of the command's help.
    void Footer(Text text);
    /// What the command does.
    void Action(std::function<void()> action);

private:
    void AddChoice(Text name, std::string& key, Text description, const std::vector<std::string>& keys,
                   Presence presence);

    CLI::App* app_;
};

/// Runs the command that the arguments name, after `setUp` has added all of them. The exit status.
[[nodiscard]] int RunCommandLine(int argc, char** argv, const std::string& name,
                                 const std::string& description, const std::function<void(Command&)>& setUp);

}  // namespace tool

#include "command_line.h"

#include <CLI/CLI.hpp>
#include <utility>

namespace tool {

Command Command::Subcommand(Text name, Text description) {
    app_->require_subcommand(1);
    return Command(*app_->add_subcommand(name, description));
}

void Command::Argument(Text name, std::string& value, Text description, Presence presence) {
    app_->add_option(name, value, description)->required(presence == Presence::kRequired);
}

void Command::Arguments(Text name, std::vector<std::string>& values, Text description) {
    app_->add_option(name, values, description)->required();
}

void Command::Option(Text name, std::string& value, Text description) {
    app_->add_option(name, value, description);
}

void Command::AddChoice(Text name, std::string& key, Text description, const std::vector<std::string>& keys,
                        Presence presence) {
    app_->add_option(name, key, description)
        ->transform(CLI::IsMember(keys, CLI::ignore_case))
        ->required(presence == Presence::kRequired);
}

void Command::Flag(Text names, bool& value, Text description) {
    app_->add_flag(names, value, description);
}

void Command::Exclude(Text name, Text other) {
    app_->get_option(name)->excludes(app_->get_option(other));
}

void Command::Footer(Text text) {
    app_->footer(text);
}

void Command::Action(std::function<void()> action) {
    app_->callback(std::move(action));
}

int RunCommandLine(int argc, char** argv, const std::string& name, const std::string& description,
                   const std::function<void(Command&)>& setUp) {
    CLI::App app(description, name);
    Command program(app);
    setUp(program);
    CLI11_PARSE(app, argc, argv);
    return 0;
}

}  // namespace tool

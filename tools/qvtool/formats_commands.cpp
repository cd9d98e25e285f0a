// qvtool pack | unpack | plist

#include <memory>
#include <string>

#include "commands.h"
#include "files.h"
#include "json_objects.h"
#include "tool.h"

namespace {

using tool::Booleans;
using tool::Failure;
using tool::Object;

struct Arguments {
    std::string input;
    std::string output;
    bool booleansAsNumbers = false;
};

// A subcommand with an input and an output, run inside a session of the library.
CLI::App* AddCommand(CLI::App& app, const char* name, const char* description, const char* input,
                     const char* output, void (*run)(const Arguments&)) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option(input, arguments->input)->required();
    command->add_option(output, arguments->output, "- for standard output")->required();
    if (std::string(name) == "pack") {
        command->add_flag(
            "--booleans-as-numbers", arguments->booleansAsNumbers,
            "Store true and false as the numbers 1 and 0; the format cannot read booleans back");
    }
    command->callback([arguments, run] {
        const tool::LibrarySession session;
        run(*arguments);
    });
    return command;
}

void Pack(const Arguments& arguments) {
    const Booleans booleans = arguments.booleansAsNumbers ? Booleans::kAsNumbers : Booleans::kRefuse;
    const Object root = tool::ObjectFromJson(tool::ReadJson(arguments.input), booleans);
    const Object data(QVBinaryFormatCreateData(root.Get()));
    tool::WriteData(data.Get(), arguments.output);
}

void Unpack(const Arguments& arguments) {
    const Object data = tool::ReadData(arguments.input);
    const Object stream(QVStreamCreateWithMemory(data.Get()));
    void* root = nullptr;
    const int code = QVBinaryFormatReadFromStream(stream.Get(), &root);
    if (code != QVNoErr) {
        throw Failure(arguments.input + ": " + tool::ResultText(code) + " before byte " +
                      std::to_string(QVStreamGetMarker(stream.Get())));
    }
    const std::string text = tool::JsonFromObject(root).dump(2) + "\n";
    const Object result(QVDataCreate(text.data(), text.size()));
    tool::WriteData(result.Get(), arguments.output);
}

void MakePropertyList(const Arguments& arguments) {
    const Object root = tool::ObjectFromJson(tool::ReadJson(arguments.input), Booleans::kKeep);
    const Object data(QVPlistCreateData(root.Get()));
    tool::WriteData(data.Get(), arguments.output);
}

const tool::CommandFamily family("formats", [](CLI::App& app) {
    AddCommand(app, "pack", "Turn JSON into the binary object format", "IN.json", "OUT", Pack);
    AddCommand(app, "unpack", "Turn the binary object format into JSON", "IN", "OUT.json", Unpack);
    AddCommand(app, "plist", "Turn JSON into an XML property list", "IN.json", "OUT.plist", MakePropertyList);
});

}  // namespace

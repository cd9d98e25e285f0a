// qvtool pack | unpack | plist

#include <memory>
#include <string>

#include "commands.h"
#include "files.h"
#include "json_objects.h"
#include "output.h"
#include "tool.h"

namespace {

using tool::Booleans;
using tool::Command;
using tool::Failure;
using tool::Object;

struct Arguments {
    std::string input;
    tool::Output output;
    bool booleansAsNumbers = false;
};

// A command with an input and an output, run inside a session of the library.
void SetUp(Command& command, const std::shared_ptr<Arguments>& arguments, const char* input,
           const char* output, void (*run)(const Arguments&)) {
    command.Argument(input, arguments->input, "");
    arguments->output.AddTo(command, output, "- for standard output");
    command.Action([arguments, run] {
        const tool::LibrarySession session;
        run(*arguments);
    });
}

void Pack(const Arguments& arguments) {
    const Booleans booleans = arguments.booleansAsNumbers ? Booleans::kAsNumbers : Booleans::kRefuse;
    const Object root = tool::ReadJsonFile(arguments.input, booleans);
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
    const std::string text = tool::JsonText(root, arguments.input);
    const Object result(QVDataCreate(text.data(), text.size()));
    tool::WriteData(result.Get(), arguments.output);
}

void MakePropertyList(const Arguments& arguments) {
    const Object root = tool::ReadJsonFile(arguments.input, Booleans::kKeep);
    const Object data(QVPlistCreateData(root.Get()));
    tool::WriteData(data.Get(), arguments.output);
}

void SetUpPack(Command pack) {
    const auto arguments = std::make_shared<Arguments>();
    SetUp(pack, arguments, "IN.json", "OUT", Pack);
    pack.Flag("--booleans-as-numbers", arguments->booleansAsNumbers,
              "Store true and false as the numbers 1 and 0; the format cannot read booleans back");
}

const tool::CommandFamily family("formats", [](Command& program) {
    SetUpPack(program.Subcommand("pack", "Turn JSON into the binary object format"));
    Command unpack = program.Subcommand("unpack", "Turn the binary object format into JSON");
    SetUp(unpack, std::make_shared<Arguments>(), "IN", "OUT.json", Unpack);
    Command plist = program.Subcommand("plist", "Turn JSON into an XML property list");
    SetUp(plist, std::make_shared<Arguments>(), "IN.json", "OUT.plist", MakePropertyList);
});

}  // namespace

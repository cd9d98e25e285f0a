// qvtool convert | html

#include <map>
#include <memory>
#include <string>

#include "commands.h"
#include "encoding_names.h"
#include "files.h"
#include "output.h"
#include "tool.h"

namespace {

using tool::Failure;
using tool::Object;

const std::map<std::string, QVLineBreakType>& LineBreakNames() {
    static const std::map<std::string, QVLineBreakType> names = {{"lf", static_cast<QVLineBreakType>(1)},
                                                                 {"cr", static_cast<QVLineBreakType>(2)},
                                                                 {"crlf", static_cast<QVLineBreakType>(3)}};
    return names;
}

struct ConvertArguments {
    std::string input;
    tool::Output output;
    std::string from;
    std::string to;
    std::string lineBreaks;
    bool skipMark = false;
    bool writeMark = false;
};

Object Decode(const Object& data, const ConvertArguments& arguments) {
    if (QVDataGetSize(data.Get()) == 0) return Object(QVStringCreate());
    QVEncodingInfo from = tool::EncodingNames().at(arguments.from);
    from.byteOrderMark = arguments.skipMark ? 1 : 0;
    void* text = QVStringCreateWithData(data.Get(), from);
    if (text == nullptr) throw Failure(arguments.input + ": the bytes are not valid in this encoding");
    return Object(text);
}

// All kinds of line break become line feeds first, so that mixed texts come out even.
void ConvertLineBreaks(const Object& text, QVLineBreakType to) {
    constexpr QVLineBreakType kLineFeed = static_cast<QVLineBreakType>(1);
    for (const int from : {3, 2, 4})
        QVStringConvertLineBreak(text.Get(), static_cast<QVLineBreakType>(from), kLineFeed);
    if (to != kLineFeed) QVStringConvertLineBreak(text.Get(), kLineFeed, to);
}

void Convert(const ConvertArguments& arguments) {
    const Object text = Decode(tool::ReadData(arguments.input), arguments);
    if (!arguments.lineBreaks.empty()) ConvertLineBreaks(text, LineBreakNames().at(arguments.lineBreaks));
    QVEncodingInfo to = tool::EncodingNames().at(arguments.to);
    to.byteOrderMark = arguments.writeMark ? 1 : 0;
    const Object data(QVStringMakeData(text.Get(), to));
    tool::WriteData(data.Get(), arguments.output);
}

void SetUpConvert(tool::Command command) {
    const auto arguments = std::make_shared<ConvertArguments>();
    command.Argument("IN", arguments->input, "");
    arguments->output.AddTo(command, "OUT", "- for standard output");
    command.Option("--from", arguments->from, "The text's encoding", tool::EncodingNames(),
                   tool::Presence::kRequired);
    command.Option("--to", arguments->to,
                   "The encoding to write; what it cannot hold becomes a question mark",
                   tool::EncodingNames(), tool::Presence::kRequired);
    command.Option("--line-breaks", arguments->lineBreaks, "Make all line breaks alike", LineBreakNames());
    command.Flag("--skip-mark", arguments->skipMark, "Skip the byte-order mark that the text begins with");
    command.Flag("--write-mark", arguments->writeMark, "Write a byte-order mark");
    command.Action([arguments] {
        const tool::LibrarySession session;
        Convert(*arguments);
    });
}

struct HtmlArguments {
    std::string input;
    tool::Output output{"-"};
    bool limited = false;
};

void Html(const HtmlArguments& arguments) {
    const Object text = tool::ReadText(arguments.input);
    void* replaced = QVStringByReplacingToHTMLCharSet(text.Get(), arguments.limited ? 1 : 0);
    tool::WriteText(Object(QVRetain(replaced)).Get(), arguments.output);
}

void SetUpHtml(tool::Command command) {
    const auto arguments = std::make_shared<HtmlArguments>();
    command.Argument("IN", arguments->input, "");
    arguments->output.AddTo(command, "OUT", "Standard output when left out", tool::Presence::kOptional);
    command.Flag("--limited", arguments->limited, "Replace the four characters of markup only");
    command.Action([arguments] {
        const tool::LibrarySession session;
        Html(*arguments);
    });
}

const tool::CommandFamily family("text", [](tool::Command& program) {
    SetUpConvert(program.Subcommand("convert", "Convert a text from one encoding to another"));
    SetUpHtml(program.Subcommand("html", "Replace characters of a UTF-8 text by HTML entities"));
});

}  // namespace

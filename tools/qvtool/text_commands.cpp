// qvtool convert | html

#include <memory>
#include <string>

#include "commands.h"
#include "encoding_names.h"
#include "files.h"
#include "tool.h"

namespace {

using tool::Failure;
using tool::Object;

struct ConvertArguments {
    std::string input;
    std::string output;
    QVEncodingInfo from = {};
    QVEncodingInfo to = {};
    bool skipMark = false;
    bool writeMark = false;
    QVLineBreakType lineBreaks = static_cast<QVLineBreakType>(0);
};

Object Decode(const Object& data, const ConvertArguments& arguments) {
    if (QVDataGetSize(data.Get()) == 0) return Object(QVStringCreate());
    QVEncodingInfo from = arguments.from;
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
    if (arguments.lineBreaks != 0) ConvertLineBreaks(text, arguments.lineBreaks);
    QVEncodingInfo to = arguments.to;
    to.byteOrderMark = arguments.writeMark ? 1 : 0;
    const Object data(QVStringMakeData(text.Get(), to));
    tool::WriteData(data.Get(), arguments.output);
}

void AddConvert(CLI::App& app) {
    static const std::map<std::string, QVLineBreakType> kLineBreaks = {
        {"lf", static_cast<QVLineBreakType>(1)},
        {"cr", static_cast<QVLineBreakType>(2)},
        {"crlf", static_cast<QVLineBreakType>(3)}};
    const auto arguments = std::make_shared<ConvertArguments>();
    const auto from = std::make_shared<std::string>();
    const auto to = std::make_shared<std::string>();
    const auto breaks = std::make_shared<std::string>();
    CLI::App* command = app.add_subcommand("convert", "Convert a text from one encoding to another");
    command->add_option("IN", arguments->input)->required();
    command->add_option("OUT", arguments->output, "- for standard output")->required();
    command->add_option("--from", *from, "The text's encoding")
        ->required()
        ->check(CLI::IsMember(tool::EncodingNames(), CLI::ignore_case));
    command->add_option("--to", *to, "The encoding to write; what it cannot hold becomes a question mark")
        ->required()
        ->check(CLI::IsMember(tool::EncodingNames(), CLI::ignore_case));
    command->add_option("--line-breaks", *breaks, "Make all line breaks alike")
        ->check(CLI::IsMember(kLineBreaks, CLI::ignore_case));
    command->add_flag("--skip-mark", arguments->skipMark,
                      "Skip the byte-order mark that the text begins with");
    command->add_flag("--write-mark", arguments->writeMark, "Write a byte-order mark");
    command->callback([=] {
        arguments->from = tool::EncodingNames().at(CLI::detail::to_lower(*from));
        arguments->to = tool::EncodingNames().at(CLI::detail::to_lower(*to));
        if (!breaks->empty()) arguments->lineBreaks = kLineBreaks.at(CLI::detail::to_lower(*breaks));
        const tool::LibrarySession session;
        Convert(*arguments);
    });
}

struct HtmlArguments {
    std::string input;
    std::string output = "-";
    bool limited = false;
};

void AddHtml(CLI::App& app) {
    const auto arguments = std::make_shared<HtmlArguments>();
    CLI::App* command = app.add_subcommand("html", "Replace characters of a UTF-8 text by HTML entities");
    command->add_option("IN", arguments->input)->required();
    command->add_option("OUT", arguments->output, "Standard output when left out");
    command->add_flag("--limited", arguments->limited, "Replace the four characters of markup only");
    command->callback([arguments] {
        const tool::LibrarySession session;
        const Object text = tool::ReadText(arguments->input);
        void* replaced = QVStringByReplacingToHTMLCharSet(text.Get(), arguments->limited ? 1 : 0);
        tool::WriteText(Object(QVRetain(replaced)).Get(), arguments->output);
    });
}

const tool::CommandFamily family("text", [](CLI::App& app) {
    AddConvert(app);
    AddHtml(app);
});

}  // namespace

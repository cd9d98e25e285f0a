// qvtool css list | show | charset

#include <cstdio>
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

std::string Utf8(void* string) {
    return string == nullptr ? "" : QVStringGetUTF8String(string);
}

// Runs `body` with each element of the sheet and its range, a pool around each.
template <class Body>
void ForEachElement(const std::string& path, void* parser, Body body) {
    unsigned int end = 0;
    for (;;) {
        const Object pool(QVTemporaryObjectsPoolCreate());
        unsigned int start = 0;
        unsigned int length = 0;
        int error = 0;
        void* element = QVCSSParserFindNextCSSElement(parser, end, &start, &length, &error);
        if (error != 0)
            throw Failure(path + ": " + tool::ResultText(error) + " behind character " + std::to_string(end));
        if (element == nullptr) return;
        body(element, start, length);
        end = start + length;
    }
}

std::string SelectorLine(void* element) {
    void* selectors = QVCSSElementGetSelectors(element);
    std::string line;
    for (unsigned long i = 0; i < QVArrayGetCount(selectors); ++i) {
        line += (i == 0 ? "" : " ") + Utf8(QVArrayGetObjectAtIndex(selectors, i));
    }
    return line;
}

void List(const std::string& path) {
    const Object sheet = tool::ReadText(path);
    const Object parser(QVCSSParserCreateWithString(sheet.Get()));
    std::printf("%10s %8s %10s  %s\n", "start", "length", "properties", "selectors");
    ForEachElement(path, parser.Get(), [](void* element, unsigned int start, unsigned int length) {
        std::printf("%10u %8u %10lu  %s\n", start, length,
                    QVArrayGetCount(QVCSSElementGetPropertyOrder(element)), SelectorLine(element).c_str());
    });
}

// The element's text has no closing brace, by definition; a reader of the terminal expects one.
void Show(const std::string& path, const std::string& selector) {
    const Object sheet = tool::ReadText(path);
    const Object parser(QVCSSParserCreateWithString(sheet.Get()));
    const Object wanted(QVStringCreateWithCString(selector.c_str()));
    void* element = QVCSSParserFindCSSElementWithSelector(parser.Get(), wanted.Get(), 0, nullptr, nullptr);
    if (element == nullptr) throw Failure(path + ": no rule begins with the selector " + selector);
    const bool hasBody = QVArrayGetCount(QVCSSElementGetPropertyOrder(element)) != 0;
    std::printf("%s%s\n", Utf8(QVCSSElementGetString(element)).c_str(), hasBody ? "}" : "");
}

struct CharsetArguments {
    std::string input;
    std::string encoding;
    tool::Output output{"-"};
};

void PrintCharset(void* parser, const std::string& path) {
    void* element = QVCSSParserFindCSSElementWithSelector(parser, QVSTR(L"@charset"), 0, nullptr, nullptr);
    if (element == nullptr) throw Failure(path + ": the sheet has no @charset rule");
    std::printf("%s\n", Utf8(QVCSSElementGetString(element)).c_str());
}

void SetCharset(const Object& sheet, void* parser, const CharsetArguments& arguments) {
    const QVEncodingInfo encoding = tool::EncodingNames().at(arguments.encoding);
    void* created = QVCSSParserCreateCharSetElement(parser, encoding);
    if (created == nullptr) throw Failure(arguments.encoding + " has no name that a style sheet could use");
    const Object rule(created);
    unsigned int start = 0;
    unsigned int length = 0;
    void* old = QVCSSParserFindCSSElementWithSelector(parser, QVSTR(L"@charset"), 0, &start, &length);
    QVCSSParserReplaceCSSElement(parser, rule.Get(), start, length);
    if (old == nullptr) {
        QVStringReplaceString(sheet.Get(), QVSTR(L"\n"), QVStringGetLength(QVCSSElementGetString(rule.Get())),
                              0);
    }
    tool::WriteText(sheet.Get(), arguments.output);
}

void Charset(const CharsetArguments& arguments) {
    const Object sheet = tool::ReadText(arguments.input);
    const Object parser(QVCSSParserCreateWithString(sheet.Get()));
    if (arguments.encoding.empty()) return PrintCharset(parser.Get(), arguments.input);
    SetCharset(sheet, parser.Get(), arguments);
}

void SetUpList(tool::Command list) {
    const auto sheet = std::make_shared<std::string>();
    list.Argument("SHEET", *sheet, "");
    list.Action([sheet] {
        const tool::LibrarySession session;
        List(*sheet);
    });
}

void SetUpShow(tool::Command show) {
    const auto sheet = std::make_shared<std::string>();
    const auto selector = std::make_shared<std::string>();
    show.Argument("SHEET", *sheet, "");
    show.Argument("SELECTOR", *selector, "");
    show.Action([sheet, selector] {
        const tool::LibrarySession session;
        Show(*sheet, *selector);
    });
}

void SetUpCharset(tool::Command charset) {
    const auto arguments = std::make_shared<CharsetArguments>();
    charset.Argument("SHEET", arguments->input, "");
    arguments->output.AddTo(charset, "OUT", "Standard output when left out", tool::Presence::kOptional);
    charset.Option("--set", arguments->encoding, "The encoding to name", tool::EncodingNames());
    charset.Action([arguments] {
        const tool::LibrarySession session;
        Charset(*arguments);
    });
}

const tool::CommandFamily family("css", [](tool::Command& program) {
    tool::Command css = program.Subcommand("css", "Look into style sheets and name their encoding");
    SetUpList(css.Subcommand("list", "List the rules of a sheet"));
    SetUpShow(css.Subcommand("show", "Print the first rule that begins with a selector"));
    SetUpCharset(css.Subcommand("charset", "Print the @charset rule, or write the sheet with another one"));
});

}  // namespace

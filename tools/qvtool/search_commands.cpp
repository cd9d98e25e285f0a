// qvtool search

#include <cstdio>
#include <memory>
#include <string>

#include <QVFoundation/QVFoundation.h>

#include "commands.h"
#include "tool.h"

namespace {

using tool::Failure;

struct Arguments {
    std::string pattern;
    std::string file;
    bool hexadecimal = false;
};

int HexadecimalDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    throw Failure("the pattern is not made of hexadecimal digits");
}

std::string BytesOfHexadecimal(const std::string& digits) {
    if (digits.size() % 2 != 0) throw Failure("the pattern has half a byte too much");
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(HexadecimalDigit(digits[i]) * 16 + HexadecimalDigit(digits[i + 1]));
    }
    return bytes;
}

const unsigned char* BytePointer(const void* bytes) {
    return static_cast<const unsigned char*>(bytes);
}

void Search(const Arguments& arguments) {
    const tool::LibrarySession session;
    const std::string pattern =
        arguments.hexadecimal ? BytesOfHexadecimal(arguments.pattern) : arguments.pattern;
    if (pattern.empty()) throw Failure("an empty pattern is found nowhere");
    const tool::Object path = tool::PathText(arguments.file);
    void* contents = QVDataCreateFromFile(path.Get());
    if (contents == nullptr) throw Failure(arguments.file + ": cannot be read");

    unsigned long position = 0;
    if (!QVBMSearchPattern(BytePointer(QVDataGetImutableBuffer(contents)), QVDataGetSize(contents),
                           BytePointer(pattern.data()), pattern.size(), &position)) {
        throw Failure(arguments.file + ": not found");
    }
    std::printf("%lu\n", position);
}

const tool::CommandFamily family("search", [](tool::Command& program) {
    tool::Command search = program.Subcommand(
        "search", "Print where in a file the library's pattern search finds a run of bytes");
    const auto arguments = std::make_shared<Arguments>();
    search.Argument("pattern", arguments->pattern, "The bytes to search for, as text");
    search.Argument("file", arguments->file, "The file to read");
    search.Flag("--hex", arguments->hexadecimal, "The pattern is given as hexadecimal digits");
    search.Footer("The search may step over a place where the pattern stands; see QVPatternSearch.h.");
    search.Action([arguments] { Search(*arguments); });
});

}  // namespace

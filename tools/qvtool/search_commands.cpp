// qvtool search

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <QVFoundation/QVFoundation.h>

#include "commands.h"
#include "files.h"
#include "progress.h"
#include "progress_switches.h"
#include "tool.h"

namespace {

using tool::Failure;

struct Arguments {
    std::string pattern;
    std::string file;
    bool hexadecimal = false;
    tool::ProgressSwitches switches;
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

// The search wants the whole file in memory; reading it is what takes long.
std::vector<unsigned char> Contents(const Arguments& arguments) {
    constexpr std::size_t kPieceSize = 1 << 20;
    const tool::Object file = tool::OpenForReading(arguments.file);
    const std::uint64_t size = QVFileGetSize(file.Get());
    tool::Progress progress(size, arguments.switches.Mode());
    std::vector<unsigned char> contents;
    contents.reserve(tool::MemorySize(size));
    tool::ReadPieces(file, arguments.file, kPieceSize, [&](const unsigned char* bytes, std::size_t count) {
        contents.insert(contents.end(), bytes, bytes + count);
        progress.Advance(count);
    });
    return contents;
}

void Search(const Arguments& arguments) {
    const tool::LibrarySession session;
    const std::string pattern =
        arguments.hexadecimal ? BytesOfHexadecimal(arguments.pattern) : arguments.pattern;
    if (pattern.empty()) throw Failure("an empty pattern is found nowhere");
    const std::vector<unsigned char> contents = Contents(arguments);
    unsigned long position = 0;
    if (!QVBMSearchPattern(contents.data(), contents.size(), BytePointer(pattern.data()), pattern.size(),
                           &position)) {
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
    arguments->switches.AddTo(search, "No progress bar");
    search.Footer("The search may step over a place where the pattern stands; see QVPatternSearch.h.");
    search.Action([arguments] { Search(*arguments); });
});

}  // namespace

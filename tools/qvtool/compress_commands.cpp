// qvtool compress

#include <cstdio>
#include <memory>
#include <string>

#include <QVFoundation/QVFoundation.h>

#include "commands.h"
#include "files.h"
#include "output.h"
#include "progress.h"
#include "progress_switches.h"
#include "tool.h"

namespace {

using tool::Failure;
using tool::Object;

// Blocks stand alone, each for 32768 bytes: pieces of a multiple of that compress to what the whole file
// does.
constexpr unsigned long kPieceSize = 32UL * 32768;

struct Arguments {
    std::string input;
    tool::Output output;
    tool::ProgressSwitches switches;
};

// Returns the number of bytes read.
std::uint64_t WriteBlocks(const Arguments& arguments, const Object& input, const Object& output) {
    const Object destination(QVStreamCreateWithFile(output.Get()));
    const Object encoder(QVDeflateCreate());
    const std::uint64_t size = QVFileGetSize(input.Get());
    tool::Progress progress(size, arguments.switches.Mode());
    std::uint64_t done = 0;
    tool::ReadPieces(input, arguments.input, kPieceSize, [&](unsigned char* bytes, std::size_t count) {
        const Object data(QVDataCreateNoCopy(bytes, count, 0));
        const Object source(QVStreamCreateWithMemory(data.Get()));
        tool::Require(QVDeflateEncode(encoder.Get(), destination.Get(), source.Get()), arguments.output.path);
        done += count;
        progress.Advance(count);
    });
    if (done != size) throw Failure(arguments.input + ": changed while it was read");
    return done;
}

void Compress(const Arguments& arguments) {
    const tool::LibrarySession session;
    const Object input = tool::OpenForReading(arguments.input);
    arguments.output.CheckIsNot(arguments.input, "the input");
    tool::OutputFile output(arguments.output);
    const Object file = tool::FileAt(output.Path());
    tool::Require(QVFileOpenForWriting(file.Get()), arguments.output.path);
    const std::uint64_t read = WriteBlocks(arguments, input, file);
    const std::uint64_t written = QVFileGetSize(file.Get());
    tool::Require(QVFileClose(file.Get()), arguments.output.path);
    output.PutInPlace();
    if (!arguments.switches.quiet) {
        const double percent =
            read == 0 ? 100.0 : 100.0 * static_cast<double>(written) / static_cast<double>(read);
        std::printf("%s bytes to %s (%.1f %%)\n", tool::Grouped(read).c_str(), tool::Grouped(written).c_str(),
                    percent);
    }
}

const tool::CommandFamily family("compress", [](tool::Command& program) {
    tool::Command compress = program.Subcommand("compress", "Write a file in the compressed block format");
    const auto arguments = std::make_shared<Arguments>();
    compress.Argument("input", arguments->input, "The file to read");
    arguments->output.AddTo(compress, "output", "The file to write");
    arguments->switches.AddTo(compress, "No progress bar and no summary; errors only");
    compress.Footer(
        "This version has no command that reads the format; docs/compressed-blocks.md describes it.");
    compress.Action([arguments] { Compress(*arguments); });
});

}  // namespace

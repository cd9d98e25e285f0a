// qvtool compress

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <QVFoundation/QVFoundation.h>

#include "commands.h"
#include "progress.h"
#include "tool.h"

namespace {

using tool::Failure;
using tool::Object;

// Blocks stand alone, each for 32768 bytes: pieces of a multiple of that compress to what the whole file
// does.
constexpr unsigned long kPieceSize = 32UL * 32768;

struct Arguments {
    std::string input;
    std::string output;
    bool overwrite = false;
    bool progress = false;
    bool noProgress = false;
    bool quiet = false;

    [[nodiscard]] tool::ProgressMode Mode() const {
        if (quiet || noProgress) return tool::ProgressMode::kNever;
        return progress ? tool::ProgressMode::kAlways : tool::ProgressMode::kWhenTerminal;
    }
};

Object FileAt(const std::string& path) {
    Object file(QVFileCreate());
    const Object text = tool::PathText(path);
    QVFileSetPath(file.Get(), text.Get());
    return file;
}

// Takes an output that is not whole away again.
class OutputFile final {
public:
    explicit OutputFile(const std::string& path) : path_(path), file_(FileAt(path)) {
        tool::Require(QVFileOpenForWriting(file_.Get()), path);
        tool::Require(QVFileSetSize(file_.Get(), 0), path);
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile() {
        if (!isWhole_) QVFileDelete(file_.Get(), 0);
    }

    [[nodiscard]] void* Get() const { return file_.Get(); }
    void Finish() {
        tool::Require(QVFileClose(file_.Get()), path_);
        isWhole_ = true;
    }

private:
    std::string path_;
    Object file_;
    bool isWhole_ = false;
};

void Compress(const Arguments& arguments) {
    const tool::LibrarySession session;
    const Object input = FileAt(arguments.input);
    tool::Require(QVFileOpenForReading(input.Get()), arguments.input);
    std::error_code ignored;
    if (std::filesystem::equivalent(arguments.input, arguments.output, ignored)) {
        throw Failure(arguments.output + ": is the input");
    }
    if (!arguments.overwrite && std::filesystem::exists(arguments.output, ignored)) {
        throw Failure(arguments.output + ": exists (--overwrite replaces it)");
    }
    OutputFile output(arguments.output);
    const Object destination(QVStreamCreateWithFile(output.Get()));
    const Object encoder(QVDeflateCreate());

    const std::uint64_t size = QVFileGetSize(input.Get());
    tool::Progress progress(size, arguments.Mode());
    std::vector<unsigned char> piece(kPieceSize);
    std::uint64_t done = 0;
    for (;;) {
        unsigned long count = 0;
        const int read = QVFileReadBytes(input.Get(), piece.data(), kPieceSize, &count, 0);
        if (read != QVErrEOF) tool::Require(read, arguments.input);
        if (count == 0) break;
        const Object data(QVDataCreateNoCopy(piece.data(), count, 0));
        const Object source(QVStreamCreateWithMemory(data.Get()));
        tool::Require(QVDeflateEncode(encoder.Get(), destination.Get(), source.Get()), arguments.output);
        done += count;
        progress.Advance(count);
    }
    progress.Clear();
    if (done != size) throw Failure(arguments.input + ": changed while it was read");
    const std::uint64_t written = QVFileGetSize(output.Get());
    output.Finish();
    if (!arguments.quiet) {
        const double percent =
            done == 0 ? 100.0 : 100.0 * static_cast<double>(written) / static_cast<double>(done);
        std::printf("%s bytes to %s (%.1f %%)\n", tool::Grouped(done).c_str(), tool::Grouped(written).c_str(),
                    percent);
    }
}

const tool::CommandFamily family("compress", [](tool::Command& program) {
    tool::Command compress = program.Subcommand("compress", "Write a file in the compressed block format");
    const auto arguments = std::make_shared<Arguments>();
    compress.Argument("input", arguments->input, "The file to read");
    compress.Argument("output", arguments->output, "The file to write");
    compress.Flag("--overwrite", arguments->overwrite, "Replace an existing file");
    compress.Flag("--progress", arguments->progress, "Show a progress bar even when stderr is no terminal");
    compress.Flag("--no-progress", arguments->noProgress, "Show no progress bar");
    compress.Exclude("--progress", "--no-progress");
    compress.Flag("-q,--quiet", arguments->quiet, "No progress bar and no summary; errors only");
    compress.Footer(
        "This version has no command that reads the format; docs/compressed-blocks.md describes it.");
    compress.Action([arguments] { Compress(*arguments); });
});

}  // namespace

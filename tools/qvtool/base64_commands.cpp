// qvtool base64 encode | decode

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

#include <QVFoundation/QVFoundation.h>

#include "commands.h"
#include "output.h"
#include "progress.h"
#include "progress_switches.h"
#include "tool.h"

namespace {

using tool::Failure;

// Whole groups of 3 bytes and of 4 characters, so that the pieces' results join to the result of the whole.
constexpr std::size_t kPiece = 12 << 16;

struct Arguments {
    std::string file = "-";
    bool ignoreSpace = false;
    tool::ProgressSwitches switches;
};

// The named file, or standard input for "-".
class Input final {
public:
    explicit Input(const std::string& name)
        : name_(name == "-" ? "standard input" : name),
          file_(name == "-" ? stdin : std::fopen(name.c_str(), "rb")) {
        if (file_ == nullptr) throw Failure(tool::SystemText(name_));
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;
    ~Input() {
        if (file_ != stdin) std::fclose(file_);
    }

    [[nodiscard]] const std::string& Name() const { return name_; }

    // 0 when it is not known.
    [[nodiscard]] std::uint64_t Size() const {
        struct stat status {};
        if (fstat(fileno(file_), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
        return static_cast<std::uint64_t>(status.st_size);
    }

    // Fewer bytes than asked at the end only.
    std::size_t Read(char* bytes, std::size_t size) {
        const std::size_t count = std::fread(bytes, 1, size, file_);
        if (std::ferror(file_) != 0) throw Failure(tool::SystemText(name_));
        return count;
    }

private:
    std::string name_;
    std::FILE* file_;
};

void Encode(const Arguments& arguments) {
    const tool::LibrarySession session;
    Input input(arguments.file);
    tool::Progress progress(input.Size(), arguments.switches.Mode());
    std::vector<char> piece(kPiece);
    for (std::size_t size = kPiece; size == kPiece;) {
        size = input.Read(piece.data(), kPiece);
        const tool::Object pool(QVTemporaryObjectsPoolCreate());
        void* text = QVBase64Encode(piece.data(), size);
        if (text == nullptr) throw Failure("out of memory");
        tool::PrintData(text);
        progress.Advance(size);
    }
}

bool IsSpace(char c) {
    return std::strchr(" \t\r\n\f\v", c) != nullptr && c != '\0';
}

// Hands on a text's characters in pieces, without its white space if asked.
class Characters final {
public:
    Characters(Input& input, bool ignoreSpace, tool::Progress& progress)
        : input_(input), ignoreSpace_(ignoreSpace), progress_(progress) {}

    // Fewer characters than a piece at the end only.
    std::string NextPiece() {
        std::string text;
        while (text.size() < kPiece) {
            std::string more(kPiece - text.size(), '\0');
            more.resize(input_.Read(more.data(), more.size()));
            if (more.empty()) break;
            progress_.Advance(more.size());
            if (ignoreSpace_) std::erase_if(more, IsSpace);
            text += more;
        }
        return text;
    }

private:
    Input& input_;
    bool ignoreSpace_;
    tool::Progress& progress_;
};

void Decode(const Arguments& arguments) {
    const tool::LibrarySession session;
    Input input(arguments.file);
    tool::Progress progress(input.Size(), arguments.switches.Mode());
    Characters characters(input, arguments.ignoreSpace, progress);
    for (bool more = true; more;) {
        const std::string text = characters.NextPiece();
        const tool::Object pool(QVTemporaryObjectsPoolCreate());
        void* bytes = QVBase64Decode(text.data(), text.size());
        if (bytes == nullptr) {
            throw Failure(input.Name() + (arguments.ignoreSpace
                                              ? ": not Base64"
                                              : ": not Base64 without white space (see --ignore-space)"));
        }
        tool::PrintData(bytes);
        // The first "=" ends a text.
        more = text.size() == kPiece && text.find('=') == std::string::npos;
    }
}

const tool::CommandFamily family("base64", [](tool::Command& program) {
    tool::Command base64 = program.Subcommand("base64", "Turn bytes into Base64 text and back");
    const auto arguments = std::make_shared<Arguments>();
    tool::Command encode =
        base64.Subcommand("encode", "Print a file's bytes as Base64, in one line without its end");
    tool::Command decode =
        base64.Subcommand("decode", "Print the bytes that a file's Base64 text stands for");
    for (tool::Command command : {encode, decode}) {
        command.Argument("file", arguments->file, "The file to read; \"-\", the default, is standard input",
                         tool::Presence::kOptional);
        arguments->switches.AddTo(command, "No progress bar");
    }
    decode.Flag("--ignore-space", arguments->ignoreSpace,
                "Leave white space and line breaks out; without this they are errors");
    encode.Action([arguments] { Encode(*arguments); });
    decode.Action([arguments] { Decode(*arguments); });
});

}  // namespace

// qvtool encrypt, decrypt and md5

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdlib.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <QVFoundation/QVFoundation.h>

#include "commands.h"
#include "member_index.h"
#include "secret_key.h"
#include "tool.h"

namespace {

using tool::Failure;
using tool::Object;

Object FileAt(const std::string& path) {
    Object file(QVFileCreate());
    const Object text = tool::PathText(path);
    QVFileSetPath(file.Get(), text.Get());
    return file;
}

Object FileToRead(const std::string& path) {
    Object file = FileAt(path);
    tool::Require(QVFileOpenForReading(file.Get()), path);
    return file;
}

// ---- encrypt, decrypt ----

struct ContainerArguments {
    std::string input;
    std::string output;
    std::string keyFile;
    bool quiet = false;
};

std::atomic<const char*> unfinishedPath{nullptr};

// Lets a signal that ends the program remove the unfinished file first.
void RemoveUnfinishedFileAtSignals() {
    struct sigaction action {};
    action.sa_flags = static_cast<int>(SA_RESETHAND);  // raised again, the signal has its ordinary effect
    action.sa_handler = [](int signal) {
        if (const char* path = unfinishedPath.load()) unlink(path);
        raise(signal);
    };
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        struct sigaction before {};
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_DFL) {
            sigaction(signal, &action, nullptr);
        }
    }
}

// Written under a name of its own beside the wanted one, readable by its owner alone, and put in place when
// it is whole. Until then an older file stays as it is, and a failure leaves nothing behind.
class ReplacementFile final {
public:
    explicit ReplacementFile(const std::string& path) : target_(Target(path)) {
        const std::filesystem::path folder = std::filesystem::path(target_).parent_path();
        temporary_ = (folder / ".qvtool-XXXXXX").string();
        RemoveUnfinishedFileAtSignals();
        const int descriptor = mkstemp(temporary_.data());
        if (descriptor < 0) throw Failure(tool::SystemText(path));
        unfinishedPath = temporary_.c_str();
        close(descriptor);
    }
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;
    ~ReplacementFile() {
        if (!isInPlace_) unlink(temporary_.c_str());
        unfinishedPath = nullptr;
    }

    [[nodiscard]] const std::string& Path() const { return temporary_; }

    // Call with the file closed.
    void PutInPlace() {
        if (chmod(temporary_.c_str(), Permissions()) != 0 ||
            std::rename(temporary_.c_str(), target_.c_str()) != 0) {
            throw Failure(tool::SystemText(target_));
        }
        isInPlace_ = true;
    }

private:
    // A link is followed, so that it stays and its file is replaced. A device or a folder is no place.
    static std::string Target(const std::string& path) {
        std::error_code error;
        const std::filesystem::file_status status = std::filesystem::status(path, error);
        if (!std::filesystem::exists(status)) return path;
        if (!std::filesystem::is_regular_file(status)) throw Failure(path + ": not a regular file");
        const std::filesystem::path target = std::filesystem::canonical(path, error);
        if (error) throw Failure(path + ": " + error.message());
        return target.string();
    }

    // The older file's, or those of any new file.
    [[nodiscard]] mode_t Permissions() const {
        struct stat older {};
        if (stat(target_.c_str(), &older) == 0) return older.st_mode & 0777;
        const mode_t mask = umask(0);
        umask(mask);
        return 0666 & ~mask;
    }

    std::string target_;
    std::string temporary_;
    bool isInPlace_ = false;
};

void RefuseSameFile(const std::string& output, const std::string& other, const char* what) {
    std::error_code ignored;
    if (std::filesystem::equivalent(output, other, ignored)) throw Failure(output + ": is " + what);
}

// A library call that turns the source's next `size` bytes into what the destination gets.
using Work = int (*)(void* crypto, unsigned long long size);

// Returns the input's size.
std::uint64_t Run(const ContainerArguments& arguments, const Object& input, const tool::SecretKey& key,
                  Work work) {
    ReplacementFile output(arguments.output);
    const Object file = FileAt(output.Path());
    tool::Require(QVFileOpenForWriting(file.Get()), arguments.output);

    const Object crypto(QVCryptoCreate());
    const auto keySize = static_cast<unsigned long>(key.Size());
    tool::Require(QVCryptoSetKey(crypto.Get(), key.Bytes(), keySize, keySize), "the key");
    const Object source(QVStreamCreateWithFile(input.Get()));
    const Object destination(QVStreamCreateWithFile(file.Get()));
    QVCryptoSetSrcStream(crypto.Get(), source.Get());
    QVCryptoSetDstStream(crypto.Get(), destination.Get());

    const std::uint64_t size = QVFileGetSize(input.Get());
    const int code = work(crypto.Get(), size);
    if (code == QVErrHashMismatch) throw Failure(arguments.input + ": wrong key or damaged file (-400)");
    if (code == QVErrFormat) throw Failure(arguments.input + ": not an encrypted container (-5)");
    tool::Require(code, arguments.input + " to " + arguments.output);
    tool::Require(QVFileClose(file.Get()), arguments.output);
    output.PutInPlace();
    return size;
}

void Transform(const ContainerArguments& arguments, Work work, const char* verb) {
    const tool::LibrarySession session;
    const Object input = FileToRead(arguments.input);
    RefuseSameFile(arguments.output, arguments.input, "the input");
    tool::SecretKey key;
    if (!arguments.keyFile.empty()) {
        RefuseSameFile(arguments.output, arguments.keyFile, "the key file");
        key.ReadFile(arguments.keyFile);
    } else {
        key.Ask("Key: ");
        if (work == QVCryptoEncode) {
            tool::SecretKey again;
            again.Ask("Key again: ");
            if (!(key == again)) throw Failure("the two keys differ");
        }
    }
    const auto start = std::chrono::steady_clock::now();
    const std::uint64_t size = Run(arguments, input, key, work);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!arguments.quiet) {
        std::printf("%s: %s bytes, %.1f MB/s\n", verb, tool::Grouped(size).c_str(),
                    tool::Rate(size, seconds));
    }
}

void SetUpContainer(tool::Command command, Work work, const char* verb) {
    const auto arguments = std::make_shared<ContainerArguments>();
    command.Argument("input", arguments->input, "The file to read");
    command.Argument("output", arguments->output, "The file to write; an older one is replaced at the end");
    command.Option("--key-file", arguments->keyFile,
                   "The file whose bytes, without one line feed at the end, are the key (1 to 56 bytes); "
                   "without this option the terminal asks for it");
    command.Flag("-q,--quiet", arguments->quiet, "No summary; errors only");
    command.Footer(
        "Encrypted containers serve compatibility with the library's own files. They are no choice "
        "for new secrets; docs/encrypted-container.md says why.");
    command.Action([arguments, work, verb] { Transform(*arguments, work, verb); });
}

// ---- md5 ----

constexpr unsigned long kPieceSize = 1UL << 20;

std::string Digest(void* md5, const std::string& path, std::vector<unsigned char>& piece) {
    const Object file = FileToRead(path);
    QVMD5Initialize(md5);
    for (;;) {
        unsigned long count = 0;
        const int code = QVFileReadBytes(file.Get(), piece.data(), kPieceSize, &count, 0);
        if (code != QVErrEOF) tool::Require(code, path);
        if (count == 0) break;
        QVMD5Update(md5, piece.data(), count);
    }
    QVMD5Finish(md5);
    const Object text(QVStringCreateWithHashValue128(QVMD5GetHashValue(md5)));
    const std::wstring digits = QVStringGetBuffer(text.Get());
    return {digits.begin(), digits.end()};
}

void PrintDigests(const std::vector<std::string>& paths) {
    const tool::LibrarySession session;
    const Object md5(QVMD5Create());
    std::vector<unsigned char> piece(kPieceSize);
    std::size_t failed = 0;
    for (const std::string& path : paths) {
        try {
            std::printf("%s  %s\n", Digest(md5.Get(), path, piece).c_str(), tool::OneLine(path).c_str());
        } catch (const Failure& failure) {
            std::fprintf(stderr, "qvtool: %s\n", failure.what());
            ++failed;
        }
    }
    if (std::fflush(stdout) != 0) throw Failure(tool::SystemText("standard output"));
    if (failed > 0) throw Failure(tool::Grouped(failed) + " files could not be read");
}

void SetUpMD5(tool::Command md5) {
    const auto paths = std::make_shared<std::vector<std::string>>();
    md5.Arguments("files", *paths, "The files to read");
    md5.Footer(
        "For a size whose remainder by 64 is 56 to 63, the digest is this library's own value and not "
        "that of standard MD5.");
    md5.Action([paths] { PrintDigests(*paths); });
}

const tool::CommandFamily family("crypto", [](tool::Command& program) {
    SetUpContainer(program.Subcommand("encrypt", "Write a file as an encrypted container"), QVCryptoEncode,
                   "encrypted");
    SetUpContainer(program.Subcommand("decrypt", "Write the plaintext of an encrypted container"),
                   QVCryptoDecode, "decrypted");
    SetUpMD5(program.Subcommand("md5", "Print the MD5 digests of files"));
});

}  // namespace

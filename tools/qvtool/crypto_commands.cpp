// qvtool encrypt, decrypt and md5

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <QVFoundation/QVFoundation.h>

#include "commands.h"
#include "files.h"
#include "output.h"
#include "progress.h"
#include "progress_switches.h"
#include "secret_key.h"
#include "tool.h"

namespace {

using tool::Failure;
using tool::Object;

// ---- encrypt, decrypt ----

struct ContainerArguments {
    std::string input;
    tool::Output output;
    std::string keyFile;
    tool::ProgressSwitches switches;
};

// A library call that turns the source's next `size` bytes into what the destination gets.
using Work = int (*)(void* crypto, unsigned long long size);

// The call is one piece and its result about as long as the source, so the result's growth tells how far it
// is. While a container's fingerprint is checked nothing grows yet.
int RunWatched(const Object& crypto, Work work, std::uint64_t size, const std::string& growing,
               tool::ProgressMode mode) {
    tool::Progress progress(size, mode);
    int code = 0;
    {
        const tool::GrowthWatch watch(growing, progress);
        code = work(crypto.Get(), size);
    }
    if (code == QVNoErr) progress.Advance(size);
    return code;
}

// Returns the input's size.
std::uint64_t Run(const ContainerArguments& arguments, const Object& input, const tool::SecretKey& key,
                  Work work) {
    tool::OutputFile output(arguments.output);
    const Object file = tool::FileAt(output.Path());
    tool::Require(QVFileOpenForWriting(file.Get()), arguments.output.path);

    const Object crypto(QVCryptoCreate());
    const auto keySize = static_cast<unsigned long>(key.Size());
    tool::Require(QVCryptoSetKey(crypto.Get(), key.Bytes(), keySize, keySize), "the key");
    const Object source(QVStreamCreateWithFile(input.Get()));
    const Object destination(QVStreamCreateWithFile(file.Get()));
    QVCryptoSetSrcStream(crypto.Get(), source.Get());
    QVCryptoSetDstStream(crypto.Get(), destination.Get());

    const std::uint64_t size = QVFileGetSize(input.Get());
    const int code = RunWatched(crypto, work, size, output.Path(), arguments.switches.Mode());
    if (code == QVErrHashMismatch) throw Failure(arguments.input + ": wrong key or damaged file (-400)");
    if (code == QVErrFormat) throw Failure(arguments.input + ": not an encrypted container (-5)");
    tool::Require(code, arguments.input + " to " + arguments.output.path);
    tool::Require(QVFileClose(file.Get()), arguments.output.path);
    output.PutInPlace();
    return size;
}

void GetKey(const ContainerArguments& arguments, bool askTwice, tool::SecretKey& key) {
    if (!arguments.keyFile.empty()) return key.ReadFile(arguments.keyFile);
    key.Ask("Key: ");
    if (!askTwice) return;
    tool::SecretKey again;
    again.Ask("Key again: ");
    if (!(key == again)) throw Failure("the two keys differ");
}

void Transform(const ContainerArguments& arguments, Work work, const char* verb) {
    const tool::LibrarySession session;
    const Object input = tool::OpenForReading(arguments.input);
    arguments.output.CheckIsNot(arguments.input, "the input");
    arguments.output.CheckIsNot(arguments.keyFile, "the key file");
    arguments.output.Check();  // before the user is asked for a key in vain
    tool::SecretKey key;
    GetKey(arguments, work == QVCryptoEncode, key);
    const auto start = std::chrono::steady_clock::now();
    const std::uint64_t size = Run(arguments, input, key, work);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!arguments.switches.quiet) {
        std::printf("%s: %s bytes, %.1f MB/s\n", verb, tool::Grouped(size).c_str(),
                    tool::Rate(size, seconds));
    }
}

void SetUpContainer(tool::Command command, Work work, const char* verb) {
    const auto arguments = std::make_shared<ContainerArguments>();
    command.Argument("input", arguments->input, "The file to read");
    arguments->output.AddTo(command, "output", "The file to write");
    command.Option("--key-file", arguments->keyFile,
                   "The file whose bytes, without one line feed at the end, are the key (1 to 56 bytes); "
                   "without this option the terminal asks for it");
    arguments->switches.AddTo(command, "No progress bar and no summary; errors only");
    command.Footer(
        "Encrypted containers serve compatibility with the library's own files. They are no choice "
        "for new secrets; docs/encrypted-container.md says why.");
    command.Action([arguments, work, verb] { Transform(*arguments, work, verb); });
}

// ---- md5 ----

struct DigestArguments {
    std::vector<std::string> paths;
    tool::ProgressSwitches switches;
};

std::uint64_t TotalSize(const std::vector<std::string>& paths) {
    std::uint64_t total = 0;
    for (const std::string& path : paths) {
        std::error_code error;
        const std::uint64_t size = std::filesystem::file_size(path, error);
        if (!error) total += size;
    }
    return total;
}

std::string Digest(void* md5, const std::string& path, tool::Progress& progress) {
    constexpr std::size_t kPieceSize = 1 << 20;
    const Object file = tool::OpenForReading(path);
    QVMD5Initialize(md5);
    tool::ReadPieces(file, path, kPieceSize, [&](const unsigned char* bytes, std::size_t size) {
        QVMD5Update(md5, bytes, size);
        progress.Advance(size);
    });
    QVMD5Finish(md5);
    const Object text(QVStringCreateWithHashValue128(QVMD5GetHashValue(md5)));
    return QVStringGetUTF8String(text.Get());
}

void PrintDigests(const DigestArguments& arguments) {
    const tool::LibrarySession session;
    const Object md5(QVMD5Create());
    tool::Progress progress(TotalSize(arguments.paths), arguments.switches.Mode());
    tool::ErrorCount errors;
    for (const std::string& path : arguments.paths) {
        try {
            const std::string digest = Digest(md5.Get(), path, progress);
            progress.Clear();
            std::printf("%s  %s\n", digest.c_str(), tool::OneLine(path).c_str());
        } catch (const Failure& failure) {
            progress.Clear();
            errors.Tell(failure.what());
        }
    }
    errors.Finish("file", "files", "could not be read");
}

void SetUpMD5(tool::Command md5) {
    const auto arguments = std::make_shared<DigestArguments>();
    md5.Arguments("files", arguments->paths, "The files to read");
    arguments->switches.AddTo(md5, "No progress bar");
    md5.Footer(
        "For a size whose remainder by 64 is 56 to 63, the digest is this library's own value and not "
        "that of standard MD5.");
    md5.Action([arguments] { PrintDigests(*arguments); });
}

const tool::CommandFamily family("crypto", [](tool::Command& program) {
    SetUpContainer(program.Subcommand("encrypt", "Write a file as an encrypted container"), QVCryptoEncode,
                   "encrypted");
    SetUpContainer(program.Subcommand("decrypt", "Write the plaintext of an encrypted container"),
                   QVCryptoDecode, "decrypted");
    SetUpMD5(program.Subcommand("md5", "Print the MD5 digests of files"));
});

}  // namespace

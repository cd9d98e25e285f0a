#include "output.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "tool.h"

namespace tool {
namespace fs = std::filesystem;

namespace {

// A link is followed, so that it stays and its file is replaced. A device or a folder is no place.
std::string Target(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) return path;
    if (!fs::is_regular_file(status)) throw Failure(path + ": not a regular file");
    const fs::path target = fs::canonical(path, error);
    if (error) throw Failure(path + ": " + error.message());
    return target.string();
}

std::string CheckedTarget(const Output& output) {
    std::string target = Target(output.path);
    output.Check();
    return target;
}

}  // namespace

void Output::AddTo(Command& command, const std::string& name, const std::string& description,
                   Presence presence) {
    command.Argument(name, path, description, presence);
    command.Flag("-f,--overwrite", overwrite, "Replace an existing file");
}

void Output::Check() const {
    std::error_code ignored;
    if (!overwrite && fs::exists(fs::symlink_status(path, ignored))) {
        throw Failure(path + ": exists (--overwrite replaces it)");
    }
}

void Output::CheckIsNot(const std::string& other, const std::string& what) const {
    std::error_code ignored;
    if (fs::equivalent(path, other, ignored)) throw Failure(path + ": is " + what);
}

OutputFile::OutputFile(const Output& output)
    : output_(output),
      target_(CheckedTarget(output)),
      temporary_(AT_FDCWD, fs::path(target_).parent_path() / UnfinishedFile::TemporaryName(), output.path) {
    temporary_.File().Close();  // whoever writes opens it by its path
}

void OutputFile::PutInPlace() {
    if (chmod(Path().c_str(), Permissions()) != 0 || !Rename()) throw Failure(SystemText(output_.path));
    temporary_.Keep();
}

mode_t OutputFile::Permissions() const {
    struct stat older {};
    if (stat(target_.c_str(), &older) == 0) return older.st_mode & 0777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// A second name, unlike a changed one, never replaces what another program made in the meantime. Where the
// file system knows no second names, only the check stands between.
bool OutputFile::Rename() const {
    if (!output_.overwrite) {
        if (link(Path().c_str(), target_.c_str()) == 0) return unlink(Path().c_str()) == 0;
        if (errno == EEXIST) return false;
        output_.Check();
    }
    return std::rename(Path().c_str(), target_.c_str()) == 0;
}

void PrintData(void* data) {
    const std::size_t size = QVDataGetSize(data);
    if (size == 0) return;  // and then there is no buffer
    if (std::fwrite(QVDataGetImutableBuffer(data), 1, size, stdout) != size) {
        throw Failure(SystemText("standard output"));
    }
}

void WriteData(void* data, const Output& output) {
    if (output.path == "-") return PrintData(data);
    OutputFile file(output);
    const Object path = PathText(file.Path());
    Require(QVDataWriteToFile(data, path.Get()), output.path);  // empty Data leaves the new file empty
    file.PutInPlace();
}

void WriteText(void* string, const Output& output) {
    constexpr QVEncodingInfo kUtf8 = {QVEncodingUTF8, 0, 0};
    const Object data(QVStringMakeData(string, kUtf8));
    WriteData(data.Get(), output);
}

}  // namespace tool

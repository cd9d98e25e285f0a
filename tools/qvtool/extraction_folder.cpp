#include "extraction_folder.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tool.h"
#include "unfinished_file.h"

namespace tool {

namespace {

// Opens a folder in another one, making it when it is missing. A link in its place is refused.
int EnterFolder(int parent, const std::string& name) {
    if (mkdirat(parent, name.c_str(), 0777) != 0 && errno != EEXIST) {
        throw Failure(SystemText(name));
    }
    const int folder = openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) {
        throw Failure(SystemText(name));
    }
    return folder;
}

void WriteWhole(UnfinishedFile& file, unsigned mode, const ExtractionFolder::Writer& writer) {
    writer(file.File().Get());
    if (fchmod(file.File().Get(), mode & 0777) != 0 || !file.File().Close()) {
        throw Failure(SystemText("cannot write it"));
    }
}

constexpr char kRefused[] = "cannot create it";

// A new file in the folder; any other of its name must have gone.
void WriteNewFile(int folder, const char* name, unsigned mode, const ExtractionFolder::Writer& writer) {
    UnfinishedFile file(folder, name, kRefused);
    WriteWhole(file, mode, writer);
    file.Keep();
}

// The older file, or the link in its place, stays until the new one is whole.
void ReplaceFile(int folder, const char* name, unsigned mode, const ExtractionFolder::Writer& writer) {
    UnfinishedFile file(folder, UnfinishedFile::TemporaryName(), kRefused);
    WriteWhole(file, mode, writer);
    if (renameat(folder, file.Name().c_str(), folder, name) != 0) {
        throw Failure(SystemText("cannot replace it"));
    }
    file.Keep();
}

}  // namespace

std::vector<std::string> SafeComponents(const std::string& name) {
    std::vector<std::string> components;
    for (std::size_t start = 0; start <= name.size();) {
        const std::size_t end = std::min(name.find('/', start), name.size());
        components.push_back(name.substr(start, end - start));
        const std::string& last = components.back();
        if (last.empty() || last == "." || last == ".." || last.find('\0') != std::string::npos) {
            throw Failure("the name would lead out of the folder");
        }
        start = end + 1;
    }
    return components;
}

ExtractionFolder::ExtractionFolder(const std::string& path) {
    if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) {
        throw Failure(SystemText(path));
    }
    descriptor_.Reset(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor_.Get() < 0) {
        throw Failure(SystemText(path));
    }
}

void ExtractionFolder::WriteFile(const std::string& name, unsigned mode, bool overwrite,
                                 const Writer& writer) {
    const std::vector<std::string> components = SafeComponents(name);
    Descriptor opened;
    int folder = descriptor_.Get();
    for (std::size_t i = 0; i + 1 < components.size(); ++i) {
        folder = EnterFolder(folder, components[i]);
        opened.Reset(folder);
    }
    const auto write = overwrite ? ReplaceFile : WriteNewFile;
    write(folder, components.back().c_str(), mode, writer);
}

}  // namespace tool

#include "extraction_folder.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tool.h"

namespace tool {

namespace {

class Descriptor final {
public:
    explicit Descriptor(int value) : value_(value) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { Close(); }

    void Reset(int value) {
        Close();
        value_ = value;
    }
    [[nodiscard]] int Get() const { return value_; }
    bool Close() {
        const bool closed = value_ < 0 || close(value_) == 0;
        value_ = -1;
        return closed;
    }

private:
    int value_;
};

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

ExtractionFolder::ExtractionFolder(const std::string& path) : path_(path) {
    if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) {
        throw Failure(SystemText(path));
    }
    descriptor_ = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor_ < 0) {
        throw Failure(SystemText(path));
    }
}

ExtractionFolder::~ExtractionFolder() {
    close(descriptor_);
}

void ExtractionFolder::WriteFile(const std::string& name, unsigned mode, bool overwrite,
                                 const Writer& writer) {
    const std::vector<std::string> components = SafeComponents(name);
    Descriptor opened(-1);
    int folder = descriptor_;
    for (std::size_t i = 0; i + 1 < components.size(); ++i) {
        folder = EnterFolder(folder, components[i]);
        opened.Reset(folder);
    }
    const char* leaf = components.back().c_str();
    if (overwrite && unlinkat(folder, leaf, 0) != 0 && errno != ENOENT) {
        throw Failure(SystemText("cannot replace it"));
    }
    Descriptor file(openat(folder, leaf, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (file.Get() < 0) {
        throw Failure(SystemText("cannot create it"));
    }
    try {
        writer(file.Get());
        if (fchmod(file.Get(), mode & 0777) != 0 || !file.Close()) {
            throw Failure(SystemText("cannot write it"));
        }
    } catch (...) {
        unlinkat(folder, leaf, 0);
        throw;
    }
}

}  // namespace tool

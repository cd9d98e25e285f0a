// A new file that is removed again unless it becomes whole: also when a signal ends the program.
#pragma once

#include <string>

#include "descriptor.h"

namespace tool {

class UnfinishedFile final {
public:
    /// Makes the file, empty and for its owner alone; an existing one of the name is refused, links are not
    /// followed. `folder` is an open folder or AT_FDCWD, and must stay open. When the file cannot be made a
    /// Failure "WHAT: the system's reason" is thrown. There may be one unfinished file at a time.
    UnfinishedFile(int folder, std::string name, const std::string& what);
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
    ~UnfinishedFile();

    /// A name that other runs of the program do not use.
    [[nodiscard]] static std::string TemporaryName();

    [[nodiscard]] const std::string& Name() const { return name_; }
    [[nodiscard]] Descriptor& File() { return file_; }

    /// The file is whole, under this or another name: nothing is removed any more.
    void Keep();

private:
    int folder_;
    std::string name_;
    Descriptor file_;
    bool isWhole_ = false;
};

}  // namespace tool

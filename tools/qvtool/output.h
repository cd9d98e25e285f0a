// What commands write. One rule holds for all of them: a file that exists is replaced only when --overwrite
// asks for it, and only by a result that is whole. A command that fails leaves an older file as it was, and
// no new one.
#pragma once

#include <string>
#include <sys/types.h>

#include "command_line.h"
#include "unfinished_file.h"

namespace tool {

/// The user's word on where a result goes.
struct Output {
    std::string path;
    bool overwrite = false;

    /// Adds an argument for the path, and the switch --overwrite.
    void AddTo(Command& command, const std::string& name, const std::string& description,
               Presence presence = Presence::kRequired);

    /// Throws a Failure when something exists there that must not be replaced: for commands that would only
    /// find out after long work.
    void Check() const;

    /// Throws a Failure "PATH: is WHAT" when both paths lead to the same file.
    void CheckIsNot(const std::string& other, const std::string& what) const;
};

/// A file that grows under a name of its own beside the wanted one until it is put in place. When that never
/// happens it is removed, also by a signal that ends the program.
class OutputFile final {
public:
    /// Makes the file, empty and for its owner alone. Throws a Failure when that is impossible, or Check()
    /// forbids it.
    explicit OutputFile(const Output& output);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Where to write.
    [[nodiscard]] const std::string& Path() const { return temporary_.Name(); }

    /// Gives the file its name, and the permissions of the older file or those of any new one. Call it with
    /// the file closed.
    void PutInPlace();

private:
    [[nodiscard]] mode_t Permissions() const;
    [[nodiscard]] bool Rename() const;

    Output output_;
    std::string target_;
    UnfinishedFile temporary_;
};

/// Writes the Data's bytes to the output; "-" is standard output.
void WriteData(void* data, const Output& output);
/// The same for a string, as UTF-8.
void WriteText(void* string, const Output& output);
/// Writes the Data's bytes to standard output, which may keep them back until the program ends.
void PrintData(void* data);

}  // namespace tool

// The switches of every command whose work may be long.
#pragma once

#include <string>

#include "command_line.h"
#include "progress.h"

namespace tool {

struct ProgressSwitches {
    bool progress = false;
    bool noProgress = false;
    bool quiet = false;

    /// `quietText` describes --quiet.
    void AddTo(Command& command, const std::string& quietText);
    [[nodiscard]] ProgressMode Mode() const;
};

}  // namespace tool

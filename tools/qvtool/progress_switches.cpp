#include "progress_switches.h"

namespace tool {

void ProgressSwitches::AddTo(Command& command, const std::string& quietText) {
    command.Flag("--progress", progress, "Show a progress bar even when stderr is no terminal");
    command.Flag("--no-progress", noProgress, "Show no progress bar");
    command.Exclude("--progress", "--no-progress");
    command.Flag("-q,--quiet", quiet, quietText);
}

ProgressMode ProgressSwitches::Mode() const {
    if (quiet || noProgress) return ProgressMode::kNever;
    return progress ? ProgressMode::kAlways : ProgressMode::kWhenTerminal;
}

}  // namespace tool

// The progress bar: the same switches for every command whose work may be long, and a bar that follows a
// growing file.
#include <chrono>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

#include "qvtool/progress.h"
#include "support/temporary_directory.h"
#include "tools/run_qvtool.h"

namespace {

namespace fs = std::filesystem;
using qvtest::Outcome;
using qvtest::Qvtool;
using qvtest::ReadFile;
using qvtest::Says;
using qvtest::WriteFile;

class QvtoolProgress : public ::testing::Test {
protected:
    QvtoolProgress() : before_(fs::current_path()) {
        fs::current_path(directory_.Path());
        WriteFile("plain", std::string(100'000, 'a'));
        WriteFile("key", "a secret");
        EXPECT_EQ(Qvtool("archive create -q archive plain").status, 0);
        EXPECT_EQ(Qvtool("encrypt -q plain sealed --key-file key").status, 0);
        EXPECT_EQ(Qvtool("base64 encode plain > text").status, 0);
    }
    ~QvtoolProgress() override { fs::current_path(before_); }

    qvtest::TemporaryDirectory directory_;
    fs::path before_;
};

constexpr const char* kLongCommands[] = {
    "archive create -f out plain",
    "archive extract -f archive folder",
    "compress -f plain out",
    "encrypt -f plain out --key-file key",
    "decrypt -f sealed out --key-file key",
    "md5 plain",
    "search a plain",
    "base64 encode plain",
    "base64 decode text",
};

TEST_F(QvtoolProgress, IsShownToTheEndWhenAskedForAndNeverElse) {
    for (const std::string command : kLongCommands) {
        const Outcome shown = Qvtool(command + " --progress");
        EXPECT_EQ(shown.status, 0) << command << shown.output;
        EXPECT_TRUE(Says(shown, "[########################################] 100%")) << command;
        EXPECT_TRUE(Says(shown, "\r\033[K")) << command << ": the bar is taken away";
        for (const std::string option : {"", " --no-progress", " -q", " -q --progress"}) {
            const Outcome hidden = Qvtool(command + option);
            EXPECT_EQ(hidden.status, 0) << command << option;
            EXPECT_FALSE(Says(hidden, "\r")) << command << option;
        }
        EXPECT_NE(Qvtool(command + " --progress --no-progress").status, 0) << command;
    }
}

TEST_F(QvtoolProgress, EndsWithoutAHundredPercentWhenTheWorkFails) {
    WriteFile("key", "another secret");
    const Outcome wrong = Qvtool("decrypt --progress sealed out --key-file key");
    EXPECT_EQ(wrong.status, 1);
    EXPECT_TRUE(Says(wrong, "]   0%")) << wrong.output;
    EXPECT_FALSE(Says(wrong, "100%")) << wrong.output;
    EXPECT_TRUE(Says(wrong, "\r\033[Kqvtool: sealed: wrong key or damaged file (-400)\n")) << wrong.output;
    EXPECT_FALSE(qvtest::Exists("out"));
}

// Collects what is written to standard error, as long as it lives.
class StandardError final {
public:
    explicit StandardError(const std::string& path) : path_(path), before_(dup(STDERR_FILENO)) {
        std::FILE* file = std::fopen(path.c_str(), "wb");
        dup2(fileno(file), STDERR_FILENO);
        std::fclose(file);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;
    ~StandardError() {
        dup2(before_, STDERR_FILENO);
        close(before_);
    }

    // Waits, for half a minute at most, until the text has come.
    [[nodiscard]] bool Brings(const std::string& text) const {
        for (int i = 0; i < 3000; ++i) {
            if (ReadFile(path_).find(text) != std::string::npos) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
    [[nodiscard]] std::string Text() const { return ReadFile(path_); }

private:
    std::string path_;
    int before_;
};

TEST_F(QvtoolProgress, FollowsAGrowingFile) {
    const StandardError output("stderr");
    tool::Progress progress(1000, tool::ProgressMode::kAlways);
    WriteFile("growing", std::string(7, 'x'));
    {
        const tool::GrowthWatch watch("growing", progress);
        EXPECT_TRUE(output.Brings("]   0%"));
        WriteFile("growing", std::string(7 + 500, 'x'));
        EXPECT_TRUE(output.Brings("[####################....................]  50%"));
        WriteFile("growing", std::string(7 + 2000, 'x'));
        EXPECT_TRUE(output.Brings("] 100%")) << "never more";
        WriteFile("growing", "");
        EXPECT_TRUE(output.Brings("] 100%")) << "nor less than nothing";
    }
    EXPECT_EQ(progress.Done(), 0U) << "what is previewed is not counted";
}

TEST_F(QvtoolProgress, AWatchOfWhatIsNotThereOrNotShownIsHarmless) {
    const StandardError output("stderr");
    tool::Progress hidden(10, tool::ProgressMode::kNever);
    tool::Progress shown(10, tool::ProgressMode::kAlways);
    { const tool::GrowthWatch nothingToShow("plain", hidden); }
    EXPECT_EQ(output.Text(), "");
    { const tool::GrowthWatch nothingToSee("missing", shown); }
    EXPECT_TRUE(output.Brings("]   0%"));
}

TEST_F(QvtoolProgress, AWatchEndsByAnExceptionAsWell) {
    const StandardError output("stderr");
    tool::Progress progress(10, tool::ProgressMode::kAlways);
    for (int i = 0; i < 20; ++i) {
        EXPECT_THROW(
            {
                const tool::GrowthWatch watch("plain", progress);
                throw std::runtime_error("the work failed");
            },
            std::runtime_error);
    }
}

}  // namespace

// The one rule of all commands that write a file: what exists is replaced only when that is asked for, by a
// whole result only, and a failure leaves nothing.
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "support/temporary_directory.h"
#include "tools/run_qvtool.h"

namespace {

namespace fs = std::filesystem;
using qvtest::Outcome;
using qvtest::Qvtool;
using qvtest::ReadFile;
using qvtest::Says;
using qvtest::Shell;
using qvtest::WriteFile;

// The commands, with the names of their files in the test's directory. Each reads one of the inputs.
constexpr const char* kCommands[] = {
    "archive create out plain",
    "compress plain out",
    "encrypt plain out --key-file key",
    "decrypt sealed out --key-file key",
    "pack json out",
    "unpack packed out",
    "plist json out",
    "css charset --set utf-8 css out",
    "convert --from utf-8 --to utf-16le plain out",
    "html plain out",
};
constexpr const char* kInputs[] = {"plain", "sealed", "json", "packed", "css"};

class QvtoolOutput : public ::testing::Test {
protected:
    QvtoolOutput() : before_(fs::current_path()) {
        fs::current_path(directory_.Path());
        WriteFile("plain", "some text");
        WriteFile("key", "a secret");
        WriteFile("json", "[1]");
        WriteFile("css", "h1{a:b}");
        EXPECT_EQ(Qvtool("encrypt plain sealed --key-file key").status, 0);
        EXPECT_EQ(Qvtool("pack json packed").status, 0);
    }
    ~QvtoolOutput() override { fs::current_path(before_); }

    static std::set<std::string> Files() {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator("."))
            names.insert(entry.path().filename().native());
        return names;
    }

    qvtest::TemporaryDirectory directory_;
    fs::path before_;
};

TEST_F(QvtoolOutput, AnExistingFileStaysUnlessAsked) {
    for (const std::string command : kCommands) {
        WriteFile("out", "older contents");
        const Outcome refused = Qvtool(command);
        EXPECT_EQ(refused.status, 1) << command;
        EXPECT_EQ(refused.output, "qvtool: out: exists (--overwrite replaces it)\n") << command;
        EXPECT_EQ(ReadFile("out"), "older contents") << command;
        for (const std::string option : {" -f", " --overwrite"}) {
            WriteFile("out", "older contents");
            EXPECT_EQ(Qvtool(command + option).status, 0) << command;
            EXPECT_NE(ReadFile("out"), "older contents") << command;
        }
    }
}

TEST_F(QvtoolOutput, NothingButTheResultIsLeft) {
    std::set<std::string> expected = Files();
    expected.insert("out");
    for (const std::string command : kCommands) {
        EXPECT_EQ(Qvtool(command).status, 0) << command;
        EXPECT_EQ(Files(), expected) << command;
        fs::remove("out");
    }
}

TEST_F(QvtoolOutput, AFailureKeepsAnOlderFileAndLeavesNoNewOne) {
    for (const char* input : kInputs)
        fs::remove(input);
    const std::set<std::string> without = Files();
    for (const std::string command : kCommands) {
        fs::remove("out");
        const Outcome missing = Qvtool(command);
        EXPECT_EQ(missing.status, 1) << command;
        EXPECT_TRUE(Says(missing, "o such file or directory")) << missing.output;
        EXPECT_EQ(Files(), without) << command;
        WriteFile("out", "older contents");
        EXPECT_EQ(Qvtool(command + " --overwrite").status, 1) << command;
        EXPECT_EQ(ReadFile("out"), "older contents") << command;
    }
}

std::string Letters(std::size_t size) {
    std::string letters;
    for (std::uint32_t state = 1; letters.size() < size;) {
        state = state * 1664525 + 1013904223;
        letters += static_cast<char>('a' + (state >> 24) % 26);
    }
    return letters;
}

// The shell lets no file grow beyond so many blocks, of 512 or 1024 bytes.
TEST_F(QvtoolOutput, AFullDiskLeavesNothing) {
    WriteFile("plain", Letters(40'000));
    WriteFile("json", "[\"" + Letters(40'000) + "\"]");
    WriteFile("css", "h1{a:" + Letters(40'000) + "}");
    ASSERT_EQ(Qvtool("encrypt plain sealed -f --key-file key").status, 0);
    ASSERT_EQ(Qvtool("pack json packed -f").status, 0);
    const std::set<std::string> before = Files();
    for (const std::string blocks : {"0", "8"}) {
        for (const std::string command : kCommands) {
            // An archive does without a file that could not be stored, which is told.
            if (blocks == "8" && command.starts_with("archive")) continue;
            const Outcome full = Shell("trap '' XFSZ; ulimit -f " + blocks + "; " QVTOOL " " + command);
            EXPECT_EQ(full.status, 1) << command << full.output;
            EXPECT_EQ(Files(), before) << command;
        }
    }
}

TEST_F(QvtoolOutput, EmptyResultsReplaceOlderFiles) {
    WriteFile("plain", "");
    for (const std::string command :
         {"compress plain out", "convert --from utf-8 --to utf-8 plain out", "html plain out"}) {
        WriteFile("out", "older contents");
        EXPECT_EQ(Qvtool(command + " -f").status, 0) << command;
        EXPECT_EQ(ReadFile("out"), "") << command;
    }
}

TEST_F(QvtoolOutput, LinksStayAndNewFilesHaveTheUsualPermissions) {
    WriteFile("real", "older contents");
    fs::permissions("real", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("real", "out");
    EXPECT_EQ(Qvtool("html plain out").status, 1);
    EXPECT_EQ(Qvtool("html plain out -f").status, 0);
    EXPECT_TRUE(fs::is_symlink("out"));
    EXPECT_EQ(ReadFile("real"), "some text");
    EXPECT_EQ(fs::status("real").permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(Shell("umask 027; " QVTOOL " html plain new").status, 0);
    EXPECT_EQ(fs::status("new").permissions(), static_cast<fs::perms>(0640));
}

TEST_F(QvtoolOutput, ALinkToNothingCountsAsAFile) {
    fs::create_symlink("nowhere", "out");
    EXPECT_TRUE(Says(Qvtool("html plain out"), "exists"));
    EXPECT_EQ(Qvtool("html plain out --overwrite").status, 0);
    EXPECT_EQ(ReadFile("out"), "some text");
    EXPECT_FALSE(qvtest::Exists("nowhere"));
}

TEST_F(QvtoolOutput, FoldersAndPipesAreNoPlaceForAFile) {
    fs::create_directory("folder");
    ASSERT_EQ(Shell("mkfifo pipe").status, 0);
    for (const std::string place : {"folder", "pipe"}) {
        const Outcome outcome = Qvtool("html -f plain " + place);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.output, "qvtool: " + place + ": not a regular file\n");
    }
}

TEST_F(QvtoolOutput, StandardOutputThatTakesNothingIsTold) {
    EXPECT_EQ(Qvtool("archive create out plain").status, 0);
    for (const std::string command : {"html plain", "unpack packed -", "archive list out", "css list css",
                                      "md5 plain", "base64 encode plain", "search t plain"}) {
        const Outcome outcome = Qvtool(command + " > /dev/full");
        EXPECT_EQ(outcome.status, 1) << command;
        EXPECT_TRUE(Says(outcome, "standard output")) << command << outcome.output;
    }
}

TEST_F(QvtoolOutput, AMessageIsOneLineWhateverAName) {
    const Outcome missing = Qvtool("md5 \"$(printf 'a\\033[31m\\nb\\\\c')\"");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.output,
              "qvtool: a\\033[31m\\012b\\c: no such file or directory (-100)\n"
              "qvtool: 1 file could not be read\n");
}

// What is read, by contrast, may be a folder or a pipe by mistake: told, and never waited for.
TEST_F(QvtoolOutput, WhatIsNoFileIsNotRead) {
    fs::create_directory("folder");
    ASSERT_EQ(Shell("mkfifo pipe").status, 0);
    for (const std::string command :
         {"compress @ out", "encrypt @ out --key-file key", "decrypt @ out --key-file key", "md5 @",
          "unpack @ out", "css list @", "convert --from utf-8 --to utf-8 @ out", "html @", "search x @",
          "archive list @"}) {
        for (const std::string input : {"folder", "pipe"}) {
            std::string line = command;
            const Outcome outcome = Qvtool(line.replace(line.find('@'), 1, input));
            EXPECT_EQ(outcome.status, 1) << line;
            EXPECT_TRUE(Says(outcome, "qvtool: " + input + ": ")) << line << ": " << outcome.output;
        }
    }
    for (const std::string command :
         {"pack folder out", "base64 encode folder", "encrypt plain out --key-file folder"}) {
        const Outcome outcome = Qvtool(command);
        EXPECT_EQ(outcome.status, 1) << command;
        EXPECT_TRUE(Says(outcome, "qvtool: folder: ")) << outcome.output;
    }
    EXPECT_FALSE(qvtest::Exists("out"));
}

}  // namespace

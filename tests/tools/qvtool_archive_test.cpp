// qvtool archive, run as a user runs it: create, list, extract, and what each says when something is wrong.
#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "models/archive_model.h"
#include "support/temporary_directory.h"
#include "tools/run_qvtool.h"

namespace {

namespace fs = std::filesystem;
using qvmodel::ArchiveItem;
using qvtest::Exists;
using qvtest::Outcome;
using qvtest::Qvtool;
using qvtest::ReadFile;
using qvtest::Says;
using qvtest::Shell;
using qvtest::WriteFile;

// Every regular file below a directory: name and bytes.
std::map<std::string, std::string> Tree(const std::string& directory) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file() && !entry.is_symlink()) {
            files[fs::relative(entry.path(), directory).native()] = ReadFile(entry.path().native());
        }
    }
    return files;
}

class QvtoolArchive : public ::testing::Test {
protected:
    QvtoolArchive()
        : source_(directory_ / "source"), archive_(directory_ / "out.qva"), target_(directory_ / "target") {
        fs::create_directory(source_);
    }

    void Put(const std::string& name, const std::string& contents) const {
        fs::create_directories(fs::path(source_ + "/" + name).parent_path());
        WriteFile(source_ + "/" + name, contents);
    }
    // As often as a test likes.
    [[nodiscard]] Outcome Create(const std::string& switches = "") const {
        return Qvtool("archive create --overwrite " + switches + " " + archive_ + " " + source_ + "/.");
    }
    [[nodiscard]] Outcome List() const { return Qvtool("archive list " + archive_); }
    [[nodiscard]] Outcome Extract(const std::string& switches = "") const {
        return Qvtool("archive extract " + switches + " " + archive_ + " " + target_);
    }
    // The files of the source, as they come out of an archive of the source folder's parent-less name.
    [[nodiscard]] std::string Extracted() const { return target_ + source_; }

    void WriteArchive(const std::vector<ArchiveItem>& items) const {
        WriteFile(archive_, qvmodel::EncodeArchive({0x1122334455667788, items, ""}));
    }

    qvtest::TemporaryDirectory directory_;
    std::string source_;
    std::string archive_;
    std::string target_;
};

TEST_F(QvtoolArchive, EveryFileComesBackAsItWas) {
    Put("a.txt", "first");
    Put("empty", "");
    Put("folder/inner/deep.bin", std::string("\0\x01\xFF", 3) + std::string(3000000, 'z'));
    Put("folder/with blanks and \xC3\xA9.txt", "text");
    Put("folder/line\nfeed\\and\ttab", "odd name");
    Put("folder.txt", "sorts between");
    const Outcome created = Create();
    ASSERT_EQ(created.status, 0) << created.output;
    EXPECT_TRUE(Says(created, "created: 6 items, 3,000,033 bytes, ")) << created.output;
    ASSERT_EQ(List().status, 0);
    const Outcome extracted = Extract();
    ASSERT_EQ(extracted.status, 0) << extracted.output;
    EXPECT_TRUE(Says(extracted, "extracted: 6 items, 3,000,033 bytes, ")) << extracted.output;
    EXPECT_EQ(Tree(Extracted()), Tree(source_));
}

TEST_F(QvtoolArchive, TheArchiveHoldsARootThatListsTheFilesInTheirSortedOrder) {
    Put("b", "2");
    Put("a/z", "1");
    Put("c", "3");
    ASSERT_EQ(Create().status, 0);
    const auto archive = qvmodel::DecodeArchive(ReadFile(archive_));
    ASSERT_TRUE(archive.has_value());
    ASSERT_EQ(archive->items.size(), 5U);
    EXPECT_EQ(archive->items[0], (ArchiveItem{1, 2, "", qvmodel::DirectoryBody({2, 3, 4}, 3)}));
    EXPECT_EQ(archive->items[1], (ArchiveItem{2, 1, "", "1"}));
    EXPECT_EQ(archive->items[2], (ArchiveItem{3, 1, "", "2"}));
    EXPECT_EQ(archive->items[3], (ArchiveItem{4, 1, "", "3"}));
    EXPECT_EQ(archive->items[4].id, 5U);
    EXPECT_EQ(archive->items[4].body.substr(0, 22), "qvtool member index 1\n");
}

TEST_F(QvtoolArchive, WithoutAnIndexFilesAreNamedByTheirIDs) {
    Put("a", "1");
    Put("b", "2");
    ASSERT_EQ(Create("--no-index").status, 0);
    const Outcome extracted = Extract();
    EXPECT_EQ(extracted.status, 0);
    EXPECT_TRUE(Says(extracted, "named by their item IDs")) << extracted.output;
    EXPECT_EQ(Tree(target_),
              (std::map<std::string, std::string>{{"item-0000000002", "1"}, {"item-0000000003", "2"}}));
}

TEST_F(QvtoolArchive, AFileThatLooksLikeAnIndexIsAFile) {
    Put("z", "qvtool member index 1\n2 S 644 1 fake\n");
    ASSERT_EQ(Create("--no-index").status, 0);
    ASSERT_EQ(Extract().status, 0);
    EXPECT_EQ(Tree(target_).size(), 1U);
    EXPECT_EQ(Tree(target_).begin()->first, "item-0000000002");
}

TEST_F(QvtoolArchive, PermissionBitsComeBack) {
    Put("run", "#!/bin/sh\n");
    ASSERT_EQ(chmod((source_ + "/run").c_str(), 0751), 0);
    ASSERT_EQ(Create().status, 0);
    ASSERT_EQ(Extract().status, 0);
    EXPECT_EQ(fs::status(Extracted() + "/run").permissions(), static_cast<fs::perms>(0751));
}

TEST_F(QvtoolArchive, LinksAndOtherThingsAreLeftOutWithANote) {
    Put("file", "x");
    fs::create_symlink("file", source_ + "/link");
    fs::create_directory_symlink("..", source_ + "/up");
    ASSERT_EQ(mkfifo((source_ + "/fifo").c_str(), 0600), 0);
    EXPECT_TRUE(Says(Create(), "3 entries left out (--verbose names them)"));
    const Outcome created = Create("--verbose");
    EXPECT_EQ(created.status, 0);
    EXPECT_TRUE(Says(created, "created: 1 items")) << created.output;
    EXPECT_TRUE(Says(created, "link: left out (not a regular file)")) << created.output;
    EXPECT_TRUE(Says(created, "fifo: left out (not a regular file)")) << created.output;
    EXPECT_TRUE(Says(created, "up: left out (not a regular file)")) << created.output;
}

TEST_F(QvtoolArchive, TheArchiveLeavesItselfOut) {
    Put("file", "x");
    archive_ = source_ + "/out.qva";
    WriteFile(archive_, "an older archive");
    const Outcome created = Create("--verbose");
    EXPECT_EQ(created.status, 0) << created.output;
    EXPECT_TRUE(Says(created, "left out (it is the archive)")) << created.output;
    EXPECT_TRUE(Says(created, "created: 1 items")) << created.output;
}

TEST_F(QvtoolArchive, AFileGivenTwiceIsStoredOnce) {
    Put("file", "x");
    const Outcome created = Qvtool("archive create " + archive_ + " " + source_ + " " + source_ + "/file");
    EXPECT_EQ(created.status, 0);
    EXPECT_TRUE(Says(created, "created: 1 items")) << created.output;
}

TEST_F(QvtoolArchive, NamesThatAreNotTextAreToldAndTheOthersStored) {
    Put("good", "x");
    Put("bad\xFF", "y");
    const Outcome created = Create();
    EXPECT_EQ(created.status, 1);
    EXPECT_TRUE(Says(created, "/bad\xFF: the name is not UTF-8 text\n")) << created.output;
    EXPECT_TRUE(Says(created, "1 file or folder could not be added")) << created.output;
    ASSERT_EQ(Extract().status, 0);
    EXPECT_EQ(Tree(Extracted()), (std::map<std::string, std::string>{{"good", "x"}}));
}

TEST_F(QvtoolArchive, APathThatDoesNotExistIsToldBeforeAnythingIsWritten) {
    const Outcome created = Qvtool("archive create " + archive_ + " " + source_ + " " + source_ + "/missing");
    EXPECT_EQ(created.status, 1);
    EXPECT_TRUE(Says(created, "missing: ")) << created.output;
    EXPECT_FALSE(Exists(archive_));
}

TEST_F(QvtoolArchive, AnArchiveThatCannotBeWrittenIsTold) {
    Put("file", "x");
    archive_ = directory_ / "missing/out.qva";
    const Outcome created = Create();
    EXPECT_EQ(created.status, 1);
    EXPECT_TRUE(Says(created, "out.qva: No such file or directory")) << created.output;
}

TEST_F(QvtoolArchive, AnEmptyFolderMakesAnArchiveWithoutFiles) {
    ASSERT_EQ(Create().status, 0);
    const Outcome listed = List();
    EXPECT_EQ(listed.status, 0);
    EXPECT_TRUE(Says(listed, "listed: 2 items")) << listed.output;
    EXPECT_EQ(Extract().status, 0);
    EXPECT_TRUE(Tree(target_).empty());
}

TEST_F(QvtoolArchive, ALargeFileIsStoredWholeWhileItsGrowthIsWatched) {
    Put("small", "x");
    Put("large", "");
    fs::resize_file(source_ + "/large", 17 << 20);
    const Outcome created = Create("--progress");
    ASSERT_EQ(created.status, 0) << created.output;
    EXPECT_TRUE(Says(created, "100%")) << created.output;
    ASSERT_EQ(Extract().status, 0);
    EXPECT_TRUE(ReadFile(Extracted() + "/large") == std::string(17 << 20, '\0'));
}

TEST_F(QvtoolArchive, TheListShowsEveryItem) {
    Put("one\x1b[31m", "12345");
    ASSERT_EQ(Create().status, 0);
    const Outcome listed = List();
    EXPECT_EQ(listed.status, 0);
    EXPECT_TRUE(Says(listed, "directory               30                8  (1 entries, room for 1)"))
        << listed.output;
    EXPECT_TRUE(Says(listed, "file                    56                5  ")) << listed.output;
    EXPECT_TRUE(Says(listed, "one\\033[31m\n")) << "no terminal takes orders from a name: " << listed.output;
    EXPECT_TRUE(Says(listed, "(member index)")) << listed.output;
}

TEST_F(QvtoolArchive, DamageIsToldWithItsPlace) {
    const std::string sound = qvmodel::EncodeArchive(
        {1,
         {{1, 2, "", qvmodel::DirectoryBody({2}, 1)}, {2, 1, "", "abc"}, {3, 1, "attributes", "defg"}},
         ""});
    struct {
        std::size_t offset;
        std::string bytes;
        const char* message;
    } const damages[] = {
        {0, "X", "not an archive (wrong signature)"},
        {17, "\x02", "unknown format version"},
        {18, "\xFF\xFF\xFF\xFF", "offset 18: the options"},
        {30, std::string(4, '\0'), "offset 30: the item ID 0"},
        {30, "\xFF\xFF\xFF\xFF", "offset 30: the item ID 4294967295"},
        {34, "\x03", "offset 30: unknown item type 3"},
        {36, "\xFF\xFF\xFF\xFF", "offset 30: the attributes"},
        {40, "\xEE\xFF\xFF\xFF\xFF\xFF\xFF\xFF", "offset 30: the body"},
        {48, "\x02", "offset 30: the directory counts 2 entries but has room for 1"},
        {52, "\x09", "names the item 9, which is not there"},
        {56, "\x01", "offset 56: the item ID 1"},
        {66, "\x02", "offset 76: the attributes"},
        {66, "\x30", "offset 56: the body"},
    };
    for (const auto& damage : damages) {
        std::string bytes = sound;
        bytes.replace(damage.offset, damage.bytes.size(), damage.bytes);
        WriteFile(archive_, bytes);
        const Outcome listed = List();
        EXPECT_EQ(listed.status, 1) << damage.message;
        EXPECT_TRUE(Says(listed, damage.message)) << "want: " << damage.message << "\ngot: " << listed.output;
        EXPECT_EQ(Extract().status, 1) << damage.message;
        EXPECT_FALSE(Exists(target_)) << "nothing is extracted from a damaged archive";
    }
    for (std::size_t size = 0; size < sound.size(); ++size) {
        if (size == 30 || size == 56 || size == 77) continue;  // whole items, of which the root may miss one
        WriteFile(archive_, sound.substr(0, size));
        EXPECT_EQ(List().status, 1) << "cut at " << size;
    }
    WriteFile(archive_, sound.substr(0, 76));
    EXPECT_TRUE(Says(List(), "offset 56: the body (3 bytes) runs past the end of the file"));
    WriteFile(archive_, sound.substr(0, 57));
    EXPECT_TRUE(Says(List(), "offset 56: the file ends inside an item's header"));
    WriteFile(archive_, sound);
    EXPECT_EQ(List().status, 0);
}

TEST_F(QvtoolArchive, WhatIsNoFileIsTold) {
    EXPECT_EQ(List().status, 1);
    archive_ = source_;
    EXPECT_TRUE(Says(List(), "not a regular file"));
}

// Names in an archive are not to be trusted.
TEST_F(QvtoolArchive, NothingIsWrittenOutsideTheFolder) {
    for (const std::string name :
         {"../escape", "/tmp/qvtool-escape", "a/../../escape", "a//b", ".", "..", "a/"}) {
        WriteArchive({{2, 1, "", "evil"}, {3, 1, "", "qvtool member index 1\n2 S 644 4 " + name + "\n"}});
        const Outcome extracted = Extract();
        EXPECT_EQ(extracted.status, 1) << name;
        EXPECT_TRUE(Says(extracted, "lead out of the folder")) << extracted.output;
    }
    EXPECT_FALSE(Exists(directory_ / "escape"));
    EXPECT_FALSE(Exists("/tmp/qvtool-escape"));
    EXPECT_TRUE(Tree(target_).empty());
}

TEST_F(QvtoolArchive, LinksInTheFolderAreNotFollowed) {
    fs::create_directory(target_);
    fs::create_directory(directory_ / "outside");
    fs::create_directory_symlink(directory_ / "outside", target_ + "/folder");
    fs::create_symlink(directory_ / "outside/file", target_ + "/file");
    WriteArchive({{2, 1, "", "evil"},
                  {3, 1, "", "evil"},
                  {4, 1, "", "qvtool member index 1\n2 S 644 4 folder/file\n3 S 644 4 file\n"}});
    EXPECT_EQ(Extract().status, 1);
    EXPECT_EQ(Extract("--overwrite").status, 1) << "the folder's link is still refused";
    EXPECT_TRUE(fs::is_empty(directory_ / "outside"));
    EXPECT_EQ(ReadFile(target_ + "/file"), "evil");
    EXPECT_FALSE(fs::is_symlink(target_ + "/file")) << "the link itself was replaced";
}

TEST_F(QvtoolArchive, FilesThatExistStayUnlessOverwritingIsAskedFor) {
    Put("file", "new");
    ASSERT_EQ(Create().status, 0);
    ASSERT_EQ(Extract().status, 0);
    WriteFile(Extracted() + "/file", "old");
    const Outcome refused = Extract();
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(Says(refused, "1 file could not be extracted")) << refused.output;
    EXPECT_EQ(ReadFile(Extracted() + "/file"), "old");
    EXPECT_EQ(Extract("--overwrite").status, 0);
    EXPECT_EQ(ReadFile(Extracted() + "/file"), "new");
}

TEST_F(QvtoolArchive, AnOlderFileStaysWhenItsReplacementFails) {
    Put("file", std::string(40'000, 'x'));
    ASSERT_EQ(Create().status, 0);
    ASSERT_EQ(Extract().status, 0);
    WriteFile(Extracted() + "/file", "old");
    const Outcome full =
        Shell("trap '' XFSZ; ulimit -f 8; " QVTOOL " archive extract -f " + archive_ + " " + target_);
    EXPECT_EQ(full.status, 1);
    EXPECT_TRUE(Says(full, "/file: cannot write it: ")) << full.output;
    EXPECT_EQ(Tree(Extracted()), (std::map<std::string, std::string>{{"file", "old"}}));

    fs::remove(Extracted() + "/file");
    fs::create_directory(Extracted() + "/file");
    const Outcome folder = Extract("--overwrite");
    EXPECT_EQ(folder.status, 1);
    EXPECT_TRUE(Says(folder, "/file: cannot replace it: ")) << folder.output;
    EXPECT_TRUE(Tree(Extracted()).empty());
}

TEST_F(QvtoolArchive, AnInterruptedExtractionLeavesNoPartOfAFile) {
    // An archive of one file that takes seconds to write, and no place on the disk itself.
    constexpr std::uint64_t kBodyLength = 4'000'000'000;
    std::string archive = qvmodel::EncodeArchive({0x1122334455667788, {{2, 1, "", ""}}, ""});
    for (std::size_t i = 0; i < 8; ++i)
        archive[archive.size() - 8 + i] = static_cast<char>(kBodyLength >> (8 * i));
    WriteFile(archive_, archive);
    fs::resize_file(archive_, archive.size() + kBodyLength);

    for (const std::string overwrite : {"", "--overwrite "}) {
        fs::remove_all(target_);
        const Outcome outcome = Shell(QVTOOL " archive extract -q " + overwrite + archive_ + " " + target_ +
                                      " & while kill -0 $! && ! ls -A " + target_ +
                                      " | grep -q .; do sleep 0.01; done; kill $!; wait $!");
        EXPECT_EQ(outcome.status, 128 + SIGTERM) << outcome.output;
        EXPECT_TRUE(fs::is_empty(target_)) << overwrite;
    }
}

TEST_F(QvtoolArchive, AnIndexThatDoesNotFitIsNone) {
    for (const std::string line :
         {"9 S 644 4 name", "2 S 644 5 name", "2 X 644 4 name", "2 S 644 4 name\n2 S 644 4 twice",
          "2 S 644 4 ", "2 S 999 4 name", "2 S 644 name"}) {
        fs::remove_all(target_);
        WriteArchive({{2, 1, "", "body"}, {3, 1, "", "qvtool member index 1\n" + line + "\n"}});
        ASSERT_EQ(Extract().status, 0) << line;
        EXPECT_EQ(Tree(target_).size(), 2U) << line;
        EXPECT_TRUE(Exists(target_ + "/item-0000000002")) << line;
    }
}

TEST_F(QvtoolArchive, CompressedMembersAreNotExtracted) {
    WriteArchive({{2, 1, "", "????"},
                  {3, 1, "", "plain"},
                  {4, 1, "", "qvtool member index 1\n2 C 644 99 packed\n3 S 644 5 plain\n"}});
    EXPECT_TRUE(Says(List(), "packed (compressed)"));
    const Outcome extracted = Extract();
    EXPECT_EQ(extracted.status, 1);
    EXPECT_TRUE(Says(extracted, "packed: stored compressed")) << extracted.output;
    EXPECT_EQ(Tree(target_), (std::map<std::string, std::string>{{"plain", "plain"}}));
}

TEST_F(QvtoolArchive, AWrongCommandLineIsExplained) {
    EXPECT_NE(Qvtool("").status, 0);
    EXPECT_NE(Qvtool("archive").status, 0);
    EXPECT_NE(Qvtool("archive create").status, 0);
    EXPECT_NE(Qvtool("archive create " + archive_).status, 0);
    const Outcome help = Qvtool("archive create --help");
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(Says(help, "--no-progress")) << help.output;
}

}  // namespace

// qvtool encrypt, decrypt and md5, run as a user runs them.
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "crypto/pi_words.h"
#include "models/container_model.h"
#include "models/md5_model.h"
#include "support/temporary_directory.h"
#include "tools/run_qvtool.h"

namespace {

using namespace std::string_literals;
using qvtest::Outcome;
using qvtest::Qvtool;
using qvtest::ReadFile;
using qvtest::Says;
using qvtest::Shell;
using qvtest::WriteFile;

qvmodel::Bytes BytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

std::string Noise(std::size_t size) {
    std::string noise;
    for (std::uint32_t state = 1; noise.size() < size;) {
        state = state * 1664525 + 1013904223;
        noise += static_cast<char>(state >> 24);
    }
    return noise;
}

class QvtoolCrypto : public ::testing::Test {
protected:
    // A file of the test's directory with these contents.
    std::string Put(const std::string& name, const std::string& contents) const {
        WriteFile(directory_ / name, contents);
        return directory_ / name;
    }
    // As often as a test likes.
    [[nodiscard]] Outcome Encrypt(const std::string& keyFile) const {
        return Qvtool("encrypt --overwrite " + plain_ + " " + sealed_ + " --key-file " + keyFile);
    }
    [[nodiscard]] Outcome Decrypt(const std::string& keyFile) const {
        return Qvtool("decrypt --overwrite " + sealed_ + " " + opened_ + " --key-file " + keyFile);
    }
    [[nodiscard]] std::ptrdiff_t FileCount() const {
        return std::distance(std::filesystem::directory_iterator(directory_.Path()), {});
    }

    qvtest::TemporaryDirectory directory_;
    std::string plain_ = directory_ / "plain";
    std::string sealed_ = directory_ / "sealed";
    std::string opened_ = directory_ / "opened";
    std::string key_ = Put("key", "a secret\n");
};

TEST_F(QvtoolCrypto, FilesComeBackAsTheyWere) {
    for (const std::size_t size : {0, 1, 8, 16'384, 100'003}) {
        Put("plain", Noise(size));
        const Outcome encrypted = Encrypt(key_);
        ASSERT_EQ(encrypted.status, 0) << encrypted.output;
        EXPECT_EQ(ReadFile(sealed_).size(), 64 + (size + 7) / 8 * 8);
        const Outcome decrypted = Decrypt(key_);
        ASSERT_EQ(decrypted.status, 0) << decrypted.output;
        EXPECT_TRUE(ReadFile(opened_) == Noise(size)) << size;
    }
    EXPECT_EQ(FileCount(), 4) << "nothing but the key and the three files";
}

TEST_F(QvtoolCrypto, TheKeyIsTheFileWithoutOneLineFeed) {
    Put("plain", "some text");
    for (const std::string& key : {"k"s, "k\n"s, "with\0 zero\n"s, std::string(56, 'x')}) {
        ASSERT_EQ(Encrypt(Put("key", key + "\n")).status, 0);
        const auto [code, plain] =
            qvmodel::ReadContainer(qvtest::PiWords(), BytesOf(ReadFile(sealed_)), BytesOf(key));
        EXPECT_EQ(code, 0);
        EXPECT_EQ(plain, BytesOf("some text"));
    }
    ASSERT_EQ(Encrypt(Put("key", "no line feed")).status, 0);
    EXPECT_EQ(Decrypt(Put("key", "no line feed\n")).status, 0);
}

TEST_F(QvtoolCrypto, WhatIsNoKeyIsRefused) {
    Put("plain", "some text");
    for (const std::string& key : {""s, "\n"s}) {
        const Outcome empty = Encrypt(Put("key", key));
        EXPECT_EQ(empty.status, 1);
        EXPECT_TRUE(Says(empty, "the key is empty")) << empty.output;
    }
    for (const std::string& key :
         {std::string(57, 'x'), std::string(57, 'x') + "\n", std::string(56, 'x') + "\n\n"}) {
        const Outcome tooLong = Encrypt(Put("key", key));
        EXPECT_EQ(tooLong.status, 1);
        EXPECT_TRUE(Says(tooLong, "the key is longer than 56 bytes")) << tooLong.output;
    }
    const Outcome missing = Encrypt(directory_ / "missing");
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(Says(missing, "missing: No such file")) << missing.output;
    EXPECT_FALSE(qvtest::Exists(sealed_));
}

TEST_F(QvtoolCrypto, WithoutAKeyFileThereMustBeATerminal) {
    Put("plain", "some text");
    std::FILE* pipe =
        popen(("setsid -w " QVTOOL " encrypt " + plain_ + " " + sealed_ + " 2>&1").c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    char line[200] = "";
    EXPECT_NE(std::fgets(line, sizeof line, pipe), nullptr);
    EXPECT_EQ(WEXITSTATUS(pclose(pipe)), 1);
    EXPECT_NE(std::string(line).find("/dev/tty"), std::string::npos) << line;
    EXPECT_FALSE(qvtest::Exists(sealed_));
}

TEST_F(QvtoolCrypto, AWrongKeyLeavesNothing) {
    Put("plain", "some text");
    ASSERT_EQ(Encrypt(key_).status, 0);
    const std::ptrdiff_t before = FileCount();
    const Outcome wrong = Decrypt(Put("key", "another secret"));
    EXPECT_EQ(wrong.status, 1);
    EXPECT_TRUE(Says(wrong, "wrong key or damaged file (-400)")) << wrong.output;
    EXPECT_EQ(FileCount(), before);
}

TEST_F(QvtoolCrypto, AWrongKeyKeepsAnOlderOutput) {
    Put("plain", "some text");
    ASSERT_EQ(Encrypt(key_).status, 0);
    Put("opened", "older contents");
    EXPECT_EQ(Decrypt(Put("wrong", "another secret")).status, 1);
    EXPECT_EQ(ReadFile(opened_), "older contents");
    EXPECT_EQ(Decrypt(key_).status, 0);
    EXPECT_EQ(ReadFile(opened_), "some text");
}

TEST_F(QvtoolCrypto, AnInterruptedRunLeavesNothing) {
    std::filesystem::resize_file(Put("plain", ""), 500'000'000);  // takes seconds, and no place on the disk
    Put("sealed", "older contents");
    const Outcome outcome = Shell(QVTOOL " encrypt -f --progress " + plain_ + " " + sealed_ + " --key-file " +
                                  key_ + " & while kill -0 $! && ! ls -A " + directory_.Path() +
                                  " | grep -q qvtool; do sleep 0.01; done; kill $!; wait $!");
    EXPECT_EQ(outcome.status, 128 + SIGTERM) << outcome.output;
    EXPECT_EQ(ReadFile(sealed_), "older contents");
    EXPECT_EQ(FileCount(), 3);
}

TEST_F(QvtoolCrypto, DamageIsNoticed) {
    Put("plain", "some text of more than one block");
    ASSERT_EQ(Encrypt(key_).status, 0);
    const std::string whole = ReadFile(sealed_);
    std::string changed = whole;
    changed.back() ^= 1;
    for (const std::string& damaged :
         {changed, whole.substr(0, whole.size() - 8), whole + "12345678", whole.substr(0, 63), ""s}) {
        Put("sealed", damaged);
        const Outcome outcome = Decrypt(key_);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_TRUE(Says(outcome, "wrong key or damaged file (-400)")) << outcome.output;
    }
    Put("sealed", Noise(200));
    const Outcome noContainer = Decrypt(key_);
    EXPECT_EQ(noContainer.status, 1);
    EXPECT_TRUE(Says(noContainer, "not an encrypted container (-5)")) << noContainer.output;
    EXPECT_FALSE(qvtest::Exists(opened_));
}

TEST_F(QvtoolCrypto, TheOutputIsNeverTheInputOrTheKeyFileOrAFolder) {
    Put("plain", "some text");
    EXPECT_EQ(Qvtool("encrypt -f " + plain_ + " " + plain_ + " --key-file " + key_).status, 1);
    EXPECT_EQ(Qvtool("encrypt -f " + plain_ + " " + key_ + " --key-file " + key_).status, 1);
    EXPECT_EQ(Qvtool("encrypt -f " + plain_ + " " + directory_.Path() + " --key-file " + key_).status, 1);
    EXPECT_EQ(ReadFile(plain_), "some text");
    EXPECT_EQ(ReadFile(key_), "a secret\n");
}

TEST_F(QvtoolCrypto, LinksAndPermissionsOfTheOutputStay) {
    namespace fs = std::filesystem;
    Put("plain", "some text");
    ASSERT_EQ(Encrypt(key_).status, 0);
    fs::permissions(Put("real", "older contents"), fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("real", opened_);
    ASSERT_EQ(Decrypt(key_).status, 0);
    EXPECT_TRUE(fs::is_symlink(opened_));
    EXPECT_EQ(ReadFile(directory_ / "real"), "some text");
    EXPECT_EQ(fs::status(opened_).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(QvtoolCrypto, ASummaryIsPrintedUnlessQuiet) {
    Put("plain", "some text");
    EXPECT_TRUE(Says(Encrypt(key_), "encrypted: 9 bytes, "));
    EXPECT_TRUE(Says(Decrypt(key_), "decrypted: 80 bytes, "));
    EXPECT_EQ(Encrypt(key_ + " -q").output, "");
}

// ---- md5 ----

TEST_F(QvtoolCrypto, DigestsAreThoseOfTheStandard) {
    const std::string digits = "1234567890";
    std::string eighty;
    for (int i = 0; i < 8; ++i)
        eighty += digits;
    const std::pair<std::string, std::string> published[] = {
        {"", "D41D8CD98F00B204E9800998ECF8427E"},
        {"a", "0CC175B9C0F1B6A831C399E269772661"},
        {"abc", "900150983CD24FB0D6963F7D28E17F72"},
        {"message digest", "F96B697D7CB7938D525A2F31AAF161D0"},
        {"abcdefghijklmnopqrstuvwxyz", "C3FCD3D76192E4007DFB496CCA67E13B"},
        {eighty, "57EDF4A22BE3C955AC49DA2E2107B67A"}};
    for (const auto& [text, digest] : published) {
        EXPECT_EQ(Qvtool("md5 " + Put("text", text)).output, digest + "  " + (directory_ / "text") + "\n");
    }
}

std::string ModelDigest(const std::string& text) {
    std::string digest;
    for (const std::uint32_t word : qvmodel::HashMd5(BytesOf(text))) {
        for (int shift = 0; shift < 32; shift += 8) {
            char byte[3];
            std::snprintf(byte, sizeof byte, "%02X", (word >> shift) & 0xFFU);
            digest += byte;
        }
    }
    return digest;
}

TEST_F(QvtoolCrypto, ALengthThatLeavesNoRoomGivesTheLibrarysOwnDigest) {
    const std::string text = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    const Outcome outcome = Qvtool("md5 " + Put("text", text));
    EXPECT_TRUE(Says(outcome, ModelDigest(text) + "  ")) << outcome.output;
    EXPECT_FALSE(Says(outcome, "D174AB98D277D9F5A5611C2C9F419D9F")) << "the standard's";
}

TEST_F(QvtoolCrypto, PiecesAreNotSeenInADigest) {
    for (const std::size_t size : {1'048'575, 1'048'576, 1'048'577, 2'100'000}) {
        EXPECT_TRUE(Says(Qvtool("md5 " + Put("text", Noise(size))), ModelDigest(Noise(size)))) << size;
    }
}

TEST_F(QvtoolCrypto, AFileThatCannotBeReadDoesNotKeepTheOthers) {
    const Outcome outcome =
        Qvtool("md5 " + Put("a", "a") + " " + (directory_ / "missing") + " " + Put("b", "abc"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(Says(outcome, "0CC175B9C0F1B6A831C399E269772661  ")) << outcome.output;
    EXPECT_TRUE(Says(outcome, "missing: no such file or directory (-100)")) << outcome.output;
    EXPECT_TRUE(Says(outcome, "900150983CD24FB0D6963F7D28E17F72  ")) << outcome.output;
}

}  // namespace

// qvtool base64 and qvtool search, run as a user runs them.
#include <string>

#include "models/base64_model.h"
#include "support/shaped_bytes.h"
#include "support/temporary_directory.h"
#include "tools/run_qvtool.h"

namespace {

using qvtest::Qvtool;
using qvtest::ReadFile;
using qvtest::Says;
using qvtest::WriteFile;

std::string SomeBytes(std::size_t size) {
    qvtest::ShapedBytes random(61);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random.Below(256));
    return bytes;
}

class QvtoolCodec : public ::testing::Test {
protected:
    qvtest::TemporaryDirectory directory_;
    std::string plain_ = directory_ / "plain";
    std::string text_ = directory_ / "text";
    std::string back_ = directory_ / "back";
};

TEST_F(QvtoolCodec, EncodesAndDecodesFilesOfSeveralPieces) {
    for (const std::size_t size : {0, 1, 2, 3, 786'431, 786'432, 786'433, 2'000'000}) {
        const std::string bytes = SomeBytes(size);
        WriteFile(plain_, bytes);
        ASSERT_EQ(Qvtool("base64 encode " + plain_ + " > " + text_).status, 0);
        ASSERT_EQ(ReadFile(text_), qv::model::EncodeBase64({bytes.begin(), bytes.end()})) << size;
        ASSERT_EQ(Qvtool("base64 decode " + text_ + " > " + back_).status, 0);
        ASSERT_EQ(ReadFile(back_), bytes) << size;
    }
}

TEST_F(QvtoolCodec, ReadsStandardInputByDefault) {
    WriteFile(plain_, "Ma");
    EXPECT_EQ(Qvtool("base64 encode < " + plain_).output, "TWE=");
    EXPECT_EQ(Qvtool("base64 encode - < " + plain_).output, "TWE=");
}

TEST_F(QvtoolCodec, TakesWhiteSpaceOnlyWhenAsked) {
    WriteFile(text_, "TW\nFu\r\n");
    const auto strict = Qvtool("base64 decode " + text_);
    EXPECT_EQ(strict.status, 1);
    EXPECT_TRUE(Says(strict, "--ignore-space"));
    EXPECT_EQ(Qvtool("base64 decode --ignore-space " + text_).output, "Man");
    WriteFile(text_, "TW!Fu");
    EXPECT_EQ(Qvtool("base64 decode --ignore-space " + text_).status, 1);
}

TEST_F(QvtoolCodec, JoinsPiecesFromWhichSpaceWasTaken) {
    const std::string bytes = SomeBytes(1'200'000);
    std::string text = qv::model::EncodeBase64({bytes.begin(), bytes.end()});
    for (std::size_t at = 77; at < text.size(); at += 78)
        text.insert(at, 1, '\n');
    WriteFile(text_, text);
    ASSERT_EQ(Qvtool("base64 decode --ignore-space " + text_ + " > " + back_).status, 0);
    EXPECT_EQ(ReadFile(back_), bytes);
}

TEST_F(QvtoolCodec, TellsFilesThatItCannotRead) {
    for (const char* command : {"base64 encode ", "base64 decode ", "search x "}) {
        const auto outcome = Qvtool(command + directory_ / "absent");
        EXPECT_EQ(outcome.status, 1) << command;
        EXPECT_TRUE(Says(outcome, "qvtool: ") && Says(outcome, "absent")) << outcome.output;
    }
}

TEST_F(QvtoolCodec, TellsThatTheOutputIsFull) {
    WriteFile(plain_, SomeBytes(100'000));
    EXPECT_EQ(Qvtool("base64 encode " + plain_ + " > /dev/full").status, 1);
}

TEST_F(QvtoolCodec, PrintsWhereAPatternIsFound) {
    WriteFile(plain_, "a haystack with a needle in it");
    EXPECT_EQ(Qvtool("search needle " + plain_).output, "18\n");
    EXPECT_EQ(Qvtool("search --hex 6e6565646C65 " + plain_).output, "18\n");
}

TEST_F(QvtoolCodec, FailsWhereNothingIsFound) {
    WriteFile(plain_, "a haystack");
    EXPECT_TRUE(Says(Qvtool("search needle " + plain_), "not found"));
    EXPECT_EQ(Qvtool("search needle " + plain_).status, 1);
    EXPECT_EQ(Qvtool("search '' " + plain_).status, 1);
    EXPECT_EQ(Qvtool("search --hex 6e6 " + plain_).status, 1);
    EXPECT_EQ(Qvtool("search --hex 6x " + plain_).status, 1);
    WriteFile(plain_, "");
    EXPECT_EQ(Qvtool("search needle " + plain_).status, 1);
}

}  // namespace

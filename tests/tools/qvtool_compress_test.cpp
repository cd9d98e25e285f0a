// qvtool compress, run as a user runs it.
#include <string>

#include "models/plain_block_encoder.h"
#include "support/temporary_directory.h"
#include "tools/run_qvtool.h"

namespace {

using qvtest::Outcome;
using qvtest::Qvtool;
using qvtest::ReadFile;
using qvtest::WriteFile;

std::string Compressed(const std::string& bytes) {
    const std::vector<std::uint8_t> blocks = model::Compress({bytes.begin(), bytes.end()});
    return {blocks.begin(), blocks.end()};
}

class QvtoolCompress : public ::testing::Test {
protected:
    Outcome Compress(const std::string& options = "") {
        return Qvtool("compress " + options + " " + plain_ + " " + packed_);
    }

    qvtest::TemporaryDirectory directory_;
    std::string plain_ = directory_ / "plain";
    std::string packed_ = directory_ / "packed";
};

TEST_F(QvtoolCompress, PiecesAreNotSeenInTheResult) {
    std::string text;
    for (int i = 0; text.size() < 1'200'000; ++i)
        text += "line " + std::to_string(i * 7919 % 100'003) + "\n";
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{40'000}, text.size()}) {
        WriteFile(plain_, text.substr(0, size));
        ASSERT_EQ(Compress("--overwrite").status, 0);
        EXPECT_TRUE(ReadFile(packed_) == Compressed(text.substr(0, size))) << size;
    }
}

TEST_F(QvtoolCompress, SaysWhatItDid) {
    WriteFile(plain_, "xxx");
    EXPECT_EQ(Compress().output, "3 bytes to 4 (133.3 %)\n");
    EXPECT_EQ(Compress("--overwrite -q").output, "");
}

TEST_F(QvtoolCompress, TheInputIsNeverItsOwnOutput) {
    WriteFile(plain_, "text");
    EXPECT_EQ(Qvtool("compress --overwrite " + plain_ + " " + plain_).status, 1);
    EXPECT_EQ(ReadFile(plain_), "text");
}

}  // namespace

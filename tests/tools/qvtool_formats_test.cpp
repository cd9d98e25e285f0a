// qvtool pack, unpack, plist, css, convert and html, run as a user runs them.
#include <gtest/gtest.h>
#include <string>

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

class QvtoolFormats : public ::testing::Test {
protected:
    // A file of the test's directory with these contents.
    [[nodiscard]] std::string Put(const std::string& name, const std::string& contents) const {
        WriteFile(directory_ / name, contents);
        return directory_ / name;
    }

    qvtest::TemporaryDirectory directory_;
};

TEST_F(QvtoolFormats, JsonSurvivesPackingAndUnpacking) {
    const std::string json =
        "{\n  \"d\": {\n    \"$data\": \"AAEC\"\n  },\n  \"n\": [\n    1,\n    -2,\n    3.5,\n    "
        "18446744073709551615\n"
        "  ],\n  \"name\": \"caf\xC3\xA9\"\n}\n";
    const std::string input = Put("in.json", json);
    EXPECT_EQ(Qvtool("pack " + input + " " + (directory_ / "packed")).status, 0);
    EXPECT_EQ(ReadFile(directory_ / "packed").substr(0, 6), "#\3d\0 \3"s);
    EXPECT_EQ(Qvtool("unpack " + (directory_ / "packed") + " -").output, json);
}

TEST_F(QvtoolFormats, WhatCannotBePackedIsNamedWithItsPlace) {
    const Outcome null = Qvtool("pack " + Put("null.json", "{\"a\":[1,null]}") + " " + (directory_ / "out"));
    EXPECT_EQ(null.status, 1);
    EXPECT_TRUE(Says(null, "null.json: null cannot be stored (at /a/1)")) << null.output;
    const std::string boolean = Put("boolean.json", "{\"a\":[true,false]}");
    const Outcome refused = Qvtool("pack " + boolean + " " + (directory_ / "out"));
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(Says(refused, "(at /a/0)")) << refused.output;
    EXPECT_FALSE(qvtest::Exists(directory_ / "out"));
    EXPECT_EQ(Qvtool("pack --booleans-as-numbers " + boolean + " " + (directory_ / "out")).status, 0);
    EXPECT_EQ(Qvtool("unpack " + (directory_ / "out") + " -").output,
              "{\n  \"a\": [\n    1,\n    0\n  ]\n}\n");
}

TEST_F(QvtoolFormats, DamageIsToldWithItsPosition) {
    const Outcome json = Qvtool("plist " + Put("bad.json", "{\"a\":") + " -");
    EXPECT_EQ(json.status, 1);
    EXPECT_TRUE(Says(json, "line 1, column")) << json.output;
    const Outcome packed = Qvtool("unpack " +
                                  Put("cut",
                                      "\x22\x03"
                                      "a") +
                                  " -");
    EXPECT_EQ(packed.status, 1);
    EXPECT_TRUE(Says(packed, "(-502) before byte 3")) << packed.output;
    const Outcome missing = Qvtool("unpack " + (directory_ / "missing") + " -");
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(Says(missing, "(-100)")) << missing.output;
}

std::string Nested(std::size_t levels) {
    return std::string(levels, '[') + std::string(levels, ']');
}

TEST_F(QvtoolFormats, AThousandLevelsAreConvertedAndMoreRefused) {
    const std::string out = directory_ / "out";
    EXPECT_EQ(Qvtool("pack " + Put("deep.json", Nested(1000)) + " " + out).status, 0);
    EXPECT_EQ(Qvtool("unpack " + out + " " + (directory_ / "again")).status, 0);
    const Outcome refused = Qvtool("pack -f " + Put("deep.json", Nested(20'000)) + " " + out);
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(Says(refused, "deep.json: nested too deep (at /0/0/0/")) << refused.output;
    EXPECT_LT(refused.output.size(), 500U);
    const std::string packed = std::string(5000, '"') + std::string(5000, '\0');
    const Outcome unpacked = Qvtool("unpack " + Put("packed", packed) + " -");
    EXPECT_EQ(unpacked.status, 1);
    EXPECT_TRUE(Says(unpacked, "packed: nested too deep for JSON")) << unpacked.output;
}

TEST_F(QvtoolFormats, JsonIsReadFromPipesAsWell) {
    const Outcome list = Shell("echo '[1]' | " QVTOOL " plist /dev/stdin -");
    EXPECT_EQ(list.status, 0);
    EXPECT_TRUE(Says(list, "<array><integer>1</integer></array>")) << list.output;
}

TEST_F(QvtoolFormats, PropertyListsKeepBooleans) {
    const Outcome list = Qvtool("plist " + Put("in.json", "{\"a\":[true,1.5,\"<\"]}") + " -");
    EXPECT_EQ(list.status, 0);
    EXPECT_TRUE(Says(
        list, "<dict><key>a</key><array><true/><real>1.500000</real><string>&lt;</string></array></dict>"))
        << list.output;
}

TEST_F(QvtoolFormats, StyleSheetsAreListedAndShown) {
    const std::string sheet = Put("sheet.css", "@charset \"UTF-8\";\nh1, h2 { color: red }\n");
    const Outcome list = Qvtool("css list " + sheet);
    EXPECT_TRUE(Says(list, "         0       17          0  @charset \"UTF-8\";\n")) << list.output;
    EXPECT_TRUE(Says(list, "        18       21          1  h1 h2\n")) << list.output;
    EXPECT_EQ(Qvtool("css show " + sheet + " H1").output, "h1, h2 {\n\tcolor: red;\n}\n");
    EXPECT_EQ(Qvtool("css show " + sheet + " p").status, 1);
    EXPECT_EQ(Qvtool("css charset " + sheet).output, "@charset \"UTF-8\";\n");
}

TEST_F(QvtoolFormats, TheCharsetRuleIsReplacedOrPutFirst) {
    const std::string with = Put("with.css", "@charset \"UTF-8\";\nh1{a:b}\n");
    EXPECT_EQ(Qvtool("css charset --set utf-16be " + with).output, "@charset \"UTF-16BE\";\nh1{a:b}\n");
    const std::string without = Put("without.css", "h1{a:b}\n");
    EXPECT_EQ(Qvtool("css charset --set Shift_JIS " + without).output, "@charset \"Shift_JIS\";\nh1{a:b}\n");
    EXPECT_EQ(Qvtool("css charset --set mac-roman " + without).status, 1);
    EXPECT_EQ(Qvtool("css charset " + without).status, 1);
}

TEST_F(QvtoolFormats, TextsChangeTheirEncodingAndLineBreaks) {
    const std::string text = Put("text", "a\r\nb\rc\n\xE2\x80\xA8");
    EXPECT_EQ(
        Qvtool("convert --from utf-8 --to utf-16be --write-mark --line-breaks lf " + text + " -").output,
        "\xFE\xFF\0a\0\n\0b\0\n\0c\0\n\0\n"s);
    EXPECT_EQ(Qvtool("convert --from utf-8 --to UTF-8 --line-breaks crlf " + text + " -").output,
              "a\r\nb\r\nc\r\n\r\n");
    EXPECT_EQ(Qvtool("convert --from utf-8 --to utf-8 " + text + " -").output, ReadFile(text));
    const std::string utf16 = Put("utf16", "\xFF\xFE\x61\0\x42\x30"s);
    EXPECT_EQ(Qvtool("convert --from utf-16le --to utf-8 --skip-mark " + utf16 + " -").output,
              "a\xE3\x81\x82");
    const Outcome invalid = Qvtool("convert --from utf-8 --to utf-16le " + Put("invalid", "\xFF") + " -");
    EXPECT_EQ(invalid.status, 1);
    EXPECT_TRUE(Says(invalid, "not valid in this encoding")) << invalid.output;
    EXPECT_NE(Qvtool("convert --from utf-8 --to nonsense " + text + " -").status, 0);
}

TEST_F(QvtoolFormats, EntitiesAreWritten) {
    const std::string text = Put("text", "R&D caf\xC3\xA9");
    EXPECT_EQ(Qvtool("html " + text).output, "R&amp;D caf&eacute;");
    EXPECT_EQ(Qvtool("html --limited " + text).output, "R&amp;D caf\xC3\xA9");
    EXPECT_EQ(Qvtool("html " + text + " " + (directory_ / "out")).status, 0);
    EXPECT_EQ(ReadFile(directory_ / "out"), "R&amp;D caf&eacute;");
}

}  // namespace

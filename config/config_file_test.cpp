#include "config/config_file.h"

#include <sys/stat.h>

#include <gtest/gtest.h>
#include <cfloat>

#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

constexpr const char* kDefaultFile =
    "[Veskor 1.9]\r\nCreate00index=1\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=0\r\n"
    "DefaultGUIFontSize=0\r\nHighDPIGUIAdjust=0\r\nAutoCreateExpDesc=0\r\nBgColor=0\r\n";
const std::string kHeader = "[Veskor 1.9]\r\n";

// Every setting starts at 7, a value that no rule below produces, so a test can tell a
// line that was ignored from one that was read as 0.
const Options kSevens{7, 7, 7, 7, 7, 7, 7};

std::vector<double> values(const Options& o) {
    return {o.optionsCreate00index,    o.optionsCreateExpDescNonNTFS,
            o.optionsDefaultGUIFont,   o.optionsDefaultGUIFontSize,
            o.optionsHighDPIGUIAdjust, o.optionsAutoCreateExpDesc,
            o.optionsBgColor};
}

class ConfigFileTest : public ::testing::Test {
protected:
    std::string readConfig() const { return readFileBytes(configFile_); }
    ConfigResult process(const std::string& path) {
        return processConfigFile(path, options_, prompter_);
    }
    ConfigResult process() { return process(configFile_); }

    void expectOnlyMessage(const std::string& text) {
        ASSERT_EQ(prompter_.texts(), std::vector<std::string>{text});
        EXPECT_EQ(prompter_.shown[0].title, "Veskor Repair Tool");
        EXPECT_EQ(prompter_.shown[0].icon, Icon::Critical);
        prompter_.shown.clear();
    }

    TempDir dir_;
    std::string configFile_ = dir_ / "config.dat";
    Options options_ = kSevens;
    ScriptedPrompter prompter_;
};

TEST_F(ConfigFileTest, WritesValuesInPlainDecimalAndReadsThemBack) {
    createConfigFile(configFile_, Options{-0.0, 1, 12, -1, 2.5, 0.125, 1e20}, prompter_);
    EXPECT_EQ(readConfig(),
              "[Veskor 1.9]\r\nCreate00index=0\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=12\r\n"
              "DefaultGUIFontSize=-1\r\nHighDPIGUIAdjust=2.5\r\nAutoCreateExpDesc=0.125\r\n"
              "BgColor=100000000000000000000\r\n");
    ASSERT_EQ(process(), ConfigResult::Read);
    // A switch keeps only its last character: "2.5" and "0.125" read back as 5.
    EXPECT_EQ(values(options_), (std::vector<double>{0, 1, 12, -1, 5, 5, 1e20}));
}

TEST_F(ConfigFileTest, ReadsEachLineByItsKeyAndValueRule) {
    constexpr auto bg = &Options::optionsBgColor;
    constexpr auto size = &Options::optionsDefaultGUIFontSize;
    constexpr auto index = &Options::optionsCreate00index;
    struct Row {
        const char* name;
        std::string lines;  // below the header
        double Options::*field;
        double expected;
    } const rows[] = {
        {"switch takes only the last character", "Create00index=10\r\n", index, 0},
        {"switch after other text", "Create00index=xx1\r\n", index, 1},
        {"switch with the key alone", "Create00index=\r\n", index, 0},
        {"list value after a blank", "BgColor= 2\r\n", bg, 2},
        {"list value followed by letters", "DefaultGUIFontSize=3abc\r\n", size, 3},
        {"list value of letters", "DefaultGUIFontSize=abc\r\n", size, 0},
        {"list value with a fraction", "DefaultGUIFont=2.5\r\n", &Options::optionsDefaultGUIFont,
         2.5},
        {"list value starting with a point", "BgColor=.5\r\n", bg, 0.5},
        {"second point ends the number", "BgColor=1.2.3\r\n", bg, 1.2},
        {"negative list value", "BgColor=-1\r\n", bg, -1},
        {"plus sign", "BgColor=+4\r\n", bg, 4},
        {"list value too large for a number", "BgColor=" + std::string(400, '9'), bg, DBL_MAX},
        {"key in another letter case", "bgcolor=2\r\n", bg, 7},
        {"blank before the key", " BgColor=2\r\n", bg, 7},
        {"longer key is not the shorter one", "DefaultGUIFontSize=3\r\n",
         &Options::optionsDefaultGUIFont, 7},
        {"later line wins", "BgColor=1\r\nBgColor=3\r\n", bg, 3},
        {"missing key keeps its value", "BgColor=1\r\n", index, 7},
        {"line ends of LF only", "BgColor=1\nBgColor=2\n", bg, 2},
    };
    for (const auto& [name, lines, field, expected] : rows) {
        SCOPED_TRACE(name);
        dir_.write("config.dat", kHeader + lines);
        options_ = kSevens;
        ASSERT_EQ(process(), ConfigResult::Read);
        EXPECT_EQ(options_.*field, expected);
        EXPECT_EQ(readConfig(), kHeader + lines);  // a file with its header is never rewritten
    }
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(ConfigFileTest, ReplacesAFileWithoutTheHeaderByTheDefaults) {
    const std::pair<const char*, const char*> rows[] = {
        {"older version", "[Veskor 1.8]\r\nBgColor=3\r\n"},
        {"header with a blank", "[Veskor 1.9] \r\nBgColor=3\r\n"},
        {"header in another case", "[veskor 1.9]\r\nBgColor=3\r\n"},
        {"empty file", ""},
    };
    for (const auto& [name, file] : rows) {
        SCOPED_TRACE(name);
        dir_.write("config.dat", file);
        options_ = Options{};
        ASSERT_EQ(process(), ConfigResult::Read);
        EXPECT_EQ(readConfig(), kDefaultFile);
        EXPECT_EQ(options_.optionsBgColor, 0);
    }
    const std::string headerBelow = "BgColor=4\r\n\r\n" + kHeader + "BgColor=2\r\n";
    dir_.write("config.dat", headerBelow);
    ASSERT_EQ(process(), ConfigResult::Read);
    EXPECT_EQ(options_.optionsBgColor, 2);
    EXPECT_EQ(readConfig(), headerBelow);
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(ConfigFileTest, EndsTheProgramWhenTheFileCannotBeRead) {
    const std::string text =
        "Error: Cannot process the configuration settings file.  Permissions issue?";
    for (const std::string& path : {dir_ / "missing.dat", dir_.mkdir("folder.dat")}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(process(path), ConfigResult::EndProgram);
        expectOnlyMessage(text);
        EXPECT_EQ(options_.optionsBgColor, 7);
    }
}

TEST_F(ConfigFileTest, ShowsTheRecreateMessageWhenTheFileCannotBeWritten) {
    const std::string text =
        "Error: Cannot re-create the configuration settings file.  Permissions issue?";
    const std::string readOnly = dir_.write("readonly/config.dat", "[Veskor 1.8]\r\nBgColor=3\r\n");
    ::chmod(readOnly.c_str(), 0444);
    for (const std::string& path :
         {dir_ / "gone/config.dat", dir_.mkdir("asfolder/config.dat"), readOnly}) {
        SCOPED_TRACE(path);
        createConfigFile(path, options_, prompter_);
        expectOnlyMessage(text);
    }
    // A headerless file that cannot be replaced: one try, then on with the defaults.
    options_ = Options{};
    EXPECT_EQ(process(readOnly), ConfigResult::Read);
    expectOnlyMessage(text);
    EXPECT_EQ(options_.optionsBgColor, 0);
    EXPECT_EQ(readFileBytes(readOnly), "[Veskor 1.8]\r\nBgColor=3\r\n");
}

}  // namespace

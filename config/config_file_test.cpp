#include "config/config_file.h"

#include <sys/stat.h>

#include <gtest/gtest.h>
#include <cfloat>
#include <tuple>
#include <vector>

#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

const std::string kHeader = "[Veskor 1.9]\r\n";
// Every setting starts at 7, a value that no rule below produces, so a test can tell a
// line that was ignored from one that was read as 0.
const Options kSevens{7, 7, 7, 7, 7, 7, 7};

class ConfigFileTest : public ::testing::Test {
protected:
    ConfigResult process(const std::string& path, Options start = kSevens) {
        options_ = start;
        return processConfigFile(path, options_, prompter_);
    }
    ConfigResult processBytes(const std::string& bytes, Options start = kSevens) {
        return process(dir_.write("config.dat", bytes), start);
    }

    TempDir dir_;
    Options options_;
    ScriptedPrompter prompter_;
};

TEST_F(ConfigFileTest, ReadsEachLineByItsKeyAndValueRule) {
    constexpr auto bg = &Options::optionsBgColor;
    constexpr auto font = &Options::optionsDefaultGUIFont;
    constexpr auto size = &Options::optionsDefaultGUIFontSize;
    constexpr auto index = &Options::optionsCreate00index;
    // lines below the header, the setting they set, its value
    const std::tuple<const char*, std::string, double Options::*, double> rows[] = {
        {"switch takes only the last character", "Create00index=10\r\n", index, 0},
        {"switch with the key alone", "Create00index=\r\n", index, 0},
        {"list value after a blank", "BgColor= 2\r\n", bg, 2},
        {"list value followed by letters", "DefaultGUIFontSize=3abc\r\n", size, 3},
        {"second point ends the number", "DefaultGUIFont=1.2.3\r\n", font, 1.2},
        {"negative list value", "BgColor=-1\r\n", bg, -1},
        {"list value too large for a number", "BgColor=" + std::string(400, '9'), bg, DBL_MAX},
        {"key in another letter case", "bgcolor=2\r\n", bg, 7},
        {"longer key is not the shorter one", "DefaultGUIFontSize=3\r\n", font, 7},
        {"later line wins, LF line ends", "BgColor=1\nBgColor=2\n", bg, 2},
    };
    for (const auto& [name, lines, field, expected] : rows) {
        SCOPED_TRACE(name);
        ASSERT_EQ(processBytes(kHeader + lines), ConfigResult::Read);
        EXPECT_EQ(options_.*field, expected);
        EXPECT_EQ(readFileBytes(dir_ / "config.dat"), kHeader + lines);  // never rewritten
    }
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(ConfigFileTest, ReplacesAFileWithoutTheHeaderByTheSettingsInPlainDecimal) {
    const Options inMemory{-0.0, 1, 12, -1, 2.5, 0.125, 1e20};
    for (const char* file : {"[Veskor 1.8]\r\nBgColor=3\r\n", "[Veskor 1.9] \r\nBgColor=3\r\n",
                             "[veskor 1.9]\r\nBgColor=3\r\n", ""}) {
        SCOPED_TRACE(file);
        ASSERT_EQ(processBytes(file, inMemory), ConfigResult::Read);
        EXPECT_EQ(readFileBytes(dir_ / "config.dat"),
                  kHeader +
                      "Create00index=0\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=12\r\n"
                      "DefaultGUIFontSize=-1\r\nHighDPIGUIAdjust=2.5\r\nAutoCreateExpDesc=0.125\r\n"
                      "BgColor=100000000000000000000\r\n");
        EXPECT_EQ(options_.optionsBgColor, 1e20);
    }
    const std::string headerBelow = "BgColor=4\r\n\r\n" + kHeader + "BgColor=2\r\n";
    ASSERT_EQ(processBytes(headerBelow), ConfigResult::Read);
    EXPECT_EQ(options_.optionsBgColor, 2);
    EXPECT_EQ(readFileBytes(dir_ / "config.dat"), headerBelow);
    EXPECT_TRUE(prompter_.shown.empty());
}

// The settings in memory and the old file stay as they were. (A file that cannot be
// read at all ends the program: the start-up tests show that with its message.)
TEST_F(ConfigFileTest, TriesOnceToRecreateAFileThatCannotBeWrittenThenGoesOn) {
    const std::string oldFile = "[Veskor 1.8]\r\nBgColor=3\r\n";
    const std::string readOnly = dir_.write("config.dat", oldFile);
    ASSERT_EQ(::chmod(readOnly.c_str(), 0444), 0);
    EXPECT_EQ(process(readOnly), ConfigResult::Read);
    ASSERT_EQ(prompter_.texts(),
              std::vector<std::string>{
                  "Error: Cannot re-create the configuration settings file.  Permissions issue?"});
    EXPECT_EQ(prompter_.shown[0].title, "Veskor Repair Tool");
    EXPECT_EQ(prompter_.shown[0].icon, Icon::Critical);
    EXPECT_EQ(options_.optionsBgColor, 7);
    EXPECT_EQ(readFileBytes(readOnly), oldFile);
}

}  // namespace

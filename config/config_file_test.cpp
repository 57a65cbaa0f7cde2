#include "config/config_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <cfloat>

#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

constexpr const char* kDefaultFile =
    "[Veskor 1.9]\r\nCreate00index=1\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=0\r\n"
    "DefaultGUIFontSize=0\r\nHighDPIGUIAdjust=0\r\nAutoCreateExpDesc=0\r\nBgColor=0\r\n";

// Every setting starts at 7, a value that no rule below produces, so a test can tell a
// line that was ignored from one that was read as 0.
Options sevens() {
    return Options{7, 7, 7, 7, 7, 7, 7};
}

class ConfigFileTest : public ::testing::Test {
protected:
    void writeConfig(std::string_view bytes) { dir_.write("config.dat", bytes); }
    std::string readConfig() const { return readFileBytes(configFile_); }
    ConfigResult process() { return processConfigFile(configFile_, options_, prompter_); }
    void create() { createConfigFile(configFile_, options_, prompter_); }

    void expectOnlyMessage(const std::string& text) {
        ASSERT_EQ(prompter_.texts(), std::vector<std::string>{text});
        EXPECT_EQ(prompter_.shown[0].title, "Veskor Repair Tool");
        EXPECT_EQ(prompter_.shown[0].icon, Icon::Critical);
        EXPECT_EQ(prompter_.shown[0].buttons, Buttons::Ok);
    }

    TempDir dir_;
    std::string configFile_ = dir_ / "config.dat";
    Options options_;
    ScriptedPrompter prompter_;
};

const std::string kCannotProcess =
    "Error: Cannot process the configuration settings file.  Permissions issue?";
const std::string kCannotRecreate =
    "Error: Cannot re-create the configuration settings file.  Permissions issue?";

TEST_F(ConfigFileTest, WritesTheEightDefaultLinesByteForByte) {
    create();
    EXPECT_EQ(readConfig(), kDefaultFile);
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(ConfigFileTest, WritesValuesInPlainDecimalAndReadsThemBack) {
    options_ = Options{-0.0, 1, 12, -1, 2.5, 0.125, 100000000000000000000.0};
    create();
    EXPECT_EQ(readConfig(),
              "[Veskor 1.9]\r\nCreate00index=0\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=12\r\n"
              "DefaultGUIFontSize=-1\r\nHighDPIGUIAdjust=2.5\r\nAutoCreateExpDesc=0.125\r\n"
              "BgColor=100000000000000000000\r\n");
    Options read = sevens();
    ASSERT_EQ(processConfigFile(configFile_, read, prompter_), ConfigResult::Read);
    EXPECT_EQ(read.optionsDefaultGUIFont, 12);
    EXPECT_EQ(read.optionsDefaultGUIFontSize, -1);
    EXPECT_EQ(read.optionsBgColor, 1e20);
    // Switches keep only their last character: "2.5" reads back as 5.
    EXPECT_EQ(read.optionsHighDPIGUIAdjust, 5);
}

TEST_F(ConfigFileTest, ReadsEachLineByItsKeyAndValueRule) {
    const std::string h = "[Veskor 1.9]\r\n";
    struct Row {
        const char* name;
        std::string file;
        double Options::*field;
        double expected;
    };
    const Row rows[] = {
        {"switch of 1", h + "AutoCreateExpDesc=1\r\n", &Options::optionsAutoCreateExpDesc, 1},
        {"switch takes only the last character", h + "Create00index=10\r\n",
         &Options::optionsCreate00index, 0},
        {"switch after other text", h + "CreateExpDescNonNTFS=xx1\r\n",
         &Options::optionsCreateExpDescNonNTFS, 1},
        {"switch with a trailing blank", h + "HighDPIGUIAdjust=1 \r\n",
         &Options::optionsHighDPIGUIAdjust, 0},
        {"switch with the key alone", h + "Create00index=\r\n", &Options::optionsCreate00index, 0},
        {"list value", h + "BgColor=3\r\n", &Options::optionsBgColor, 3},
        {"list value after a blank", h + "BgColor= 2\r\n", &Options::optionsBgColor, 2},
        {"list value followed by letters", h + "DefaultGUIFontSize=3abc\r\n",
         &Options::optionsDefaultGUIFontSize, 3},
        {"list value of letters", h + "DefaultGUIFontSize=abc\r\n",
         &Options::optionsDefaultGUIFontSize, 0},
        {"list value missing", h + "DefaultGUIFontSize=\r\n", &Options::optionsDefaultGUIFontSize,
         0},
        {"list value with a fraction", h + "DefaultGUIFont=2.5\r\n",
         &Options::optionsDefaultGUIFont, 2.5},
        {"list value starting with a point", h + "BgColor=.5\r\n", &Options::optionsBgColor, 0.5},
        {"second point ends the number", h + "BgColor=1.2.3\r\n", &Options::optionsBgColor, 1.2},
        {"negative list value", h + "BgColor=-1\r\n", &Options::optionsBgColor, -1},
        {"plus sign", h + "BgColor=+4\r\n", &Options::optionsBgColor, 4},
        {"sign alone", h + "BgColor=-\r\n", &Options::optionsBgColor, 0},
        {"list value too large for a number", h + "BgColor=" + std::string(400, '9') + "\r\n",
         &Options::optionsBgColor, DBL_MAX},
        {"key in another letter case", h + "bgcolor=2\r\n", &Options::optionsBgColor, 7},
        {"blank before the key", h + " BgColor=2\r\n", &Options::optionsBgColor, 7},
        {"longer key is not the shorter one", h + "DefaultGUIFontSize=3\r\n",
         &Options::optionsDefaultGUIFont, 7},
        {"later line wins", h + "BgColor=1\r\nBgColor=3\r\n", &Options::optionsBgColor, 3},
        {"missing key keeps its value", h + "BgColor=1\r\n", &Options::optionsCreate00index, 7},
        {"header below other lines", "junk\r\n\r\n" + h + "BgColor=2\r\n", &Options::optionsBgColor,
         2},
        {"lines above the header ignored", "BgColor=4\r\n" + h, &Options::optionsBgColor, 7},
        {"line ends of LF only", "[Veskor 1.9]\nBgColor=2\n", &Options::optionsBgColor, 2},
        {"no final line end", h + "BgColor=2", &Options::optionsBgColor, 2},
    };
    for (const auto& [name, file, field, expected] : rows) {
        SCOPED_TRACE(name);
        writeConfig(file);
        options_ = sevens();
        ASSERT_EQ(process(), ConfigResult::Read);
        EXPECT_EQ(options_.*field, expected);
        EXPECT_EQ(readConfig(), file);  // a file with its header is never rewritten
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
        writeConfig(file);
        options_ = Options{};
        ASSERT_EQ(process(), ConfigResult::Read);
        EXPECT_EQ(readConfig(), kDefaultFile);
        EXPECT_EQ(options_.optionsBgColor, 0);
    }
    EXPECT_TRUE(prompter_.shown.empty());
}

// Each row makes the file unreadable in its own way, in a folder of its own.
TEST_F(ConfigFileTest, EndsTheProgramWhenTheFileCannotBeRead) {
    const std::pair<const char*, void (*)(const TempDir&)> rows[] = {
        {"missing file", [](const TempDir&) {}},
        {"folder in its place", [](const TempDir& dir) { dir.mkdir("config.dat"); }},
        {"link loop",
         [](const TempDir& dir) {
             ASSERT_EQ(symlink((dir / "config.dat").c_str(), (dir / "config.dat").c_str()), 0);
         }},
    };
    for (const auto& [name, makeUnreadable] : rows) {
        SCOPED_TRACE(name);
        TempDir dir;
        makeUnreadable(dir);
        ScriptedPrompter prompter;
        Options options = sevens();
        EXPECT_EQ(processConfigFile(dir / "config.dat", options, prompter),
                  ConfigResult::EndProgram);
        ASSERT_EQ(prompter.texts(), std::vector<std::string>{kCannotProcess});
        EXPECT_EQ(prompter.shown[0].title, "Veskor Repair Tool");
        EXPECT_EQ(prompter.shown[0].icon, Icon::Critical);
        EXPECT_EQ(options.optionsBgColor, 7);
    }
}

TEST_F(ConfigFileTest, ShowsTheRecreateMessageWhenTheFileCannotBeWritten) {
    const std::pair<const char*, std::string> rows[] = {
        {"folder missing", dir_ / "gone/config.dat"},
        {"folder in its place", dir_.mkdir("asfolder/config.dat")},
        {"read-only file", dir_.write("readonly/config.dat", "old")},
    };
    chmod((dir_ / "readonly/config.dat").c_str(), 0444);
    for (const auto& [name, path] : rows) {
        SCOPED_TRACE(name);
        ScriptedPrompter prompter;
        createConfigFile(path, options_, prompter);
        ASSERT_EQ(prompter.texts(), std::vector<std::string>{kCannotRecreate});
        EXPECT_EQ(prompter.shown[0].title, "Veskor Repair Tool");
        EXPECT_EQ(prompter.shown[0].icon, Icon::Critical);
        EXPECT_EQ(prompter.shown[0].buttons, Buttons::Ok);
    }
    EXPECT_EQ(readFileBytes(dir_ / "readonly/config.dat"), "old");
}

TEST_F(ConfigFileTest, GoesOnWithTheDefaultsWhenAHeaderlessFileCannotBeReplaced) {
    writeConfig("[Veskor 1.8]\r\nBgColor=3\r\n");
    chmod(configFile_.c_str(), 0444);
    options_ = Options{};
    EXPECT_EQ(process(), ConfigResult::Read);
    expectOnlyMessage(kCannotRecreate);
    EXPECT_EQ(options_.optionsBgColor, 0);
    EXPECT_EQ(readConfig(), "[Veskor 1.8]\r\nBgColor=3\r\n");
}

}  // namespace

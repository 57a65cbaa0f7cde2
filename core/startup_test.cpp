#include "core/startup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/environment.h"
#include "platform/lookup.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

using Lines = std::vector<std::string>;

// Records which of the window's steps ran, in order, and the colour it was given.
class RecordingWindow : public StartupWindow {
public:
    void beginStartup() override { steps.push_back("begin"); }
    void clearDescription() override { steps.push_back("clear"); }
    void settingsReady(const SharedState& state) override {
        steps.push_back("colour " + std::to_string(static_cast<int>(state.options.optionsBgColor)));
    }
    Lines steps;
};

class StartupTest : public ::testing::Test {
protected:
    StartupResult start(const std::string& program, const std::string& dataHome) {
        prompter_.shown.clear();
        window_.steps.clear();
        return runStartup(state_, {program, dataHome}, prompter_, window_);
    }

    TempHome home_;
    TempDir dir_;
    std::string program_ = dir_.mkdir("program");                // without its trailing "/"
    std::string blocked_ = dir_.write("blocker", "") + "/data";  // nothing can be made there
    SharedState state_;
    ScriptedPrompter prompter_;
    RecordingWindow window_;
};

// A second start takes the folder as it is: a plain file named "failsafe db" satisfies
// the lookup, the settings are read over fresh defaults and the first run's target is
// forgotten.
TEST_F(StartupTest, FirstStartCreatesAPrivateDataFolderAndTheDefaultSettings) {
    ASSERT_EQ(start(program_, appDataFolder()), StartupResult::Continue);
    const std::string data = home_.dataHome() + "/Kelvane/Veskor/";
    EXPECT_EQ(state_.data.appPath, program_ + "/");
    EXPECT_EQ(state_.data.appDataPath, data);
    EXPECT_EQ(readFileBytes(data + "config.dat"),
              "[Veskor 1.9]\r\nCreate00index=1\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=0\r\n"
              "DefaultGUIFontSize=0\r\nHighDPIGUIAdjust=0\r\nAutoCreateExpDesc=0\r\nBgColor=0\r\n");
    struct stat st {};
    ASSERT_EQ(::stat(home_.dataHome().c_str(), &st), 0);  // ~/.local/share made here
    EXPECT_EQ(st.st_mode & 0777, 0700u);
    EXPECT_FALSE(entryExists(program_ + "/failsafe db"));
    EXPECT_TRUE(prompter_.shown.empty());
    EXPECT_EQ(window_.steps, (Lines{"begin", "clear", "colour 0"}));

    ASSERT_EQ(::rmdir((data + "failsafe db").c_str()), 0);  // made as a folder
    writeFileBytes(data + "failsafe db", "");
    writeFileBytes(data + "config.dat", "[Veskor 1.9]\r\nBgColor=3\r\n");
    state_.options = Options{5, 5, 5, 5, 5, 5, 5};
    state_.target = TargetPaths{"/old/a.txt", "a.txt", "/old/", "/old/00_index.txt"};
    state_.targetFileDesc = "old";
    ASSERT_EQ(start(program_, appDataFolder()), StartupResult::Continue);
    EXPECT_EQ(state_.data.failsafeDBpath, data + "failsafe db/");
    EXPECT_EQ(window_.steps.back(), "colour 3");
    EXPECT_EQ(state_.options.optionsCreate00index, 1);
    EXPECT_EQ(
        state_.target.targetFileFullPathname + state_.target.indexFile + state_.targetFileDesc, "");
}

TEST_F(StartupTest, RunsPortableWhenNoDataFolderCanBeHad) {
    for (const std::string& dataHome : {std::string(), blocked_}) {
        SCOPED_TRACE(dataHome.empty() ? "no data home known" : "data home below a file");
        TempDir dir;
        const std::string program = dir.mkdir("program") + "/";
        ASSERT_EQ(start(program, dataHome), StartupResult::Continue);
        EXPECT_EQ(state_.data.appDataPath, program);
        EXPECT_TRUE(IsADirectory(program + "failsafe db") && fileExists(program + "config.dat"));
        EXPECT_TRUE(prompter_.shown.empty());
    }
}

// With the data home blocked, the program folder is the last place left.
TEST_F(StartupTest, EndsWithItsMessageWhenNoDataFolderOrSettingsCanBeHad) {
    const std::string noFolder =
        "Error: Application data folder missing and cannot be created.  Attempted to run in "
        "'portable mode'; cannot do.  Make sure write permissions are enabled in application "
        "folder.";
    const Lines noSettings = {
        "Error: Cannot re-create the configuration settings file.  Permissions issue?",
        "Error: Cannot process the configuration settings file.  Permissions issue?"};
    ASSERT_EQ(symlink("/nonexistent/veskor", (dir_.mkdir("dangling") + "/failsafe db").c_str()), 0);
    dir_.mkdir("settings/config.dat");
    const std::string veskor = "Veskor", repair = "Veskor Repair Tool";
    const std::tuple<const char*, std::string, Lines, std::string, Lines> rows[] = {
        {"program folder is a file", dir_.write("file", ""), {noFolder}, veskor, {"begin"}},
        {"dangling link named failsafe db", dir_ / "dangling", {noFolder}, veskor, {"begin"}},
        {"settings file is a folder", dir_ / "settings", noSettings, repair, {"begin", "clear"}},
    };
    for (const auto& [name, program, texts, title, steps] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(start(program, blocked_), StartupResult::EndProgram);
        ASSERT_EQ(prompter_.texts(), texts);
        EXPECT_EQ(prompter_.shown.back().title, title);
        EXPECT_EQ(prompter_.shown.back().icon, Icon::Critical);
        EXPECT_EQ(window_.steps, steps);
    }
}

}  // namespace

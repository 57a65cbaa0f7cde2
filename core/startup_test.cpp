#include "core/startup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <cstdlib>

#include "platform/environment.h"
#include "platform/lookup.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

constexpr const char* kDefaultFile =
    "[Veskor 1.9]\r\nCreate00index=1\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=0\r\n"
    "DefaultGUIFontSize=0\r\nHighDPIGUIAdjust=0\r\nAutoCreateExpDesc=0\r\nBgColor=0\r\n";

using Lines = std::vector<std::string>;

// Records which of the window's steps ran, in order.
class RecordingWindow : public StartupWindow {
public:
    void beginStartup() override { steps.push_back("begin"); }
    void clearDescription() override { steps.push_back("clear"); }
    void settingsReady(const SharedState& state) override {
        steps.push_back("settings");
        bgColorSeen = state.options.optionsBgColor;
    }
    Lines steps;
    double bgColorSeen = -99;
};

class StartupTest : public ::testing::Test {
protected:
    StartupResult start(const std::string& program) {
        return runStartup(state_, {program, appDataFolder()}, prompter_, window_);
    }
    void setDataHome(const std::string& path) { setenv("XDG_DATA_HOME", path.c_str(), 1); }
    // A data home below a regular file: nothing can be created there.
    void blockDataHome() { setDataHome(dir_.write("blocker", "") + "/data"); }

    TempHome home_;
    TempDir dir_;
    std::string program_ = dir_.mkdir("program");  // without its trailing "/"
    SharedState state_;
    ScriptedPrompter prompter_;
    RecordingWindow window_;
};

TEST_F(StartupTest, FirstStartCreatesTheDataFolderAndTheDefaultSettings) {
    setDataHome(dir_ / "xdg/data");  // not there yet, nor is ~/.local/share
    ASSERT_EQ(start(program_), StartupResult::Continue);
    const std::string data = dir_ / "xdg/data/Kelvane/Veskor/";
    EXPECT_EQ(state_.data.appPath, program_ + "/");
    EXPECT_EQ(state_.data.appDataPath, data);
    EXPECT_EQ(state_.data.failsafeDBpath, data + "failsafe db/");
    EXPECT_EQ(state_.data.configFile, data + "config.dat");
    EXPECT_TRUE(IsADirectory(data + "failsafe db"));
    EXPECT_EQ(readFileBytes(data + "config.dat"), kDefaultFile);
    EXPECT_FALSE(entryExists(program_ + "/failsafe db") || entryExists(home_.dataHome()));
    EXPECT_TRUE(prompter_.shown.empty());
    EXPECT_EQ(window_.steps, (Lines{"begin", "clear", "settings"}));
}

TEST_F(StartupTest, FreshAccountGetsAPrivateDataFolderUnderHome) {
    ASSERT_EQ(start(program_), StartupResult::Continue);
    EXPECT_EQ(state_.data.appDataPath, home_.dataHome() + "/Kelvane/Veskor/");
    struct stat st {};
    ASSERT_EQ(::stat(home_.dataHome().c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
}

TEST_F(StartupTest, RunsPortableWhenNoDataFolderCanBeHad) {
    for (const bool homeUnset : {false, true}) {
        SCOPED_TRACE(homeUnset ? "no data home and no home" : "data home below a file");
        if (homeUnset) {
            unsetenv("XDG_DATA_HOME");
            unsetenv("HOME");
        } else {
            blockDataHome();
        }
        TempDir dir;
        const std::string program = dir.mkdir("program") + "/";
        ASSERT_EQ(start(program), StartupResult::Continue);
        EXPECT_EQ(state_.data.appDataPath, program);
        EXPECT_EQ(state_.data.failsafeDBpath, program + "failsafe db/");
        EXPECT_EQ(state_.data.configFile, program + "config.dat");
        EXPECT_TRUE(IsADirectory(program + "failsafe db"));
        EXPECT_EQ(readFileBytes(program + "config.dat"), kDefaultFile);
        EXPECT_TRUE(prompter_.shown.empty());
    }
}

TEST_F(StartupTest, EndsWhenThePortableFailsafeFolderCannotBeMadeEither) {
    blockDataHome();
    for (const bool dangling : {false, true}) {
        SCOPED_TRACE(dangling ? "dangling link named failsafe db" : "program folder is a file");
        TempDir dir;
        const std::string program = dangling ? dir.mkdir("program") : dir.write("program", "");
        if (dangling) {
            ASSERT_EQ(symlink("/nonexistent/veskor", (program + "/failsafe db").c_str()), 0);
        }
        ScriptedPrompter prompter;
        RecordingWindow window;
        EXPECT_EQ(runStartup(state_, {program, appDataFolder()}, prompter, window),
                  StartupResult::EndProgram);
        ASSERT_EQ(prompter.texts(),
                  Lines{"Error: Application data folder missing and cannot be created.  Attempted "
                        "to run in 'portable mode'; cannot do.  Make sure write permissions are "
                        "enabled in application folder."});
        EXPECT_EQ(prompter.shown[0].title, "Veskor");
        EXPECT_EQ(prompter.shown[0].icon, Icon::Critical);
        EXPECT_EQ(window.steps, Lines{"begin"});
    }
}

// A plain file named "failsafe db" satisfies the lookup; the settings are read over
// fresh defaults and the target of an earlier run is forgotten.
TEST_F(StartupTest, TakesAnExistingDataFolderAsItIs) {
    setDataHome(dir_ / "xdg");
    const std::string data = dir_ / "xdg/Kelvane/Veskor/";
    dir_.write("xdg/Kelvane/Veskor/failsafe db", "");
    dir_.write("xdg/Kelvane/Veskor/config.dat", "[Veskor 1.9]\r\nBgColor=3\r\n");
    state_.options = Options{5, 5, 5, 5, 5, 5, 5};
    state_.target = TargetPaths{"/old/a.txt", "a.txt", "/old/", "/old/00_index.txt"};
    state_.targetFileDesc = "old";
    ASSERT_EQ(start(program_), StartupResult::Continue);
    EXPECT_EQ(state_.data.failsafeDBpath, data + "failsafe db/");
    EXPECT_EQ(window_.bgColorSeen, 3);
    EXPECT_EQ(state_.options.optionsCreate00index, 1);
    EXPECT_EQ(state_.target.targetFileFullPathname + state_.target.indexFile, "");
    EXPECT_EQ(state_.targetFileDesc, "");
    EXPECT_EQ(readFileBytes(data + "config.dat"), "[Veskor 1.9]\r\nBgColor=3\r\n");
}

TEST_F(StartupTest, EndsWhenTheSettingsFileCannotBeProcessed) {
    setDataHome(dir_ / "xdg");
    dir_.mkdir("xdg/Kelvane/Veskor/config.dat");
    EXPECT_EQ(start(program_), StartupResult::EndProgram);
    EXPECT_EQ(
        prompter_.texts(),
        (Lines{"Error: Cannot re-create the configuration settings file.  Permissions issue?",
               "Error: Cannot process the configuration settings file.  Permissions issue?"}));
    EXPECT_EQ(window_.steps, (Lines{"begin", "clear"}));
}

}  // namespace

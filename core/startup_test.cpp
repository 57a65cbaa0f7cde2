#include "core/startup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <cstdlib>
#include <functional>

#include "platform/environment.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

constexpr const char* kDefaultFile =
    "[Veskor 1.9]\r\nCreate00index=1\r\nCreateExpDescNonNTFS=1\r\nDefaultGUIFont=0\r\n"
    "DefaultGUIFontSize=0\r\nHighDPIGUIAdjust=0\r\nAutoCreateExpDesc=0\r\nBgColor=0\r\n";

const std::string kPortableFailure =
    "Error: Application data folder missing and cannot be created.  Attempted to run in "
    "'portable mode'; cannot do.  Make sure write permissions are enabled in application "
    "folder.";

// Records which of the window's steps ran, in order.
class RecordingWindow : public StartupWindow {
public:
    void beginStartup() override { steps.push_back("begin"); }
    void clearDescription() override { steps.push_back("clear"); }
    void settingsReady(const SharedState& state) override {
        steps.push_back("settings");
        bgColorSeen = state.options.optionsBgColor;
    }
    std::vector<std::string> steps;
    double bgColorSeen = -99;
};

bool isFolder(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

class StartupTest : public ::testing::Test {
protected:
    StartupResult start() {
        return runStartup(state_, StartupEnvironment{appPath_, appDataFolder()}, prompter_,
                          window_);
    }
    void setDataHome(const std::string& path) { setenv("XDG_DATA_HOME", path.c_str(), 1); }
    // A data home below a regular file: nothing can be created there.
    void blockDataHome() { setDataHome(dir_.write("blocker", "") + "/data"); }

    TempHome home_;
    TempDir dir_;
    std::string appPath_ = dir_.mkdir("program");  // without its trailing "/"
    SharedState state_;
    ScriptedPrompter prompter_;
    RecordingWindow window_;
};

TEST_F(StartupTest, FirstStartCreatesTheDataFolderAndTheDefaultSettings) {
    setDataHome(dir_ / "xdg/data");  // not there yet, nor is ~/.local/share
    ASSERT_EQ(start(), StartupResult::Continue);
    const std::string data = dir_ / "xdg/data/Kelvane/Veskor/";
    EXPECT_EQ(state_.data.appPath, appPath_ + "/");
    EXPECT_EQ(state_.data.appDataPath, data);
    EXPECT_EQ(state_.data.failsafeDBpath, data + "failsafe db/");
    EXPECT_EQ(state_.data.configFile, data + "config.dat");
    EXPECT_TRUE(isFolder(data + "failsafe db"));
    EXPECT_EQ(readFileBytes(data + "config.dat"), kDefaultFile);
    EXPECT_FALSE(isFolder(appPath_ + "/failsafe db"));
    EXPECT_FALSE(isFolder(home_.dataHome()));
    EXPECT_TRUE(prompter_.shown.empty());
    EXPECT_EQ(window_.steps, (std::vector<std::string>{"begin", "clear", "settings"}));
}

TEST_F(StartupTest, FreshAccountGetsItsDataFolderUnderHome) {
    ASSERT_EQ(start(), StartupResult::Continue);
    EXPECT_EQ(state_.data.appDataPath, home_.dataHome() + "/Kelvane/Veskor/");
    struct stat st {};
    ASSERT_EQ(::stat(home_.dataHome().c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
}

TEST_F(StartupTest, RunsPortableWhenNoDataFolderCanBeHad) {
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"data home below a file", [this] { blockDataHome(); }},
        {"no data home and no home",
         [] {
             unsetenv("XDG_DATA_HOME");
             unsetenv("HOME");
         }},
    };
    for (const auto& [name, spoilDataHome] : rows) {
        SCOPED_TRACE(name);
        TempDir dir;
        const std::string program = dir / "program/";
        dir.mkdir("program");
        spoilDataHome();
        ScriptedPrompter prompter;
        ASSERT_EQ(runStartup(state_, {program, appDataFolder()}, prompter, window_),
                  StartupResult::Continue);
        EXPECT_EQ(state_.data.appDataPath, program);
        EXPECT_EQ(state_.data.failsafeDBpath, program + "failsafe db/");
        EXPECT_EQ(state_.data.configFile, program + "config.dat");
        EXPECT_TRUE(isFolder(program + "failsafe db"));
        EXPECT_EQ(readFileBytes(program + "config.dat"), kDefaultFile);
        EXPECT_TRUE(prompter.shown.empty());
    }
}

// Each row makes a program folder in which "failsafe db" cannot be created.
TEST_F(StartupTest, EndsWhenThePortableFailsafeFolderCannotBeMadeEither) {
    const std::pair<const char*, std::string (*)(const TempDir&)> rows[] = {
        {"program folder is a file", [](const TempDir& dir) { return dir.write("program", ""); }},
        {"dangling link named failsafe db",
         [](const TempDir& dir) {
             std::string program = dir.mkdir("program");
             EXPECT_EQ(symlink("/nonexistent/veskor", (program + "/failsafe db").c_str()), 0);
             return program;
         }},
    };
    blockDataHome();
    for (const auto& [name, makeProgramFolder] : rows) {
        SCOPED_TRACE(name);
        TempDir dir;
        ScriptedPrompter prompter;
        RecordingWindow window;
        EXPECT_EQ(runStartup(state_, {makeProgramFolder(dir), appDataFolder()}, prompter, window),
                  StartupResult::EndProgram);
        ASSERT_EQ(prompter.texts(), std::vector<std::string>{kPortableFailure});
        EXPECT_EQ(prompter.shown[0].title, "Veskor");
        EXPECT_EQ(prompter.shown[0].icon, Icon::Critical);
        EXPECT_EQ(window.steps, std::vector<std::string>{"begin"});
    }
}

TEST_F(StartupTest, APlainFileNamedFailsafeDbCountsAsTheFolder) {
    setDataHome(dir_ / "xdg");
    dir_.write("xdg/Kelvane/Veskor/failsafe db", "");
    ASSERT_EQ(start(), StartupResult::Continue);
    EXPECT_EQ(state_.data.failsafeDBpath, dir_ / "xdg/Kelvane/Veskor/failsafe db/");
    EXPECT_EQ(state_.data.appDataPath, dir_ / "xdg/Kelvane/Veskor/");
}

TEST_F(StartupTest, StartsFromTheDefaultsAndReadsTheSettingsFile) {
    setDataHome(dir_ / "xdg");
    dir_.write("xdg/Kelvane/Veskor/config.dat", "[Veskor 1.9]\r\nBgColor=3\r\n");
    state_.options = Options{5, 5, 5, 5, 5, 5, 5};
    state_.target = TargetPaths{"/old/a.txt", "a.txt", "/old/", "/old/00_index.txt"};
    state_.targetFileDesc = "old";
    ASSERT_EQ(start(), StartupResult::Continue);
    EXPECT_EQ(state_.options.optionsBgColor, 3);
    EXPECT_EQ(window_.bgColorSeen, 3);
    EXPECT_EQ(state_.options.optionsCreate00index, 1);
    EXPECT_EQ(state_.options.optionsDefaultGUIFont, 0);
    EXPECT_EQ(state_.target.targetFileFullPathname, "");
    EXPECT_EQ(state_.target.indexFile, "");
    EXPECT_EQ(state_.targetFileDesc, "");
    EXPECT_EQ(readFileBytes(dir_ / "xdg/Kelvane/Veskor/config.dat"),
              "[Veskor 1.9]\r\nBgColor=3\r\n");
}

TEST_F(StartupTest, EndsWhenTheSettingsFileCannotBeProcessed) {
    setDataHome(dir_ / "xdg");
    dir_.mkdir("xdg/Kelvane/Veskor/config.dat");
    EXPECT_EQ(start(), StartupResult::EndProgram);
    EXPECT_EQ(prompter_.texts(),
              (std::vector<std::string>{
                  "Error: Cannot re-create the configuration settings file.  Permissions issue?",
                  "Error: Cannot process the configuration settings file.  Permissions issue?"}));
    EXPECT_EQ(window_.steps, (std::vector<std::string>{"begin", "clear"}));
}

}  // namespace

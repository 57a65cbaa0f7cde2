#include "core/target.h"

#include <unistd.h>

#include <gtest/gtest.h>
#include <cctype>
#include <filesystem>

#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

class TargetTest : public ::testing::Test {
protected:
    TargetTest() { state_.data.failsafeDBpath = dir_.mkdir("data/failsafe db") + "/"; }

    // The current folder as a target path: no trailing "/" unless it is the root.
    static std::string currentFolderPath() { return std::filesystem::current_path().string(); }

    void expectRefusedWith(const std::string& text) { expectRefusedWith(prompter_, text); }
    static void expectRefusedWith(const ScriptedPrompter& prompter, const std::string& text) {
        ASSERT_EQ(prompter.texts(), std::vector<std::string>{text});
        EXPECT_EQ(prompter.shown[0].title, "Veskor");
        EXPECT_EQ(prompter.shown[0].icon, Icon::Critical);
        EXPECT_EQ(prompter.shown[0].buttons, Buttons::Ok);
    }

    TempDir dir_;
    SharedState state_;
    ScriptedPrompter prompter_;
};

TEST_F(TargetTest, JoinsTheArgumentsWithSingleBlanks) {
    const char* argv[] = {"veskor", "/docs/My", "Plan.txt"};
    EXPECT_EQ(argumentText(3, argv), "/docs/My Plan.txt");
    EXPECT_EQ(argumentText(1, argv), "");
}

TEST_F(TargetTest, ResolvesTheArgumentToTheTargetPaths) {
    const std::string cwd = currentFolderPath();
    const std::string twoHundredFortyThree = "/" + std::string(242, 'a');
    const std::string accentedAtTheLimit = "/" + [] {
        std::string s;
        for (int i = 0; i < 242; ++i)
            s += "\xc3\xa9";  // é: two bytes, one character
        return s;
    }();
    struct Row {
        const char* name;
        std::string argument;
        std::string fullPath;
        std::string file;
    };
    const Row rows[] = {
        {"quotes at both ends", "\"/docs/Plan.txt\"", "/docs/Plan.txt", "Plan.txt"},
        {"quote at the start only", "\"/docs/Plan.txt", "/docs/Plan.txt", "Plan.txt"},
        {"quote at the end only", "/docs/Plan.txt\"", "/docs/Plan.txt", "Plan.txt"},
        {"inner quotes and blanks kept", "/docs/a \"b\".txt ", "/docs/a \"b\".txt ",
         "a \"b\".txt "},
        {"exported file names its owner", "/docs/Plan.txt.DeScRiPtIoN", "/docs/Plan.txt",
         "Plan.txt"},
        {"relative path", "docs/Plan.txt", cwd + "/docs/Plan.txt", "Plan.txt"},
        {"current folder", ".", cwd, std::filesystem::path(cwd).filename().string()},
        {"parent components", "/docs/old/../Plan.txt", "/docs/Plan.txt", "Plan.txt"},
        {"repeated separators", "//docs///Plan.txt", "/docs/Plan.txt", "Plan.txt"},
        {"243 characters", twoHundredFortyThree, twoHundredFortyThree, std::string(242, 'a')},
        {"243 characters of two bytes each", accentedAtTheLimit, accentedAtTheLimit,
         accentedAtTheLimit.substr(1)},
    };
    for (const auto& [name, argument, fullPath, file] : rows) {
        SCOPED_TRACE(name);
        SharedState state = state_;
        ASSERT_EQ(resolveTarget(argument, state, prompter_), TargetResult::Accepted);
        EXPECT_EQ(state.target.targetFileFullPathname, fullPath);
        EXPECT_EQ(state.target.targetFile, file);
    }
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(TargetTest, TakesThePickersPathUnchanged) {
    ASSERT_EQ(acceptTarget("/docs/./old/../Plan.txt", state_, prompter_), TargetResult::Accepted);
    EXPECT_EQ(state_.target.targetFileFullPathname, "/docs/./old/../Plan.txt");
}

TEST_F(TargetTest, RefusesTargetsWithoutADescription) {
    const std::string tooLong = "/" + std::string(243, 'a');
    const std::string tooLongWithSuffix = "/" + std::string(231, 'a') + ".description";
    const std::string root = "You cannot create descriptions for the root folder.";
    const std::string lineBreak =
        "You cannot create descriptions for files or folders whose name contains a line break.";
    const std::string& failsafe = state_.data.failsafeDBpath;
    std::string failsafeUpper = failsafe;
    for (char& c : failsafeUpper)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    struct Row {
        const char* name;
        std::string argument;
        std::string text;
    };
    const Row rows[] = {
        {"244 characters", tooLong,
         "Error: Target file/folder full pathname exceeds 243 characters.  Aborting...\r\n"
         "Target: " +
             tooLong},
        {"244 characters counted with the suffix", tooLongWithSuffix,
         "Error: Target file/folder full pathname exceeds 243 characters.  Aborting...\r\n"
         "Target: " +
             tooLongWithSuffix},
        {"root folder", "/", root},
        {"quoted root folder", "\"/\"", root},
        {"folder with a trailing separator", "/docs/", root},
        {"relative folder with a trailing separator", "docs/", root},
        {"inside the failsafe folder", failsafe + "ver1.7.dat", "Don't do that."},
        {"failsafe folder in another case", failsafeUpper + "X", "Don't do that."},
        {"line feed in the name", "/docs/a\nb.txt", lineBreak},
        {"carriage return in the name", "/docs/a\rb.txt", lineBreak},
    };
    for (const auto& [name, argument, text] : rows) {
        SCOPED_TRACE(name);
        ScriptedPrompter prompter;
        SharedState state = state_;
        EXPECT_EQ(resolveTarget(argument, state, prompter), TargetResult::EndProgram);
        expectRefusedWith(prompter, text);
        EXPECT_EQ(state.target.targetFileFullPathname, "");
    }
}

TEST_F(TargetTest, DerivesTheFolderPathsOfAnExistingTarget) {
    state_.targetFileDesc = "left over";
    const std::string targets[] = {dir_.write("docs/Plan.txt", "x"), dir_.mkdir("docs/sub")};
    for (const std::string& target : targets) {
        SCOPED_TRACE(target);
        ASSERT_EQ(acceptTarget(target, state_, prompter_), TargetResult::Accepted);
        std::string reading;
        ASSERT_EQ(checkTargetExists(state_, prompter_, reading), ExistenceResult::Exists);
        EXPECT_EQ(state_.target.indexFilePath, dir_ / "docs/");
        EXPECT_EQ(state_.target.indexFile, dir_ / "docs/00_index.txt");
        EXPECT_EQ(state_.targetFileDesc, "");
    }
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(TargetTest, RefusesATargetThatCannotBeLookedUp) {
    ASSERT_EQ(symlink((dir_ / "loop").c_str(), (dir_ / "loop").c_str()), 0);
    ASSERT_EQ(acceptTarget(dir_ / "loop", state_, prompter_), TargetResult::Accepted);
    std::string reading;
    EXPECT_EQ(checkTargetExists(state_, prompter_, reading), ExistenceResult::EndProgram);
    expectRefusedWith("You cannot create descriptions for the root folder or for a share.");
}

TEST_F(TargetTest, EndsWhenAMissingTargetHasNoExportedFile) {
    dir_.mkdir("Gone.txt.description");  // a folder is not an exported file
    ASSERT_EQ(acceptTarget(dir_ / "Gone.txt", state_, prompter_), TargetResult::Accepted);
    std::string reading;
    EXPECT_EQ(checkTargetExists(state_, prompter_, reading), ExistenceResult::EndProgram);
    expectRefusedWith("Error: file not found.\r\n\"" + dir_ / "Gone.txt" + "\"");
    EXPECT_EQ(state_.target.indexFile, "");
}

TEST_F(TargetTest, ShowsTheExportedFileOfAMissingTargetForReading) {
    dir_.write("Gone.txt.description", "First\nSecond caf\xe9\r\nThird");
    ASSERT_EQ(acceptTarget(dir_ / "Gone.txt", state_, prompter_), TargetResult::Accepted);
    std::string reading;
    EXPECT_EQ(checkTargetExists(state_, prompter_, reading), ExistenceResult::ReadingState);
    expectRefusedWith("Error: file not found.\r\n\"" + dir_ / "Gone.txt" + "\"");
    EXPECT_EQ(reading, "First\r\nSecond caf\xc3\xa9\r\nThird\r\n");
}

}  // namespace

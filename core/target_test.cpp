#include "core/target.h"

#include <unistd.h>

#include <gtest/gtest.h>
#include <filesystem>

#include "platform/code_page.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

class TargetTest : public ::testing::Test {
protected:
    TargetTest() { state_.data.failsafeDBpath = dir_.mkdir("data/failsafe db") + "/"; }

    TempDir dir_;
    SharedState state_;
    ScriptedPrompter prompter_;
    std::string reading_;
};

TEST_F(TargetTest, ResolvesTheArgumentToTheTargetPaths) {
    const std::string cwd = std::filesystem::current_path().string();
    std::string accented = "/";  // 243 characters
    while (accented.size() < 485)
        accented += "\xC3\xA9";
    // name, argument, full path, file
    const std::tuple<const char*, std::string, std::string, std::string> rows[] = {
        {"quotes at both ends", "\"/docs/Plan.txt\"", "/docs/Plan.txt", "Plan.txt"},
        {"quote at the end only", "/docs/Plan.txt\"", "/docs/Plan.txt", "Plan.txt"},
        {"exported file names its owner", "/docs/Plan.txt.DeScRiPtIoN", "/docs/Plan.txt",
         "Plan.txt"},
        {"relative path", "docs/Plan.txt", cwd + "/docs/Plan.txt", "Plan.txt"},
        {"current folder", ".", cwd, std::filesystem::path(cwd).filename().string()},
        {"dots and repeated separators", "//docs/./old/../Plan.txt", "/docs/Plan.txt", "Plan.txt"},
        {"243 characters of two bytes each", accented, accented, accented.substr(1)},
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

// Refused when the argument is resolved, or when the resolved target is looked up.
TEST_F(TargetTest, RefusesTargetsWithoutADescription) {
    const std::string tooLong = "/" + std::string(243, 'a');
    const std::string tooLongWithSuffix = "/" + std::string(231, 'a') + ".description";
    const std::string tooLongText =
        "Error: Target file/folder full pathname exceeds 243 characters.  Aborting...\r\nTarget: ";
    const std::string root = "You cannot create descriptions for the root folder.";
    const std::string lineBreak =
        "You cannot create descriptions for files or folders whose name contains a line break.";
    ASSERT_EQ(symlink((dir_ / "loop").c_str(), (dir_ / "loop").c_str()), 0);
    dir_.mkdir("Gone.txt.description");  // a folder is not an exported file
    const std::pair<std::string, std::string> rows[] = {
        {tooLong, tooLongText + tooLong},
        {tooLongWithSuffix, tooLongText + tooLongWithSuffix},
        {"\"/\"", root},
        {"docs/", root},
        {upperCase(state_.data.failsafeDBpath) + "X", "Don't do that."},
        {"/docs/a\nb.txt", lineBreak},
        {"/docs/a\rb.txt", lineBreak},
        {dir_ / "loop", "You cannot create descriptions for the root folder or for a share."},
        {dir_ / "Gone.txt", "Error: file not found.\r\n\"" + dir_ / "Gone.txt" + "\""},
    };
    for (const auto& [argument, text] : rows) {
        SCOPED_TRACE(argument.substr(0, 60));
        ScriptedPrompter prompter;
        SharedState state = state_;
        EXPECT_TRUE(resolveTarget(argument, state, prompter) == TargetResult::EndProgram ||
                    checkTargetExists(state, prompter, reading_) == ExistenceResult::EndProgram);
        ASSERT_EQ(prompter.texts(), std::vector<std::string>{text});
        EXPECT_EQ(prompter.shown[0].title, "Veskor");
        EXPECT_EQ(prompter.shown[0].icon, Icon::Critical);
        EXPECT_EQ(prompter.shown[0].buttons, Buttons::Ok);
    }
}

// The database is refused as a target however the data folder's path is written, and
// whether the path comes as an argument (normalised) or from the picker (as it is).
TEST_F(TargetTest, RefusesTheFailsafeFolderHoweverEitherPathIsSpelled) {
    const std::string folder = state_.data.failsafeDBpath;  // ends in "/"
    const std::string base =
        folder.substr(0, folder.size() - std::string("data/failsafe db/").size());
    ASSERT_EQ(symlink((base + "data").c_str(), (dir_ / "link").c_str()), 0);
    // name, failsafe folder as start-up found it, target
    const std::tuple<const char*, std::string, std::string> rows[] = {
        {"repeated separator in the folder", base + "/data//failsafe db/", folder + "ver1.7.dat"},
        {"dot-dot in the folder", base + "data/x/../failsafe db/", folder + "ver1.7.dat"},
        {"dot in the target", folder, base + "data/./failsafe db/ver1.7.dat"},
        {"folder reached through a link", folder, dir_ / "link/failsafe db/ver1.7.dat"},
        {"link in the folder", dir_ / "link/failsafe db/", folder + "ver1.7.dat"},
    };
    for (const auto& [name, failsafeFolder, target] : rows) {
        SCOPED_TRACE(name);
        for (const bool fromPicker : {false, true}) {
            ScriptedPrompter prompter;
            SharedState state = state_;
            state.data.failsafeDBpath = failsafeFolder;
            EXPECT_EQ(fromPicker ? acceptTarget(target, state, prompter)
                                 : resolveTarget(target, state, prompter),
                      TargetResult::EndProgram);
            EXPECT_EQ(prompter.texts(), std::vector<std::string>{"Don't do that."});
        }
    }
    ASSERT_EQ(acceptTarget(base + "data/failsafe db.txt", state_, prompter_),
              TargetResult::Accepted);
}

// A listing checks every entry with one resolver: an entry that is a link, or that lies in
// a folder reached through one, is followed on its own, whatever entries came before it.
TEST_F(TargetTest, OneResolverForManyEntriesStillRefusesTheFailsafeFolder) {
    const std::string folder = state_.data.failsafeDBpath;
    dir_.write("docs/Plan.txt", "x");
    dir_.write("data/failsafe db/ver1.7.dat", "");
    ASSERT_EQ(symlink((folder + "ver1.7.dat").c_str(), (dir_ / "docs/db.txt").c_str()), 0);
    ASSERT_EQ(symlink(folder.c_str(), (dir_ / "docs/data").c_str()), 0);
    // name, target, refused
    const std::tuple<const char*, std::string, bool> rows[] = {
        {"plain file", dir_ / "docs/Plan.txt", false},
        {"link to the database beside it", dir_ / "docs/db.txt", true},
        {"missing file beside it", dir_ / "docs/Gone.txt", false},
        {"entry of a linked folder", dir_ / "docs/data/ver1.7.dat", true},
        {"back in the first folder", dir_ / "docs/Plan.txt", false},
        {"folder of its own through a link", dir_ / "docs/data", false},
    };
    // Once looking at each entry, once told by the folder's listing which ones are links.
    for (const bool told : {false, true}) {
        PathResolver resolver;
        for (const auto& [name, target, refused] : rows) {
            SCOPED_TRACE(std::string(name) + (told ? ", told" : ""));
            const std::string path = target;
            if (told)
                resolver.knowEntry(path, std::filesystem::is_symlink(path));
            EXPECT_EQ(resolver.resolved(path), std::filesystem::weakly_canonical(path).string());
            if (told)
                resolver.knowEntry(path, std::filesystem::is_symlink(path));
            ScriptedPrompter prompter;
            SharedState state = state_;
            EXPECT_EQ(acceptTarget(path, state, prompter, resolver),
                      refused ? TargetResult::EndProgram : TargetResult::Accepted);
        }
    }
}

// The picker's path is taken as it is, not normalised like an argument.
TEST_F(TargetTest, TakesThePickersPathAndDerivesTheFolderPathsOfAnExistingTarget) {
    ASSERT_EQ(acceptTarget("/docs/./old/../Plan.txt", state_, prompter_), TargetResult::Accepted);
    EXPECT_EQ(state_.target.targetFileFullPathname, "/docs/./old/../Plan.txt");
    state_.targetFileDesc = "left over";
    for (const std::string& target : {dir_.write("docs/Plan.txt", "x"), dir_.mkdir("docs/sub")}) {
        SCOPED_TRACE(target);
        ASSERT_EQ(acceptTarget(target, state_, prompter_), TargetResult::Accepted);
        ASSERT_EQ(checkTargetExists(state_, prompter_, reading_), ExistenceResult::Exists);
        EXPECT_EQ(state_.target.indexFile, dir_ / "docs/00_index.txt");
        EXPECT_EQ(state_.targetFileDesc, "");
    }
    EXPECT_TRUE(prompter_.shown.empty());
}

}  // namespace

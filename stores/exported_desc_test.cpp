#include "stores/exported_desc.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

class ExportedDescTest : public ::testing::Test {
protected:
    std::string target() const { return dir_ / "plan.doc"; }
    std::string exported() const { return dir_ / "plan.doc.description"; }

    WriteResult save(const std::string& desc, bool exportChecked, int removeFlag = 0) {
        SharedState state;
        state.target.targetFileFullPathname = target();
        state.targetFileDesc = desc;
        state.removeTargetFileDescFlag = removeFlag;
        return updateExpDesc(state, exportChecked, prompter_);
    }

    void expectFailureShown() {
        ASSERT_EQ(prompter_.shown.size(), 1u);
        EXPECT_EQ(prompter_.shown[0].text,
                  "Error: Problem while updating exported description file.");
        EXPECT_EQ(prompter_.shown[0].title, "Veskor");
        EXPECT_EQ(prompter_.shown[0].icon, Icon::Critical);
    }

    TempDir dir_;
    ScriptedPrompter prompter_;
};

TEST_F(ExportedDescTest, WritesTheDescriptionFollowedByOneLineEnd) {
    ASSERT_EQ(save("abc", true), WriteResult::Ok);
    EXPECT_EQ(readFileBytes(exported()), "abc\r\n");
    EXPECT_EQ(readExpDesc(target()), "abc\r\n");

    ASSERT_EQ(save(readExpDesc(target()), true), WriteResult::Ok);
    EXPECT_EQ(readFileBytes(exported()), "abc\r\n\r\n");
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(ExportedDescTest, ReadsEveryLineOrNothing) {
    struct Case {
        const char* name;
        std::string bytes;
        std::string expected;
    };
    const Case kCases[] = {
        {"empty file", "", ""},
        {"first line empty", "\r\nSecond\r\n", ""},
        {"first line empty after LF", "\nSecond", ""},
        {"no final line end", "One\r\nTwo", "One\r\nTwo\r\n"},
        {"LF and lone CR lines", "One\nTwo\rThree\n", "One\r\nTwo\r\nThree\r\n"},
        {"empty lines inside kept", "One\r\n\r\nTwo\r\n", "One\r\n\r\nTwo\r\n"},
        {"Windows-1252 text decoded", "Caf\xE9 \x80\r\n", "Caf\xC3\xA9 \xE2\x82\xAC\r\n"},
        {"UTF-8 text as it is", "\xC3\xA9t\xC3\xA9\r\n", "\xC3\xA9t\xC3\xA9\r\n"},
    };
    for (const auto& [name, bytes, expected] : kCases) {
        SCOPED_TRACE(name);
        dir_.write("plan.doc.description", bytes);
        EXPECT_EQ(readExpDesc(target()), expected);
    }
}

TEST_F(ExportedDescTest, ReadsNothingWithoutARegularFile) {
    EXPECT_EQ(readExpDesc(target()), "");
    dir_.mkdir("plan.doc.description");
    EXPECT_EQ(readExpDesc(target()), "");
}

TEST_F(ExportedDescTest, DeletingRemovesTheFileEvenWithTheBoxClear) {
    dir_.write("plan.doc.description", "Old\r\n");
    ASSERT_EQ(save("", false, 1), WriteResult::Ok);
    EXPECT_FALSE(std::filesystem::exists(exported()));
    ASSERT_EQ(save("", true, 1), WriteResult::Ok);  // nothing left to delete: no error
    EXPECT_FALSE(std::filesystem::exists(exported()));
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(ExportedDescTest, BoxClearLeavesAnExistingFileAsItIs) {
    dir_.write("plan.doc.description", "Older text");
    ASSERT_EQ(save("Newer", false), WriteResult::Ok);
    EXPECT_EQ(readFileBytes(exported()), "Older text");
}

TEST_F(ExportedDescTest, FolderTargetsFileLiesBesideTheFolder) {
    SharedState state;
    state.target.targetFileFullPathname = dir_.mkdir("Old");
    state.targetFileDesc = "Archive";
    ASSERT_EQ(updateExpDesc(state, true, prompter_), WriteResult::Ok);
    EXPECT_EQ(readFileBytes(dir_ / "Old.description"), "Archive\r\n");
    EXPECT_EQ(readExpDesc(dir_ / "Old"), "Archive\r\n");
}

TEST_F(ExportedDescTest, FailuresShowTheirMessageAndKeepTheOldFile) {
    struct Case {
        const char* name;
        bool deleting;
        void (*arrange)(const TempDir&);
        std::string keptFile;  // "" when a folder stands in the way
    };
    const Case kCases[] = {
        {"folder where the file must be", false,
         [](const TempDir& d) { d.mkdir("plan.doc.description/inside"); }, ""},
        {"folder where the temporary file must be", false,
         [](const TempDir& d) {
             d.write("plan.doc.description", "Old\r\n");
             d.mkdir("plan.doc.description.tmp/inside");
         },
         "Old\r\n"},
        {"read-only file rewritten", false,
         [](const TempDir& d) {
             ::chmod(d.write("plan.doc.description", "Old\r\n").c_str(), 0444);
         },
         "Old\r\n"},
        {"read-only file deleted", true,
         [](const TempDir& d) {
             ::chmod(d.write("plan.doc.description", "Old\r\n").c_str(), 0444);
         },
         "Old\r\n"},
    };
    for (const auto& [name, deleting, arrange, keptFile] : kCases) {
        SCOPED_TRACE(name);
        TempDir dir;
        arrange(dir);
        SharedState state;
        state.target.targetFileFullPathname = dir / "plan.doc";
        state.targetFileDesc = deleting ? "" : "New";
        state.removeTargetFileDescFlag = deleting ? 1 : 0;
        prompter_.shown.clear();

        EXPECT_EQ(updateExpDesc(state, true, prompter_), WriteResult::Error);
        expectFailureShown();
        if (keptFile.empty())
            EXPECT_TRUE(std::filesystem::is_directory(dir / "plan.doc.description"));
        else
            EXPECT_EQ(readFileBytes(dir / "plan.doc.description"), keptFile);
    }
}

}  // namespace

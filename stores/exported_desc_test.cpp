#include "stores/exported_desc.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

class ExportedDescTest : public ::testing::Test {
protected:
    WriteResult save(const std::string& desc, bool exportChecked, int removeFlag = 0,
                     const std::string& target = "plan.doc") {
        SharedState state;
        state.target.targetFileFullPathname = dir_ / target;
        state.targetFileDesc = desc;
        state.removeTargetFileDescFlag = removeFlag;
        return updateExpDesc(state, exportChecked, prompter_);
    }
    std::string read() const { return readExpDesc(dir_ / "plan.doc"); }
    // The exported file's bytes, or "(folder)" when a folder stands in its place.
    std::string exported() const {
        std::string path = dir_ / "plan.doc.description";
        return std::filesystem::is_directory(path) ? "(folder)" : readFileBytes(path);
    }

    TempDir dir_;
    ScriptedPrompter prompter_;
};

TEST_F(ExportedDescTest, WritesTheDescriptionFollowedByOneLineEnd) {
    ASSERT_EQ(save("abc", true), WriteResult::Ok);
    EXPECT_EQ(exported(), "abc\r\n");
    EXPECT_EQ(read(), "abc\r\n");
    ASSERT_EQ(save(read(), true), WriteResult::Ok);
    EXPECT_EQ(exported(), "abc\r\n\r\n");

    dir_.mkdir("Old");
    ASSERT_EQ(save("Archive", true, 0, "Old"), WriteResult::Ok);
    EXPECT_EQ(readFileBytes(dir_ / "Old.description"), "Archive\r\n") << "beside the folder";
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(ExportedDescTest, ReadsEveryLineOrNothing) {
    struct Case {
        const char* name;
        std::string bytes, expected;
    } kCases[] = {
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
        EXPECT_EQ(read(), expected);
    }
    std::filesystem::remove(dir_ / "plan.doc.description");
    EXPECT_EQ(read(), "");
    dir_.mkdir("plan.doc.description");
    EXPECT_EQ(read(), "");
}

TEST_F(ExportedDescTest, DeletesEvenWithTheBoxClearAndLeavesTheFileWhenOnlyTheBoxIsClear) {
    dir_.write("plan.doc.description", "Old\r\n");
    ASSERT_EQ(save("Newer", false), WriteResult::Ok);
    EXPECT_EQ(exported(), "Old\r\n");
    ASSERT_EQ(save("", false, 1), WriteResult::Ok);
    EXPECT_FALSE(std::filesystem::exists(dir_ / "plan.doc.description"));
    ASSERT_EQ(save("", true, 1), WriteResult::Ok);  // nothing left to delete: no error
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(ExportedDescTest, FailuresShowTheirMessageAndKeepTheOldFile) {
    struct Case {
        const char* name;
        int removeFlag;
        std::string inTheWay;  // a folder made there, else the old file made read-only
    } kCases[] = {
        {"folder where the file must be", 0, "plan.doc.description"},
        {"folder where the temporary file must be", 0, "plan.doc.description.tmp"},
        {"read-only file rewritten", 0, ""},
        {"read-only file deleted", 1, ""},
    };
    for (const auto& [name, removeFlag, inTheWay] : kCases) {
        SCOPED_TRACE(name);
        std::filesystem::remove_all(dir_ / "plan.doc.description");
        std::filesystem::remove_all(dir_ / "plan.doc.description.tmp");
        if (inTheWay != "plan.doc.description")
            dir_.write("plan.doc.description", "Old\r\n");
        if (inTheWay.empty())
            ::chmod((dir_ / "plan.doc.description").c_str(), 0444);
        else
            dir_.mkdir(inTheWay + "/inside");
        prompter_.shown.clear();

        EXPECT_EQ(save("New", true, removeFlag), WriteResult::Error);
        ASSERT_EQ(prompter_.shown.size(), 1u);
        EXPECT_EQ(prompter_.shown[0].text,
                  "Error: Problem while updating exported description file.");
        EXPECT_EQ(prompter_.shown[0].title, "Veskor");
        EXPECT_EQ(prompter_.shown[0].icon, Icon::Critical);
        EXPECT_EQ(exported(), inTheWay == "plan.doc.description" ? "(folder)" : "Old\r\n");
    }
}

}  // namespace

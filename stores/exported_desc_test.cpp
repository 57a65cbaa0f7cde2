#include "stores/exported_desc.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

class ExportedDescTest : public ::testing::Test {
protected:
    WriteResult save(const std::string& desc, bool exportChecked, int removeFlag = 0) {
        SharedState state;
        state.target.targetFileFullPathname = dir_ / "plan.doc";
        state.targetFileDesc = desc;
        state.removeTargetFileDescFlag = removeFlag;
        return updateExpDesc(state, exportChecked, prompter_);
    }
    std::string read() const { return readExpDesc(dir_ / "plan.doc"); }

    TempDir dir_;
    const std::string file_ = dir_ / "plan.doc.description";
    ScriptedPrompter prompter_;
};

TEST_F(ExportedDescTest, WritesOnlyWithTheBoxTickedButDeletesEvenWithout) {
    ASSERT_EQ(save("abc", true), WriteResult::Ok);
    EXPECT_EQ(readFileBytes(file_), "abc\r\n");
    ASSERT_EQ(save("Newer", false), WriteResult::Ok);
    EXPECT_EQ(readFileBytes(file_), "abc\r\n");
    ASSERT_EQ(save("", false, 1), WriteResult::Ok);
    EXPECT_FALSE(std::filesystem::exists(file_));
    EXPECT_EQ(save("", true, 1), WriteResult::Ok) << "nothing left to delete";
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(ExportedDescTest, ReadsEveryLineOrNothing) {
    struct Case {
        const char* name;
        std::string bytes, expected;
    } kCases[] = {
        {"first line empty", "\r\nSecond\r\n", ""},
        {"no final line end", "One\r\nTwo", "One\r\nTwo\r\n"},
        {"empty lines inside kept", "One\r\n\r\nTwo\r\n", "One\r\n\r\nTwo\r\n"},
        {"Windows-1252 text decoded", "Caf\xE9 \x80\r\n", "Caf\xC3\xA9 \xE2\x82\xAC\r\n"},
    };
    for (const auto& [name, bytes, expected] : kCases) {
        SCOPED_TRACE(name);
        dir_.write("plan.doc.description", bytes);
        EXPECT_EQ(read(), expected);
    }
    std::filesystem::remove(file_);
    dir_.mkdir("plan.doc.description");
    EXPECT_EQ(read(), "");
}

// A read-only file can be neither rewritten nor deleted.
TEST_F(ExportedDescTest, AReadOnlyFileFailsWithTheMessageAndStaysAsItWas) {
    dir_.write("plan.doc.description", "Old\r\n");
    ASSERT_EQ(::chmod(file_.c_str(), 0444), 0);
    for (int removeFlag : {0, 1}) {
        SCOPED_TRACE(removeFlag ? "deleting" : "rewriting");
        prompter_.shown.clear();
        EXPECT_EQ(save(removeFlag ? "" : "New", true, removeFlag), WriteResult::Error);
        EXPECT_EQ(
            prompter_.texts(),
            std::vector<std::string>{"Error: Problem while updating exported description file."});
        EXPECT_EQ(prompter_.shown[0].icon, Icon::Critical);
        EXPECT_EQ(readFileBytes(file_), "Old\r\n");
    }
}

}  // namespace

#include "stores/exported_desc.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

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

    TempDir dir_;
    const std::string file_ = dir_ / "plan.doc.description";
    ScriptedPrompter prompter_;
};

// A read-only file can be neither rewritten nor deleted. (That the box decides only
// the writing is the save sequence's test.)
TEST_F(ExportedDescTest, DeletingNothingIsFineAndAReadOnlyFileIsSpared) {
    EXPECT_EQ(save("", true, 1), WriteResult::Ok) << "nothing to delete";
    ASSERT_EQ(save("Old", true), WriteResult::Ok);
    ASSERT_EQ(::chmod(file_.c_str(), 0444), 0);
    EXPECT_EQ(save("New", true), WriteResult::Error);
    EXPECT_EQ(save("", true, 1), WriteResult::Error);
    EXPECT_EQ(
        prompter_.texts(),
        std::vector<std::string>(2, "Error: Problem while updating exported description file."));
    EXPECT_EQ(prompter_.shown[1].icon, Icon::Critical);
    EXPECT_EQ(readFileBytes(file_), "Old\r\n");
}

TEST_F(ExportedDescTest, ReadsEveryLineOrNothing) {
    const std::tuple<const char*, std::string, std::string> kCases[] = {
        {"first line empty", "\r\nSecond\r\n", ""},
        {"no final line end", "One\r\nTwo", "One\r\nTwo\r\n"},
        {"empty lines inside kept", "One\r\n\r\nTwo\r\n", "One\r\n\r\nTwo\r\n"},
        {"Windows-1252 text decoded", "Caf\xE9 \x80\r\n", "Caf\xC3\xA9 \xE2\x82\xAC\r\n"},
    };
    for (const auto& [name, bytes, expected] : kCases) {
        SCOPED_TRACE(name);
        dir_.write("plan.doc.description", bytes);
        EXPECT_EQ(readExpDesc(dir_ / "plan.doc"), expected);
    }
    std::filesystem::remove(file_);
    dir_.mkdir("plan.doc.description");
    EXPECT_EQ(readExpDesc(dir_ / "plan.doc"), "");
}

}  // namespace

#include "stores/failsafe_db.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <vector>

#include "platform/folder_lock.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

namespace fs = std::filesystem;

std::string beginLine(const std::string& key) {
    return "Veskor failsafe DB 1.7 BEGIN " + key + "\r\n";
}
std::string endLine(const std::string& key) {
    return "Veskor failsafe DB 1.7 END " + key + "\r\n";
}
std::string record(const std::string& key, const std::string& lines) {
    return beginLine(key) + lines + endLine(key);
}

// A database as a Windows copy of the program leaves it: Windows-1252 text, a line
// outside any record and a last record cut off before its end line.
const std::string kWindowsDb = record("C:\\DOCS\\CAF\xC9.DOC", "D\xE9j\xE0 vu \x80 5\r\n\r\n") +
                               "stray line outside a record\r\n" +
                               record("C:\\DOCS\\PLAN.DOC", "Outline\r\nNeeds review\r\n") +
                               beginLine("C:\\DOCS\\TORN.DOC") +
                               "First\r\nSecond\r\nCut off here\r\n";

class FailsafeDBTest : public ::testing::Test {
protected:
    SharedState stateFor(const std::string& target, const std::string& desc,
                         int removeFlag = 0) const {
        SharedState state;
        state.data.failsafeDBpath = folder_;
        state.data.failsafeDBfile = db_;
        state.target.targetFileFullPathname = target;
        state.targetFileDesc = desc;
        state.removeTargetFileDescFlag = removeFlag;
        return state;
    }
    WriteResult save(const std::string& target, const std::string& desc, int removeFlag = 0) {
        return updateFailsafeDB(stateFor(target, desc, removeFlag), prompter_);
    }
    std::optional<std::string> read(const std::string& target) const {
        return readFailsafeDB(db_, target);
    }
    // The database's bytes, or "(folder)" when a folder stands in its place.
    std::string db() const { return fs::is_directory(db_) ? "(folder)" : readFileBytes(db_); }
    void writeDb(std::string_view bytes) const { dir_.write("failsafe db/ver1.7.dat", bytes); }

    void expectFailureShown() {
        ASSERT_EQ(prompter_.shown.size(), 1u);
        EXPECT_EQ(prompter_.shown[0].text, "Error: Problem while updating filesafe DB.");
        EXPECT_EQ(prompter_.shown[0].title, "Veskor");
        EXPECT_EQ(prompter_.shown[0].icon, Icon::Critical);
        prompter_.shown.clear();
    }

    TempDir dir_;
    std::string folder_ = dir_.mkdir("failsafe db") + "/";
    std::string db_ = folder_ + "ver1.7.dat";
    ScriptedPrompter prompter_;
};

TEST_F(FailsafeDBTest, EachSavePutsItsRecordFirstUnderTheUpperCaseKey) {
    const std::string plan = record("/DOCS/PLAN.DOC", "Outline\r\nNeeds review\r\n");
    const std::string b = record("/B", "B\r\n\r\nB3\r\n"),
                      two = record("/DOCS/PLAN.DOC", "Two\r\n");
    struct Step {
        std::string target, desc;
        int removeFlag;
        std::string db;
    } steps[] = {
        {"/docs/plan.doc", "Outline\r\nNeeds review", 0, plan},
        {"/b", "B\r\n\r\nB3", 0, b + plan},
        {"/Docs/Plan.DOC", "Two", 0, two + b},
        {"/docs/caf\xC3\xA9", "Three", 0, record("/DOCS/CAF\xC3\x89", "Three\r\n") + two + b},
        {"/docs/caf\xC3\xA9", "", 1, two + b},
        {"/b", "", 1, two},
        {"/docs/plan.doc", "", 1, ""},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.target + " " + step.desc);
        ASSERT_EQ(save(step.target, step.desc, step.removeFlag), WriteResult::Ok);
        EXPECT_EQ(db(), step.db);
        EXPECT_FALSE(fs::exists(db_ + ".tmp"));
        if (!step.removeFlag) {
            EXPECT_EQ(read(step.target), step.desc + "\r\n");
        }
    }
    EXPECT_TRUE(fs::exists(db_));
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(FailsafeDBTest, ReadsTheTargetsRecords) {
    struct Case {
        const char* name;
        std::string bytes;
        std::optional<std::string> expected;
    };
    const std::string b = beginLine("/A"), e = endLine("/A");
    const Case kCases[] = {
        {"no record", record("/B", "B\r\n"), std::nullopt},
        {"record without lines", b + e, ""},
        {"records of others around", record("/B", "B\r\n") + b + "A\r\n" + e + "stray\r\n",
         "A\r\n"},
        {"second record of the target appended", b + "1\r\n" + e + b + "2\r\n" + e, "1\r\n2\r\n"},
        {"begin line as the last line", record("/B", "B\r\n") + b, std::nullopt},
        {"begin line with a trailing blank is another key", beginLine("/A ") + "x\r\n" + e,
         std::nullopt},
        {"another target's end line is text", b + endLine("/B") + e, endLine("/B")},
        {"LF line ends", "Veskor failsafe DB 1.7 BEGIN /A\nx\nVeskor failsafe DB 1.7 END /A\n",
         "x\r\n"},
    };
    for (const auto& [name, bytes, expected] : kCases) {
        SCOPED_TRACE(name);
        writeDb(bytes);
        EXPECT_EQ(read("/a"), expected);
    }
    fs::remove(db_);
    EXPECT_EQ(read("/a"), std::nullopt);
}

TEST_F(FailsafeDBTest, WindowsDatabaseIsReadAndItsOtherRecordsKeepTheirBytes) {
    writeDb(kWindowsDb);
    EXPECT_EQ(read("C:\\docs\\caf\xC3\xA9.doc"), "D\xC3\xA9j\xC3\xA0 vu \xE2\x82\xAC 5\r\n\r\n");
    EXPECT_EQ(read("C:\\docs\\torn.doc"), "First\r\nSecond\r\n");

    ASSERT_EQ(save("/new", "N"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/NEW", "N\r\n") + kWindowsDb);
    ASSERT_EQ(save("C:\\docs\\caf\xC3\xA9.doc", "", 1), WriteResult::Ok);
    EXPECT_EQ(db(), record("/NEW", "N\r\n") + kWindowsDb.substr(kWindowsDb.find("stray")));
}

TEST_F(FailsafeDBTest, ADamagedRecordSwallowsTheRestOnItsNextSave) {
    writeDb(record("/B", "B\r\n") + beginLine("/A") + "x\r\n" + record("/C", "C\r\n"));
    ASSERT_EQ(save("/a", "New"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/A", "New\r\n") + record("/B", "B\r\n"));

    writeDb(record("/B", "B\r\n") + "Veskor failsafe DB 1.7 BEGIN /A\n");  // the last line: kept
    ASSERT_EQ(save("/a", "New"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/A", "New\r\n") + record("/B", "B\r\n") + beginLine("/A"));
}

TEST_F(FailsafeDBTest, FailuresShowTheirMessageAndKeepTheOldDatabase) {
    const std::string old = record("/B", "B\r\n");
    FolderLock otherCopy;
    struct Case {
        const char* name;
        std::function<void()> arrange;
        std::string db;
    } kCases[] = {
        {"folder where the database must be",
         [&] {
             fs::remove(db_);
             fs::create_directories(db_ + "/inside");
         },
         "(folder)"},
        {"folder where the temporary file must be", [&] { fs::create_directories(db_ + ".tmp/x"); },
         old},
        {"read-only database", [&] { ::chmod(db_.c_str(), 0444); }, old},
        {"no database folder", [&] { fs::remove_all(folder_); }, ""},
        {"another copy holds the lock",
         [&] { ASSERT_FALSE(otherCopy.acquire(folder_, std::chrono::milliseconds(0))); }, old},
    };
    for (const auto& [name, arrange, expectedDb] : kCases) {
        SCOPED_TRACE(name);
        fs::remove_all(folder_);
        writeDb(old);
        arrange();

        EXPECT_EQ(updateFailsafeDB(stateFor("/a", "A"), prompter_, std::chrono::milliseconds(0)),
                  WriteResult::Error);
        expectFailureShown();
        EXPECT_EQ(db(), expectedDb);
    }
}

// Copies of the program saving at once, each its own targets, against one database.
TEST_F(FailsafeDBTest, ConcurrentSavesKeepEveryRecord) {
    constexpr int kWriters = 12, kSavesEach = 8;
    std::vector<pid_t> children;
    for (int w = 0; w < kWriters; ++w) {
        pid_t pid = ::fork();
        if (pid == 0) {
            int failed = 0;
            for (int s = 0; s < kSavesEach; ++s)
                failed +=
                    save("/w" + std::to_string(w), "save " + std::to_string(s)) != WriteResult::Ok;
            ::_exit(failed);
        }
        children.push_back(pid);
    }
    for (pid_t pid : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(pid, &status, 0), pid);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    std::size_t expectedSize = 0;
    for (int w = 0; w < kWriters; ++w) {
        const std::string last = "save " + std::to_string(kSavesEach - 1) + "\r\n";
        EXPECT_EQ(read("/W" + std::to_string(w)), last) << "writer " << w;
        expectedSize += record("/W" + std::to_string(w), last).size();
    }
    EXPECT_EQ(db().size(), expectedSize);
}

}  // namespace

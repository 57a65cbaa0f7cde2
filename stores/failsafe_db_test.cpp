#include "stores/failsafe_db.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "platform/folder_lock.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

std::string beginLine(const std::string& key) {
    return "Veskor failsafe DB 1.7 BEGIN " + key;
}
std::string endLine(const std::string& key) {
    return "Veskor failsafe DB 1.7 END " + key;
}

// The bytes of one record as the database holds it.
std::string record(const std::string& key, const std::string& lines) {
    return beginLine(key) + "\r\n" + lines + endLine(key) + "\r\n";
}

std::string sample(const std::string& name) {
    return readFileBytes(std::string(VESKOR_SOURCE_DIR) + "/stores/testdata/" + name);
}

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
    std::string db() const { return readFileBytes(db_); }
    void writeDb(std::string_view bytes) const { dir_.write("failsafe db/ver1.7.dat", bytes); }

    void expectFailureShown() const {
        ASSERT_EQ(prompter_.shown.size(), 1u);
        EXPECT_EQ(prompter_.shown[0].text, "Error: Problem while updating filesafe DB.");
        EXPECT_EQ(prompter_.shown[0].title, "Veskor");
        EXPECT_EQ(prompter_.shown[0].icon, Icon::Critical);
    }

    TempDir dir_;
    std::string folder_ = dir_.mkdir("failsafe db") + "/";
    std::string db_ = folder_ + "ver1.7.dat";
    ScriptedPrompter prompter_;
};

TEST_F(FailsafeDBTest, FirstSaveWritesOneRecord) {
    ASSERT_EQ(save("/docs/plan.doc", "Outline\r\nNeeds review"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/DOCS/PLAN.DOC", "Outline\r\nNeeds review\r\n"));
    EXPECT_EQ(read("/docs/plan.doc"), "Outline\r\nNeeds review\r\n");
    EXPECT_FALSE(std::filesystem::exists(db_ + ".tmp"));
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(FailsafeDBTest, NewestRecordComesFirst) {
    ASSERT_EQ(save("/a", "A1"), WriteResult::Ok);
    ASSERT_EQ(save("/b", "B\r\n\r\nB3"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/B", "B\r\n\r\nB3\r\n") + record("/A", "A1\r\n"));
    ASSERT_EQ(save("/a", "A2"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/A", "A2\r\n") + record("/B", "B\r\n\r\nB3\r\n"));
}

TEST_F(FailsafeDBTest, KeysIgnoreLetterCase) {
    ASSERT_EQ(save("/docs/plan.doc", "One"), WriteResult::Ok);
    ASSERT_EQ(save("/Docs/Plan.DOC", "Two"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/DOCS/PLAN.DOC", "Two\r\n"));
    EXPECT_EQ(read("/DOCS/plan.doc"), "Two\r\n");

    ASSERT_EQ(save("/docs/caf\xC3\xA9", "Three"), WriteResult::Ok);
    EXPECT_EQ(read("/DOCS/CAF\xC3\x89"), "Three\r\n");
    EXPECT_EQ(db(), record("/DOCS/CAF\xC3\x89", "Three\r\n") + record("/DOCS/PLAN.DOC", "Two\r\n"));
}

TEST_F(FailsafeDBTest, DeletingTheLastRecordLeavesAnEmptyFile) {
    ASSERT_EQ(save("/a", "A"), WriteResult::Ok);
    ASSERT_EQ(save("/b", "B"), WriteResult::Ok);
    ASSERT_EQ(save("/a", "", 1), WriteResult::Ok);
    EXPECT_EQ(db(), record("/B", "B\r\n"));
    ASSERT_EQ(save("/b", "", 1), WriteResult::Ok);
    EXPECT_TRUE(std::filesystem::exists(db_));
    EXPECT_EQ(db(), "");
    EXPECT_EQ(read("/b"), std::nullopt);
}

TEST_F(FailsafeDBTest, ReadsTheTargetsRecords) {
    struct Case {
        const char* name;
        std::string bytes;
        std::optional<std::string> expected;
    };
    const std::string b = beginLine("/A") + "\r\n", e = endLine("/A") + "\r\n";
    const Case kCases[] = {
        {"no record", record("/B", "B\r\n"), std::nullopt},
        {"record without lines", b + e, ""},
        {"empty lines kept", b + "\r\nx\r\n\r\n" + e, "\r\nx\r\n\r\n"},
        {"records of others around", record("/B", "B\r\n") + b + "A\r\n" + e + "stray\r\n",
         "A\r\n"},
        {"second record of the target appended", b + "1\r\n" + e + b + "2\r\n" + e, "1\r\n2\r\n"},
        {"damaged record runs to the end except the last line", b + "x\r\ny\r\nlast", "x\r\ny\r\n"},
        {"begin line as the last line", record("/B", "B\r\n") + b, std::nullopt},
        {"begin line with a trailing blank is another key", beginLine("/A ") + "\r\nx\r\n" + e,
         std::nullopt},
        {"another target's end line is text", b + endLine("/B") + "\r\n" + e,
         endLine("/B") + "\r\n"},
        {"LF line ends", beginLine("/A") + "\nx\n" + endLine("/A") + "\n", "x\r\n"},
        {"Windows-1252 text decoded", b + "d\xE9j\xE0\r\n" + e, "d\xC3\xA9j\xC3\xA0\r\n"},
    };
    for (const auto& [name, bytes, expected] : kCases) {
        SCOPED_TRACE(name);
        writeDb(bytes);
        EXPECT_EQ(read("/a"), expected);
    }
    std::filesystem::remove(db_);
    EXPECT_EQ(read("/a"), std::nullopt);
}

TEST_F(FailsafeDBTest, ReadsADatabaseWrittenOnWindows) {
    writeDb(sample("failsafe_windows_damaged.dat"));
    EXPECT_EQ(read("C:\\docs\\caf\xC3\xA9.doc"), "D\xC3\xA9j\xC3\xA0 vu \xE2\x82\xAC 5\r\n\r\n");
    EXPECT_EQ(read("C:\\docs\\plan.doc"), "Outline\r\nNeeds review\r\n");
    EXPECT_EQ(read("C:\\docs\\torn.doc"), "First\r\nSecond\r\n");
}

TEST_F(FailsafeDBTest, OtherRecordsKeepTheirBytes) {
    const std::string old = sample("failsafe_windows_damaged.dat");
    writeDb(old);
    ASSERT_EQ(save("/new", "N"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/NEW", "N\r\n") + old);

    // The database of a Windows copy matches its keys after decoding.
    ASSERT_EQ(save("C:\\docs\\caf\xC3\xA9.doc", "", 1), WriteResult::Ok);
    EXPECT_EQ(db().find("CAF"), std::string::npos);
    EXPECT_NE(db().find("PLAN.DOC"), std::string::npos);
}

TEST_F(FailsafeDBTest, ADamagedRecordSwallowsTheRestOnItsNextSave) {
    writeDb(record("/B", "B\r\n") + beginLine("/A") + "\r\nx\r\n" + record("/C", "C\r\n"));
    ASSERT_EQ(save("/a", "New"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/A", "New\r\n") + record("/B", "B\r\n"));

    writeDb(record("/B", "B\r\n") + beginLine("/A") + "\n");  // begin as the last line: kept
    ASSERT_EQ(save("/a", "New"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/A", "New\r\n") + record("/B", "B\r\n") + beginLine("/A") + "\r\n");
}

TEST_F(FailsafeDBTest, FailuresShowTheirMessageAndKeepTheOldDatabase) {
    struct Case {
        const char* name;
        void (*arrange)(const std::string& folder);
        bool dbIsFolder;
    };
    const Case kCases[] = {
        {"folder where the database must be",
         [](const std::string& f) {
             std::filesystem::remove(f + "ver1.7.dat");
             std::filesystem::create_directories(f + "ver1.7.dat/inside");
         },
         true},
        {"folder where the temporary file must be",
         [](const std::string& f) { std::filesystem::create_directories(f + "ver1.7.dat.tmp/x"); },
         false},
        {"read-only database",
         [](const std::string& f) { ::chmod((f + "ver1.7.dat").c_str(), 0444); }, false},
    };
    const std::string old = record("/B", "B\r\n");
    for (const auto& [name, arrange, dbIsFolder] : kCases) {
        SCOPED_TRACE(name);
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
        writeDb(old);
        arrange(folder_);
        prompter_.shown.clear();

        EXPECT_EQ(save("/a", "A"), WriteResult::Error);
        expectFailureShown();
        if (dbIsFolder)
            EXPECT_TRUE(std::filesystem::is_directory(db_));
        else
            EXPECT_EQ(db(), old);
    }
}

TEST_F(FailsafeDBTest, FailsWhenTheFolderIsMissingOrLockedByAnother) {
    writeDb(record("/B", "B\r\n"));
    FolderLock other;
    ASSERT_FALSE(other.acquire(folder_, std::chrono::milliseconds(0)));
    EXPECT_EQ(updateFailsafeDB(stateFor("/a", "A"), prompter_, std::chrono::milliseconds(0)),
              WriteResult::Error);
    expectFailureShown();
    EXPECT_EQ(db(), record("/B", "B\r\n"));
    EXPECT_FALSE(std::filesystem::exists(db_ + ".tmp"));
    other.release();

    prompter_.shown.clear();
    std::filesystem::remove_all(folder_);
    EXPECT_EQ(save("/a", "A"), WriteResult::Error);
    expectFailureShown();
}

// Copies of the program saving at once, each its own targets, against one database.
TEST_F(FailsafeDBTest, ConcurrentSavesKeepEveryRecord) {
    constexpr int kWriters = 12, kSavesEach = 8;
    std::vector<pid_t> children;
    for (int w = 0; w < kWriters; ++w) {
        pid_t pid = ::fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            ScriptedPrompter quiet;
            bool ok = true;
            for (int s = 0; s < kSavesEach; ++s) {
                auto state = stateFor("/w" + std::to_string(w), "save " + std::to_string(s));
                ok = updateFailsafeDB(state, quiet) == WriteResult::Ok && ok;
            }
            ::_exit(ok ? 0 : 1);
        }
        children.push_back(pid);
    }
    for (pid_t pid : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(pid, &status, 0), pid);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    for (int w = 0; w < kWriters; ++w) {
        SCOPED_TRACE(w);
        EXPECT_EQ(read("/W" + std::to_string(w)),
                  "save " + std::to_string(kSavesEach - 1) + "\r\n");
    }
    std::size_t expectedSize = 0;
    for (int w = 0; w < kWriters; ++w)
        expectedSize +=
            record("/W" + std::to_string(w), "save " + std::to_string(kSavesEach - 1) + "\r\n")
                .size();
    EXPECT_EQ(db().size(), expectedSize);
}

}  // namespace

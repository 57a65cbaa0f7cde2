#include "stores/failsafe_db.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <vector>

#include "platform/folder_lock.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

using namespace std::chrono_literals;

std::string beginLine(const std::string& key) {
    return "Veskor failsafe DB 1.7 BEGIN " + key + "\r\n";
}
std::string record(const std::string& key, const std::string& lines) {
    return beginLine(key) + lines + "Veskor failsafe DB 1.7 END " + key + "\r\n";
}

// Saves give up at once when another copy of the program holds the lock.
class FailsafeDBTest : public ::testing::Test {
protected:
    WriteResult save(const std::string& target, const std::string& desc, int removeFlag = 0) {
        SharedState state;
        state.data.failsafeDBpath = folder_;
        state.data.failsafeDBfile = db_;
        state.target.targetFileFullPathname = target;
        state.targetFileDesc = desc;
        state.removeTargetFileDescFlag = removeFlag;
        return updateFailsafeDB(state, prompter_, 0ms);
    }
    std::string db() const { return readFileBytes(db_); }
    void writeDb(std::string_view bytes) const { dir_.write("failsafe db/ver1.7.dat", bytes); }

    TempDir dir_;
    std::string folder_ = dir_.mkdir("failsafe db") + "/";
    std::string db_ = folder_ + "ver1.7.dat";
    ScriptedPrompter prompter_;
};

TEST_F(FailsafeDBTest, EachSavePutsItsRecordFirstUnderTheUpperCaseKey) {
    const std::string b = record("/B", "B\r\n\r\nB3\r\n");
    ASSERT_EQ(save("/docs/plan.doc", "Outline\r\nNeeds review"), WriteResult::Ok);
    ASSERT_EQ(save("/b", "B\r\n\r\nB3"), WriteResult::Ok);
    EXPECT_EQ(db(), b + record("/DOCS/PLAN.DOC", "Outline\r\nNeeds review\r\n"));
    ASSERT_EQ(save("/Docs/Plan.DOC", "Two"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/DOCS/PLAN.DOC", "Two\r\n") + b);
    EXPECT_EQ(readFailsafeDB(db_, "/docs/PLAN.doc"), "Two\r\n");

    ASSERT_EQ(save("/b", "", 1), WriteResult::Ok);
    ASSERT_EQ(save("/docs/plan.doc", "", 1), WriteResult::Ok);
    EXPECT_EQ(db(), "");
    EXPECT_TRUE(std::filesystem::exists(db_)) << "an empty database stays";
    EXPECT_TRUE(prompter_.shown.empty());
}

// As a Windows copy of the program leaves it: Windows-1252 text, a line outside any
// record, a target with two records and one without lines, and a last record cut off
// before its end line.
TEST_F(FailsafeDBTest, EveryRecordOfTheTargetIsReadAndTheOthersKeepTheirBytes) {
    const std::string windowsDb =
        record("C:\\DOCS\\CAF\xC9.DOC", "D\xE9j\xE0 vu \x80 5\r\n\r\n") +
        "stray line outside a record\r\n" + record("C:\\DOCS\\PLAN.DOC", "Outline\r\n") +
        record("C:\\DOCS\\EMPTY.DOC", "") + record("C:\\DOCS\\PLAN.DOC", "More\r\n") +
        beginLine("C:\\DOCS\\TORN.DOC") + "First\r\nCut off here\r\n";
    writeDb(windowsDb);
    EXPECT_EQ(readFailsafeDB(db_, "C:\\docs\\caf\xC3\xA9.doc"),
              "D\xC3\xA9j\xC3\xA0 vu \xE2\x82\xAC 5\r\n\r\n");
    EXPECT_EQ(readFailsafeDB(db_, "C:\\docs\\plan.doc"), "Outline\r\nMore\r\n");
    EXPECT_EQ(readFailsafeDB(db_, "C:\\docs\\empty.doc"), "");
    EXPECT_EQ(readFailsafeDB(db_, "C:\\docs\\none.doc"), std::nullopt);
    EXPECT_EQ(readFailsafeDB(db_, "C:\\docs\\torn.doc"), "First\r\n");

    ASSERT_EQ(save("/new", "N"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/NEW", "N\r\n") + windowsDb);
    ASSERT_EQ(save("C:\\docs\\caf\xC3\xA9.doc", "", 1), WriteResult::Ok);
    EXPECT_EQ(db(), record("/NEW", "N\r\n") + windowsDb.substr(windowsDb.find("stray")));
}

TEST_F(FailsafeDBTest, ADamagedRecordSwallowsTheRestOnItsNextSave) {
    writeDb(record("/B", "B\r\n") + beginLine("/A") + "x\r\n" + record("/C", "C\r\n"));
    ASSERT_EQ(save("/a", "New"), WriteResult::Ok);
    EXPECT_EQ(db(), record("/A", "New\r\n") + record("/B", "B\r\n"));
}

// Other ways the rewrite fails are the save sequence's and the atomic file's.
TEST_F(FailsafeDBTest, FailuresShowTheirMessageAndKeepTheOldDatabase) {
    const std::string old = record("/B", "B\r\n");
    for (const bool readOnly : {true, false}) {
        SCOPED_TRACE(readOnly ? "read-only database" : "another copy holds the lock");
        writeDb(old);
        ::chmod(db_.c_str(), readOnly ? 0444 : 0644);
        FolderLock otherCopy;
        ASSERT_FALSE(!readOnly && otherCopy.acquire(folder_, 0ms));
        prompter_.shown.clear();

        EXPECT_EQ(save("/a", "A"), WriteResult::Error);
        ASSERT_EQ(prompter_.texts(),
                  std::vector<std::string>{"Error: Problem while updating filesafe DB."});
        EXPECT_EQ(prompter_.shown[0].icon, Icon::Critical);
        EXPECT_EQ(db(), old);
    }
}

// The batch reads answer for every key what the reader answers: records nested in a
// record of their own key, a record without its end line, a begin line that ends the
// file, a marker line in Windows-1252 and keys outside the scanned folder.
TEST_F(FailsafeDBTest, OffsetReadsAgreeWithTheReaderForEveryKey) {
    writeDb(record("/D/A", "a1\r\n" + beginLine("/D/A") + "a2\r\n") + "stray line\r\n" +
            record("/D/B", "") + record("/D/A", "a3\r\n") + record("/E/X", "x\r\n") +
            "Veskor failsafe DB 1.7 BEGIN /D/CAF\xC9\r\ncafe\r\n" + record("/D/B", "b\r\n") +
            beginLine("/D/OPEN") + "o1\r\n" + record("/D/LATE", "late\r\n") + beginLine("/D/LAST"));
    const FailsafeOffsets offsets = scanFailsafeDB(db_, "/d/");
    for (const std::string key :
         {"/d/a", "/d/b", "/d/caf\xC3\xA9", "/d/open", "/d/late", "/d/last", "/d/none"}) {
        SCOPED_TRACE(key);
        EXPECT_EQ(readFailsafeDBAt(db_, offsets, key), readFailsafeDB(db_, key));
    }
    EXPECT_EQ(readFailsafeDBAt(db_, offsets, "/d/a"),
              "a1\r\n" + beginLine("/D/A") + "a2\r\na3\r\n");
    EXPECT_EQ(readFailsafeDBAt(db_, offsets, "/e/x"), std::nullopt) << "outside the folder";
}

// A move re-keys the entry and everything under it in place, drops what was already
// keyed at the destination and leaves look-alike keys ("/D/AB") alone; a copy keeps
// each original and puts its copy after it.
TEST_F(FailsafeDBTest, MovedOrCopiedRecordsTakeTheNewKeys) {
    const std::string others = record("/D/AB", "ab\r\n") + record("/E", "e\r\n");
    writeDb(record("/D/A", "folder\r\n") + record("/D/B", "stale\r\n") + others +
            record("/D/A/X", "x\r\n") + record("/D/B/Y", "stale\r\n"));
    const std::string old = db();
    ASSERT_EQ(moveFailsafeRecords(db_, {.from = "/d/b", .to = "/d/b"}, prompter_), WriteResult::Ok);
    EXPECT_EQ(db(), old) << "the same key";
    ASSERT_EQ(moveFailsafeRecords(db_, {.from = "/d/a", .to = "/d/b", .keepOld = true}, prompter_),
              WriteResult::Ok);
    EXPECT_EQ(db(), record("/D/A", "folder\r\n") + record("/D/B", "folder\r\n") + others +
                        record("/D/A/X", "x\r\n") + record("/D/B/X", "x\r\n"));
    writeDb(old);
    ASSERT_EQ(moveFailsafeRecords(db_, {.from = "/d/a", .to = "/d/b"}, prompter_), WriteResult::Ok);
    EXPECT_EQ(db(), record("/D/B", "folder\r\n") + others + record("/D/B/X", "x\r\n"));
    EXPECT_TRUE(prompter_.shown.empty());
}

}  // namespace

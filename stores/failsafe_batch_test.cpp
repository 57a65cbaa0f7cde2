// One batched rewrite of the failsafe database or a folder index gives the bytes that
// the single saves give one after another, however odd the old file.
#include "stores/failsafe_batch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <vector>

#include "stores/failsafe_db.h"
#include "stores/folder_index.h"
#include "stores/index_batch.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

const std::string kBegin = "Veskor failsafe DB 1.7 BEGIN ", kEnd = "Veskor failsafe DB 1.7 END ";

struct Change {
    std::string name;
    std::optional<std::string> text;  // nullopt: a deletion
};

class BatchRewriteTest : public ::testing::Test {
protected:
    // The old file, then the single saves in turn; the old file again, then the batch.
    std::pair<std::string, std::string> database(const std::string& old,
                                                 const std::vector<Change>& changes) {
        const std::string file = dir_ / "ver1.7.dat";
        writeFileBytes(file, old);
        std::vector<FailsafeChange> batch;
        for (const Change& change : changes) {
            SharedState state;
            state.data.failsafeDBfile = file;
            state.target.targetFileFullPathname = "/D/" + change.name;
            state.targetFileDesc = change.text.value_or("");
            state.removeTargetFileDescFlag = change.text ? 0 : 1;
            EXPECT_EQ(updateFailsafeDB(state, prompter_), WriteResult::Ok);
            batch.push_back({state.target.targetFileFullPathname, change.text});
        }
        const std::string oneByOne = readFileBytes(file);
        writeFileBytes(file, old);
        EXPECT_EQ(updateFailsafeDBBatch(file, batch, prompter_), WriteResult::Ok);
        return {oneByOne, readFileBytes(file)};
    }

    std::pair<std::string, std::string> index(const std::string& old,
                                              const std::vector<Change>& changes) {
        const std::string file = dir_ / "00_index.txt";
        writeFileBytes(file, old);
        std::vector<IndexChange> batch;
        for (const Change& change : changes) {
            SharedState state;
            state.target = {dir_ / change.name, change.name, dir_.path(), file};
            state.targetFileDesc = change.text.value_or("");
            state.removeTargetFileDescFlag = change.text ? 0 : 1;
            EXPECT_EQ(update00IndexFile(state, prompter_), WriteResult::Ok);
            batch.push_back({change.name, change.text});
        }
        const std::string oneByOne = contents(file);
        writeFileBytes(file, old);
        EXPECT_EQ(update00IndexFileBatch(dir_.path(), batch, prompter_), WriteResult::Ok);
        return {oneByOne, contents(file)};
    }

    static std::string contents(const std::string& file) {
        return std::filesystem::exists(file) ? readFileBytes(file) : "(no file)";
    }

    TempDir dir_;
    ScriptedPrompter prompter_;
};

TEST_F(BatchRewriteTest, TheDatabaseEndsAsAfterTheSavesInTurn) {
    const std::string a = kBegin + "/D/A\r\nold a\r\n" + kEnd + "/D/A\r\n";
    const std::string b = kBegin + "/D/B\r\nold b\r\n" + kEnd + "/D/B\r\n";
    // name, old database, changes in order
    const std::tuple<const char*, std::string, std::vector<Change>> rows[] = {
        {"new, replaced and deleted records",
         a + b + "stray line\r\n",
         {{"a", "new a\r\nsecond"}, {"c", "c"}, {"b", std::nullopt}}},
        {"one target twice, deleted then set",
         a + b,
         {{"a", "first"}, {"b", std::nullopt}, {"a", "second"}, {"b", "back"}}},
        {"a record without its end swallows the rest",
         b + kBegin + "/D/A\r\nopen\r\n" + b,
         {{"a", "x"}, {"b", "y"}}},
        {"a begin line as the last line stays", b + kBegin + "/D/A", {{"b", "y"}, {"a", "x"}}},
        {"a begin line of another key inside a record",
         kBegin + "/D/A\r\n" + kBegin + "/D/B\r\n" + kEnd + "/D/A\r\n" + b,
         {{"b", "y"}, {"a", "x"}}},
        {"a record ended by the end of another's",
         kBegin + "/D/B\r\n" + a + "tail\r\n",
         {{"a", "x"}, {"b", std::nullopt}}},
        {"a key in Windows-1252",
         kBegin + "/D/\xC9\r\nold\r\n" + kEnd + "/D/\xC9\r\n",
         {{"\xC3\x89", "new"}}},
        {"no database yet, only deletions", "", {{"a", std::nullopt}}},
    };
    for (const auto& [name, old, changes] : rows) {
        SCOPED_TRACE(name);
        const auto [oneByOne, batched] = database(old, changes);
        EXPECT_EQ(batched, oneByOne);
    }
}

TEST_F(BatchRewriteTest, TheIndexEndsAsAfterTheSavesInTurn) {
    for (const char* name : {"a.txt", "b.txt", "kept.txt", "long name.txt"})
        dir_.write(name, "x");
    const std::string kept = "kept.txt     kept\r\n             more\r\n";
    // name, old index, changes in order
    const std::tuple<const char*, std::string, std::vector<Change>> rows[] = {
        {"orphan lines, empty lines and gone items",
         "             orphan\r\n\r\ngone.txt     x\r\n             y\r\n" + kept + "lastgone\r\n",
         {{"b.txt", std::nullopt}, {"a.txt", "A"}}},
        {"orphan lines after a first deletion",
         "             orphan\r\n" + kept,
         {{"a.txt", std::nullopt}, {"b.txt", "B"}, {"a.txt", "A"}}},
        {"one name twice in other letter cases",
         "A.TXT        old\r\n" + kept,
         {{"a.txt", "first\r\nsecond"}, {"long name.txt", "L"}, {"a.txt", "again"}}},
        {"every entry deleted",
         "a.txt        old\r\nb.txt        old\r\n",
         {{"a.txt", std::nullopt}, {"b.txt", std::nullopt}}},
        {"deleted, then set again",
         "\"long name.txt\"\r\n             old\r\n" + kept,
         {{"long name.txt", std::nullopt}, {"kept.txt", "K"}, {"long name.txt", "new"}}},
    };
    for (const auto& [name, old, changes] : rows) {
        SCOPED_TRACE(name);
        const auto [oneByOne, batched] = index(old, changes);
        EXPECT_EQ(batched, oneByOne);
    }
}

}  // namespace

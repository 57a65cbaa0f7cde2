#include "stores/folder_index.h"

#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <tuple>
#include <vector>

#include "platform/code_page.h"
#include "platform/folder_lock.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

extern char** environ;

namespace {

using namespace std::chrono_literals;

// The 13 columns before the text, then `text`.
std::string blanks(const std::string& text) {
    return "             " + text;
}

// One folder with its items, its index and a save or read of one of its items.
class IndexFolder {
public:
    explicit IndexFolder(const std::vector<std::string>& items = {}) {
        for (const auto& item : items)
            dir.write(item, "");
    }

    TargetPaths targetFor(const std::string& name) const {
        return {dir / name, name, dir.path(), dir / "00_index.txt"};
    }

    WriteResult save(const std::string& name, const std::string& desc,
                     std::chrono::milliseconds lockTimeout = kFolderLockTimeout) {
        SharedState state;
        state.target = targetFor(name);
        state.targetFileDesc = desc;
        state.removeTargetFileDescFlag = desc.empty() ? 1 : 0;
        return update00IndexFile(state, prompter, lockTimeout);
    }

    std::string read(const std::string& name) const { return read00IndexFile(targetFor(name)); }
    void writeIndex(std::string_view bytes) const { dir.write("00_index.txt", bytes); }
    std::string index() const { return readFileBytes(dir / "00_index.txt"); }
    // The temporary files of ours that a save left, by their names' pattern.
    std::vector<std::string> temporaryFiles() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(dir.path())) {
            const std::string name = entry.path().filename();
            if (name.starts_with("00_index.txt.") && name.ends_with(".tmp") && name.size() == 23)
                names.push_back(name);
        }
        return names;
    }

    TempDir dir;
    ScriptedPrompter prompter;
};

TEST(FolderIndexTest, WritesTheShortOrTheQuotedFormReadsItBackAndDeletesIt) {
    const std::tuple<const char*, std::string, std::string, std::string> kCases[] = {
        {"short form", "notes.txt", "One\r\nTwo", "notes.txt    One\r\n" + blanks("Two\r\n")},
        {"quoted for a blank", "a b.txt", "One\r\nTwo",
         "\"a b.txt\"\r\n" + blanks("One\r\n") + blanks("Two\r\n")},
        {"12 characters: one blank", "abcdefgh.txt", "Text", "abcdefgh.txt Text\r\n"},
        {"13 characters", "abcdefghi.txt", "Text", "\"abcdefghi.txt\"\r\n" + blanks("Text\r\n")},
        {"characters, not bytes", "caf\xC3\xA9.txt", "Text", "caf\xC3\xA9.txt     Text\r\n"},
        {"a name that is not UTF-8 keeps its bytes", "caf\xE9.txt", "Text",
         "caf\xE9.txt     Text\r\n"},
    };
    for (const auto& [name, item, desc, index] : kCases) {
        SCOPED_TRACE(name);
        IndexFolder folder({item});
        ASSERT_EQ(folder.save(item, desc), WriteResult::Ok);
        EXPECT_EQ(folder.index(), index);
        EXPECT_EQ(folder.read(item), desc + "\r\n");
        ASSERT_EQ(folder.save(item, ""), WriteResult::Ok);
        EXPECT_FALSE(std::filesystem::exists(folder.dir / "00_index.txt"));
        EXPECT_EQ(folder.save(item, ""), WriteResult::Ok) << "no index at all";
    }
}

// Each old index is first read for the target: all its entries, in file order, any case.
TEST(FolderIndexTest, NewEntryComesFirstWithoutOldEntriesMissingItemsOrEmptyLines) {
    const std::string a = "a.txt        A\r\n",
                      gone = "gone.txt     Gone\r\n" + blanks("Gone too\r\n");
    const std::string letters = "\"Old Letters\"\r\n" + blanks("L\r\n");
    // old index, the target's description read from it, what follows the new entry
    const std::tuple<const char*, std::string, std::string, std::string> kCases[] = {
        {"others keep their order",
         a + "notes.txt    d\xE9j\xE0\r\n" + blanks("Older\r\n") + "b.txt        B\r\n" +
             blanks("B2\r\n"),
         "d\xC3\xA9j\xC3\xA0\r\nOlder\r\n", a + "b.txt        B\r\n" + blanks("B2\r\n")},
        {"missing item with its continuation lines", gone + a, "", a},
        {"missing item on the last line stays", a + "gone.txt     Gone", "",
         a + "gone.txt     Gone\r\n"},
        {"target's entries in both forms and any case",
         "\"NOTES.txt\"\r\n" + blanks("Q\r\n") + "Notes.TXT    S\r\n" + blanks("S2\r\n") + a,
         "Q\r\nS\r\nS2\r\n", a},
        {"empty lines", "\r\n\n" + a + "\r\n", "", a},
        {"quoted entry of an existing folder", letters + a, "", letters + a},
        {"Windows-1252 line of an existing item passes as its bytes",
         "caf\xE9.txt     d\xE9j\xE0\r\n" + a, "", "caf\xE9.txt     d\xE9j\xE0\r\n" + a},
        {"Latin-1 name of an existing item", "r\xE9sum\xE9.txt   x\r\n" + a, "",
         "r\xE9sum\xE9.txt   x\r\n" + a},
    };
    for (const auto& [name, oldIndex, read, kept] : kCases) {
        SCOPED_TRACE(name);
        IndexFolder folder({"notes.txt", "a.txt", "b.txt", "Old Letters/x", "caf\xC3\xA9.txt",
                            "r\xE9sum\xE9.txt"});
        folder.writeIndex(oldIndex);
        EXPECT_EQ(folder.read("notes.txt"), read);
        ASSERT_EQ(folder.save("notes.txt", "New"), WriteResult::Ok);
        EXPECT_EQ(folder.index(), "notes.txt    New\r\n" + kept);
    }
}

TEST(FolderIndexTest, AdoptsTheOlderNameButNeverOverwritesAnIndex) {
    for (const bool besideAnIndex : {false, true}) {
        SCOPED_TRACE(besideAnIndex ? "beside 00_index.txt" : "alone");
        IndexFolder folder({"notes.txt", "a.txt"});
        folder.dir.write("Index_00.txt", "a.txt        Older\r\n");
        if (besideAnIndex)
            folder.writeIndex("a.txt        A\r\n");
        ASSERT_EQ(folder.save("notes.txt", "N"), WriteResult::Ok);
        EXPECT_EQ(folder.index(), "notes.txt    N\r\na.txt        " +
                                      std::string(besideAnIndex ? "A\r\n" : "Older\r\n"));
        EXPECT_EQ(readFileBytes(folder.dir / "Index_00.txt"),
                  besideAnIndex ? "a.txt        Older\r\n" : "");
    }
}

// Other ways the rewrite fails are the save sequence's and the atomic file's. Neither
// failure leaves anything in the folder.
TEST(FolderIndexTest, FailuresShowTheirMessageAndKeepTheOldIndex) {
    const std::string oldIndex = "notes.txt    N\r\na.txt        A\r\n";
    for (const bool readOnly : {true, false}) {
        SCOPED_TRACE(readOnly ? "read-only index" : "another save holds the folder's lock");
        IndexFolder folder({"notes.txt", "a.txt"});
        folder.writeIndex(oldIndex);
        ASSERT_EQ(::chmod((folder.dir / "00_index.txt").c_str(), readOnly ? 0444 : 0644), 0);
        FolderLock otherSave;
        ASSERT_FALSE(!readOnly && otherSave.acquire(folder.dir.path(), 0ms));
        EXPECT_EQ(folder.save("notes.txt", "New", 50ms), WriteResult::Error);
        ASSERT_EQ(
            folder.prompter.texts(),
            std::vector<std::string>{"Error: Problem while updating '00_index.txt' file.\r\n"
                                     "(You can disable '00_index.txt' creation in Options.)"});
        EXPECT_EQ(folder.prompter.shown[0].icon, Icon::Critical);
        EXPECT_EQ(folder.index(), oldIndex);
        EXPECT_EQ(folder.temporaryFiles(), std::vector<std::string>{});
    }
}

// Real veskor-cli processes, all started before the first has finished, each saving
// another item of one folder. Each entry is one line, so a lost entry shows in the
// count; a file at a temporary name of the older kind stays as it was, and none of ours
// is left. The index already holds
// many entries, so that each rewrite takes long enough for saves to overlap.
TEST(FolderIndexTest, ConcurrentSavesOfOneFolderKeepEveryEntry) {
    constexpr int kSaves = 50, kKept = 2000;
    TempHome home;
    IndexFolder folder;
    std::string kept;
    for (int i = 0; i < kKept; ++i) {
        const std::string number = std::to_string(1000 + i), name = "k" + number + ".txt";
        folder.dir.write(name, "");
        kept += name + "    Kept\r\n";
    }
    folder.writeIndex(kept);
    folder.dir.write("00_index.txt.tmp", "someone else's");
    std::vector<pid_t> children;
    for (int i = 0; i < kSaves; ++i) {
        std::string cli = std::string(VESKOR_BINARY_DIR) + "/veskor-cli", verb = "set",
                    item = folder.dir.write("item" + std::to_string(i), ""), text = "text";
        char* argv[] = {cli.data(), verb.data(), item.data(), text.data(), nullptr};
        pid_t pid = 0;
        ASSERT_EQ(posix_spawn(&pid, argv[0], nullptr, nullptr, argv, environ), 0);
        children.push_back(pid);
    }
    for (pid_t pid : children) {
        int status = 0;
        ASSERT_EQ(waitpid(pid, &status, 0), pid);
        EXPECT_EQ(status, 0);
    }
    const std::string index = folder.index();
    EXPECT_EQ(std::count(index.begin(), index.end(), '\n'), kKept + kSaves);
    EXPECT_EQ(readFileBytes(folder.dir / "00_index.txt.tmp"), "someone else's");
    EXPECT_EQ(folder.temporaryFiles(), std::vector<std::string>{});
}

// The one-pass read of a whole index gives each name what the reader gives it, also
// where entries of one name follow each other in both forms, where a quoted head
// ends the file and where names differ only in letter case.
TEST(FolderIndexTest, ReadingAllEntriesAtOnceAgreesWithTheReaderForEveryName) {
    const std::vector<std::string> names = {"a.txt", "A.TXT",         "b.txt",     "My File.txt",
                                            "\"q\"", "c\xC3\xA9.txt", "c\xE9.txt", "gone.txt"};
    const std::vector<std::string> indexes = {
        "a.txt        one\r\n" + blanks("two") + "\r\nb.txt        bee\r\n",
        "\"a.txt\"\r\n" + blanks("quoted") + "\r\na.txt        short\r\na.txt        again\r\n",
        "a.txt        short\r\n\"a.txt\"\r\n" + blanks("skipped") + "\r\n\"a.txt\"\r\n" +
            blanks("read") + "\r\n",
        "\"My File.txt\"\r\n" + blanks("x") + "\r\n\"\"q\"\"\r\n\"q\"          short\r\n",
        blanks("orphan") + "\r\nc\xE9.txt      1252\r\n\r\nb.txt\r\n\"b.txt\"",
        "\"a.txt\"\r\n\"a.txt\"\r\na.txt\r\n" + blanks("x") + "\r\nb.txt x\r\n",
        "\"a.txt\"\r\n" + blanks("x") + "\r\n\"a.txt\"\r\n" + blanks("not read") + "\r\n",
    };
    TempDir dir;
    for (const std::string& index : indexes) {
        SCOPED_TRACE(index);
        writeFileBytes(dir / "00_index.txt", index);
        const IndexEntries entries = read00IndexEntries(dir / "00_index.txt");
        for (const std::string& name : names) {
            SCOPED_TRACE(name);
            auto entry = entries.find(upperCase(name));
            EXPECT_EQ(entry == entries.end() ? "" : entry->second,
                      read00IndexFile({dir / name, name, dir.path(), dir / "00_index.txt"}));
        }
    }
}

}  // namespace

#include "stores/folder_index.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

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

    WriteResult save(const std::string& name, const std::string& desc, int removeFlag = 0) {
        SharedState state;
        state.target = targetFor(name);
        state.targetFileDesc = desc;
        state.removeTargetFileDescFlag = removeFlag;
        return update00IndexFile(state, prompter);
    }

    std::string read(const std::string& name) const { return read00IndexFile(targetFor(name)); }
    void writeIndex(std::string_view bytes) const { dir.write("00_index.txt", bytes); }
    std::string index() const { return readFileBytes(dir / "00_index.txt"); }
    bool exists(const std::string& name) const { return std::filesystem::exists(dir / name); }

    TempDir dir;
    ScriptedPrompter prompter;
};

TEST(FolderIndexTest, WritesTheShortOrTheQuotedFormAndReadsItBack) {
    struct Case {
        const char* name;
        std::string item, desc, index;
    } kCases[] = {
        {"short form", "notes.txt", "First line\r\nSecond",
         "notes.txt    First line\r\n" + blanks("Second\r\n")},
        {"quoted for a blank in the name", "My File.txt", "First line\r\nSecond",
         "\"My File.txt\"\r\n" + blanks("First line\r\n") + blanks("Second\r\n")},
        {"12 characters: short form and one blank", "abcdefgh.txt", "Text",
         "abcdefgh.txt Text\r\n"},
        {"13 characters: quoted", "abcdefghi.txt", "Text",
         "\"abcdefghi.txt\"\r\n" + blanks("Text\r\n")},
        {"columns count characters, not bytes", "caf\xC3\xA9.txt", "Text",
         "caf\xC3\xA9.txt     Text\r\n"},
    };
    for (const auto& [name, item, desc, index] : kCases) {
        SCOPED_TRACE(name);
        IndexFolder folder({item});
        ASSERT_EQ(folder.save(item, desc), WriteResult::Ok);
        EXPECT_EQ(folder.index(), index);
        EXPECT_EQ(folder.read(item), desc + "\r\n");
    }
}

TEST(FolderIndexTest, NewEntryComesFirstWithoutOldEntriesMissingItemsOrEmptyLines) {
    const std::string a = "a.txt        A\r\n",
                      gone = "gone.txt     Gone\r\n" + blanks("Gone too\r\n");
    const std::string letters = "\"Old Letters\"\r\n" + blanks("L\r\n");
    struct Case {
        const char* name;
        std::string oldIndex, kept;  // kept: what follows the new entry
    } kCases[] = {
        {"others keep their order",
         a + "notes.txt    Old\r\n" + blanks("Older\r\n") + "b.txt        B\r\n" + blanks("B2\r\n"),
         a + "b.txt        B\r\n" + blanks("B2\r\n")},
        {"missing item with its continuation lines", gone + a, a},
        {"missing item on the last line stays", a + "gone.txt     Gone",
         a + "gone.txt     Gone\r\n"},
        {"target's entries in both forms and any case",
         "\"NOTES.txt\"\r\n" + blanks("Q\r\n") + a + "Notes.TXT    S\r\n" + blanks("S2"), a},
        {"empty lines", "\r\n\n" + a + "\r\n", a},
        {"quoted entry of an existing folder", letters + a, letters + a},
        {"Windows-1252 line of an existing item passes as its bytes",
         "caf\xE9.txt     d\xE9j\xE0\r\n" + a, "caf\xE9.txt     d\xE9j\xE0\r\n" + a},
    };
    for (const auto& [name, oldIndex, kept] : kCases) {
        SCOPED_TRACE(name);
        IndexFolder folder({"notes.txt", "a.txt", "b.txt", "Old Letters/x", "caf\xC3\xA9.txt"});
        folder.writeIndex(oldIndex);
        ASSERT_EQ(folder.save("notes.txt", "New"), WriteResult::Ok);
        EXPECT_EQ(folder.index(), "notes.txt    New\r\n" + kept);
    }
}

TEST(FolderIndexTest, DeletingTheLastEntryDeletesTheIndex) {
    IndexFolder folder({"notes.txt", "a.txt"});
    folder.writeIndex("notes.txt    N\r\na.txt        A\r\n");
    ASSERT_EQ(folder.save("notes.txt", "", 1), WriteResult::Ok);
    EXPECT_EQ(folder.index(), "a.txt        A\r\n");
    ASSERT_EQ(folder.save("a.txt", "", 1), WriteResult::Ok);
    EXPECT_FALSE(folder.exists("00_index.txt"));
    EXPECT_EQ(folder.save("a.txt", "", 1), WriteResult::Ok) << "no index at all";
}

TEST(FolderIndexTest, AdoptsTheOlderNameButNeverOverwritesAnIndex) {
    IndexFolder alone({"notes.txt", "a.txt"});
    alone.dir.write("Index_00.txt", "a.txt        A\r\n");
    ASSERT_EQ(alone.save("notes.txt", "N"), WriteResult::Ok);
    EXPECT_EQ(alone.index(), "notes.txt    N\r\na.txt        A\r\n");
    EXPECT_FALSE(alone.exists("Index_00.txt"));

    IndexFolder both({"notes.txt", "a.txt"});
    both.dir.write("Index_00.txt", "a.txt        Older\r\n");
    both.writeIndex("a.txt        A\r\n");
    ASSERT_EQ(both.save("notes.txt", "N"), WriteResult::Ok);
    EXPECT_EQ(both.index(), "notes.txt    N\r\na.txt        A\r\n");
    EXPECT_EQ(readFileBytes(both.dir / "Index_00.txt"), "a.txt        Older\r\n");
}

TEST(FolderIndexTest, ReadsEveryEntryOfTheTarget) {
    struct Case {
        const char* name;
        std::string index, expected;
    } kCases[] = {
        {"every entry in file order, any case, up to the next head",
         "NOTES.TXT    S\r\na\r\n\"Notes.txt\"\r\n" + blanks("Q\r\n"), "S\r\nQ\r\n"},
        {"short entry right after a quoted one",
         "\"notes.txt\"\r\n" + blanks("Q\r\n") + "notes.txt    S\r\n", "Q\r\nS\r\n"},
        {"Windows-1252 text decoded", "notes.txt    d\xE9j\xE0\r\n", "d\xC3\xA9j\xC3\xA0\r\n"},
    };
    for (const auto& [name, index, expected] : kCases) {
        SCOPED_TRACE(name);
        IndexFolder folder;
        folder.writeIndex(index);
        EXPECT_EQ(folder.read("notes.txt"), expected);
    }
}

// Other ways the rewrite fails are the save sequence's and the atomic file's.
TEST(FolderIndexTest, AReadOnlyIndexFailsWithTheMessageAndStaysAsItWas) {
    const std::string oldIndex = "a.txt        A\r\nnotes.txt    Old\r\n";
    IndexFolder folder({"a.txt", "notes.txt"});
    folder.writeIndex(oldIndex);
    ASSERT_EQ(::chmod((folder.dir / "00_index.txt").c_str(), 0444), 0);

    EXPECT_EQ(folder.save("notes.txt", "New"), WriteResult::Error);
    EXPECT_EQ(folder.prompter.texts(),
              std::vector<std::string>{"Error: Problem while updating '00_index.txt' file.\r\n"
                                       "(You can disable '00_index.txt' creation in Options.)"});
    EXPECT_EQ(folder.prompter.shown[0].icon, Icon::Critical);
    EXPECT_EQ(folder.index(), oldIndex);
}

}  // namespace

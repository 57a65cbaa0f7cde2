#include "stores/folder_index.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

constexpr const char* kBlanks = "             ";  // the 13 columns before the text

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

std::string blanks(const std::string& text) {
    return kBlanks + text;
}

TEST(FolderIndexTest, WritesTheShortOrTheQuotedFormAndReadsItBack) {
    struct Case {
        const char* name;
        std::string item;
        std::string desc;
        std::string index;
    };
    const Case kCases[] = {
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
        {"12 characters of up to 2 bytes stay short",
         "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9.txt", "T",
         "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9.txt T\r\n"},
        {"empty line stored as 13 blanks", "notes.txt", "First\r\n\r\nThird",
         "notes.txt    First\r\n" + blanks("\r\n") + blanks("Third\r\n")},
        {"empty first line of a short entry", "notes.txt", "\r\nSecond",
         "notes.txt    \r\n" + blanks("Second\r\n")},
    };
    for (const auto& [name, item, desc, index] : kCases) {
        SCOPED_TRACE(name);
        IndexFolder folder({item});
        ASSERT_EQ(folder.save(item, desc), WriteResult::Ok);
        EXPECT_EQ(folder.index(), index);
        EXPECT_EQ(folder.read(item), desc + "\r\n");
        EXPECT_FALSE(folder.exists("00_index.txt.tmp"));
    }
}

TEST(FolderIndexTest, NewEntryComesFirstWithoutOldEntriesMissingItemsOrEmptyLines) {
    const std::string a = "a.txt        A\r\n",
                      gone = "gone.txt     Gone\r\n" + blanks("Gone too\r\n");
    const std::string letters = "\"Old Letters\"\r\n" + blanks("L\r\n") + "x\r\n";
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
        {"missing item whose continuation is the last line", a + gone, a},
        {"last line after a dropped entry is examined and kept", gone + "other.txt    X\r\n",
         "other.txt    X\r\n"},
        {"target's entries in both forms and any case",
         "\"NOTES.txt\"\r\n" + blanks("Q\r\n") + a + "Notes.TXT    S\r\n" + blanks("S2"), a},
        {"header line of another program", "---- Files in this folder ----\r\n" + a, a},
        {"empty lines", "\r\n\n" + a + "\r\n", a},
        {"continuation lines without a head", blanks("Loose\r\n") + a, blanks("Loose\r\n") + a},
        {"quoted entry of an existing folder", letters, letters},
        {"quoted entry of a missing item", "\"Lost Item.txt\"\r\n" + blanks("L\r\n") + "x\r\n",
         "x\r\n"},
        {"head line with an empty name", "\"\"\r\n" + blanks("E\r\nx\r\n"),
         "\"\"\r\n" + blanks("E\r\nx\r\n")},
        {"a FIFO counts as missing", "pipe         P\r\nx\r\n", "x\r\n"},
        {"Windows-1252 line of an existing item passes as its bytes",
         "caf\xE9.txt     d\xE9j\xE0\r\nx\n", "caf\xE9.txt     d\xE9j\xE0\r\nx\r\n"},
    };
    for (const auto& [name, oldIndex, kept] : kCases) {
        SCOPED_TRACE(name);
        IndexFolder folder({"notes.txt", "a.txt", "b.txt", "Old Letters/x", "caf\xC3\xA9.txt"});
        ASSERT_EQ(::mkfifo((folder.dir / "pipe").c_str(), 0644), 0);
        folder.writeIndex(oldIndex);
        ASSERT_EQ(folder.save("notes.txt", "New"), WriteResult::Ok);
        EXPECT_EQ(folder.index(), "notes.txt    New\r\n" + kept);
    }
}

TEST(FolderIndexTest, DeletingTheLastEntryDeletesTheIndex) {
    IndexFolder folder({"notes.txt", "a.txt"});
    ASSERT_EQ(folder.save("notes.txt", "N"), WriteResult::Ok);
    ASSERT_EQ(folder.save("a.txt", "A"), WriteResult::Ok);
    ASSERT_EQ(folder.save("notes.txt", "", 1), WriteResult::Ok);
    EXPECT_EQ(folder.index(), "a.txt        A\r\n");
    ASSERT_EQ(folder.save("a.txt", "", 1), WriteResult::Ok);
    EXPECT_FALSE(folder.exists("00_index.txt"));
    ASSERT_EQ(folder.save("a.txt", "", 1), WriteResult::Ok);  // no index at all
    EXPECT_FALSE(folder.exists("00_index.txt"));
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
        std::string index;
        std::string expected;
    };
    const Case kCases[] = {
        {"no entry", "a.txt        A\r\n", ""},
        {"empty index", "", ""},
        {"short entry ends at the next head", "notes.txt    N\r\n" + blanks("N2\r\nb.txt  B\r\n"),
         "N\r\nN2\r\n"},
        {"any letter case", "NOTES.TXT    N\r\n", "N\r\n"},
        {"quoted entry", "\"notes.txt\"\r\n" + blanks("Q\r\n") + blanks("Q2"), "Q\r\nQ2\r\n"},
        {"every entry in file order", "notes.txt    S\r\na\r\n\"Notes.txt\"\r\n" + blanks("Q\r\n"),
         "S\r\nQ\r\n"},
        {"short entry right after a quoted one",
         "\"notes.txt\"\r\n" + blanks("Q\r\n") + "notes.txt    S\r\n", "Q\r\nS\r\n"},
        {"quoted head as the last line", "\"notes.txt\"", ""},
        {"short head shorter than 13 characters", "notes.txt\r\n" + blanks("N2\r\n"), "\r\nN2\r\n"},
        {"line ends LF and lone CR", "notes.txt    N\n" + blanks("N2\r") + blanks("N3"),
         "N\r\nN2\r\nN3\r\n"},
        {"Windows-1252 text decoded", "notes.txt    d\xE9j\xE0\r\n", "d\xC3\xA9j\xC3\xA0\r\n"},
    };
    for (const auto& [name, index, expected] : kCases) {
        SCOPED_TRACE(name);
        IndexFolder folder;
        folder.writeIndex(index);
        EXPECT_EQ(folder.read("notes.txt"), expected);
    }
    IndexFolder accented;  // 13 characters, not 13 bytes; any letter case
    accented.writeIndex("\xC3\xA9t\xC3\xA9.txt      Text\r\n");
    EXPECT_EQ(accented.read("\xC3\x89T\xC3\x89.TXT"), "Text\r\n");
    IndexFolder none;
    EXPECT_EQ(none.read("notes.txt"), "");
    none.dir.mkdir("00_index.txt");
    EXPECT_EQ(none.read("notes.txt"), "");
}

TEST(FolderIndexTest, FailuresShowTheirMessageAndKeepTheOldIndex) {
    const std::string oldIndex = "a.txt        A\r\nnotes.txt    Old\r\n";
    struct Case {
        const char* name;
        int removeFlag;
        std::string inTheWay;  // a folder made there, else the index made read-only
    } kCases[] = {
        {"folder where the index must be", 0, "00_index.txt"},
        {"folder where the index must be, deleting", 1, "00_index.txt"},
        {"folder where the temporary file must be", 0, "00_index.txt.tmp"},
        {"read-only index", 0, ""},
        {"read-only index, deleting", 1, ""},
    };
    for (const auto& [name, removeFlag, inTheWay] : kCases) {
        SCOPED_TRACE(name);
        IndexFolder folder({"a.txt", "notes.txt"});
        if (inTheWay != "00_index.txt")
            folder.writeIndex(oldIndex);
        if (inTheWay.empty())
            ::chmod((folder.dir / "00_index.txt").c_str(), 0444);
        else
            folder.dir.mkdir(inTheWay + "/inside");

        EXPECT_EQ(folder.save("notes.txt", "New", removeFlag), WriteResult::Error);
        ASSERT_EQ(folder.prompter.shown.size(), 1u);
        EXPECT_EQ(folder.prompter.shown[0].text,
                  "Error: Problem while updating '00_index.txt' file.\r\n"
                  "(You can disable '00_index.txt' creation in Options.)");
        EXPECT_EQ(folder.prompter.shown[0].icon, Icon::Critical);
        EXPECT_EQ(folder.prompter.shown[0].title, "Veskor");
        EXPECT_TRUE(folder.exists(inTheWay.empty() ? "00_index.txt" : inTheWay + "/inside"));
        if (inTheWay == "00_index.txt")
            EXPECT_FALSE(folder.exists("00_index.txt.tmp"));
        else
            EXPECT_EQ(folder.index(), oldIndex);
    }
}

}  // namespace

#include "stores/descript_ion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <tuple>
#include <vector>

#include "platform/folder_lock.h"
#include "platform/lookup.h"
#include "tests/store_fixture.h"

namespace {

using std::nullopt;
using std::string_literals::operator""s;

const std::string kBom = "\xEF\xBB\xBF";
const std::string kTcMark = "\x04\xC2";
const std::string kNbsp = "\xC2\xA0";
const std::string kUpdateFailed = "Error: Problem while updating 'descript.ion' file.";

// The bytes of UTF-16LE text written in ASCII.
std::string utf16(std::string_view ascii) {
    std::string out;
    for (char c : ascii)
        out += std::string{c, '\0'};
    return out;
}

// Every dialect, encoding and line end reads back with its breaks; names match whatever
// their letter case, quoted or not, and the first entry counts.
TEST(DescriptIonTest, ReadsEachDialectAndEncoding) {
    const std::tuple<const char*, std::string, std::string, std::optional<std::string>> rows[] = {
        {"plain, CR LF", "a.txt One\r\nplan.txt Two words\r\n", "plan.txt", "Two words"},
        {"name case ignored", "PLAN.TXT Two\r\n", "plan.txt", "Two"},
        {"quoted name with blanks", "\"my plan.txt\"  Quoted\n", "My Plan.txt", "Quoted"},
        {"prefix is no match", "plan.txt.bak Other\n", "plan.txt", nullopt},
        {"first entry counts", "plan.txt First\nplan.txt Second\n", "plan.txt", "First"},
        {"name alone", "plan.txt\n", "plan.txt", ""},
        {"Double Commander", kBom + "plan.txt First" + kNbsp + "\xC3\xA9t\xC3\xA9\n", "plan.txt",
         "First\r\n\xC3\xA9t\xC3\xA9"},
        {"Total Commander, 8-bit", "plan.txt First\\n\xE9t\xE9" + kTcMark + "\r\nb.txt x\r\n",
         "plan.txt", "First\r\n\xC3\xA9t\xC3\xA9"},
        {"Total Commander, UTF-8", kBom + "plan.txt A\\nB" + kTcMark + "\r\n", "plan.txt",
         "A\r\nB"},
        {"\\n without the mark is text", "plan.txt C:\\new\r\n", "plan.txt", "C:\\new"},
        {"8-bit: a no-break space is a space",
         "plan.txt a\xA0"
         "b\r\n",
         "plan.txt", "a" + kNbsp + "b"},
        {"Far", "plan.txt First\r\n Second\r\n\tThird\r\nb.txt x\r\n", "plan.txt",
         "First\r\nSecond\r\nThird"},
        {"Windows-1252 name and text", "r\xE9sum\xE9.txt \x80 5\r", "r\xC3\xA9sum\xC3\xA9.txt",
         "\xE2\x82\xAC 5"},
        {"UTF-16LE", "\xFF\xFE" + utf16("a.txt x\r\nplan.txt Wide\r\n"), "plan.txt", "Wide"},
    };
    for (const auto& [name, bytes, target, expected] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(descriptionIn(bytes, target), expected);
    }
}

// Other lines stay byte for byte, encoding, BOM and line ends included; the multi-line
// form follows the file's encoding.
TEST(DescriptIonTest, RewritesOnlyTheTargetsEntry) {
    const std::optional<std::string_view> kRemove = nullopt;
    const std::tuple<const char*, std::string, std::optional<std::string_view>,
                     std::optional<std::string>>
        rows[] = {
            {"replaced where it stands, duplicates and Far lines gone",
             "a.txt x\nPlan.txt old\n more\nb.txt \xE9\nplan.txt again\n", "New",
             "a.txt x\nplan.txt New\nb.txt \xE9\n"},
            {"added after a last line without its end", "a.txt x\r\nb.txt y", "New",
             "a.txt x\r\nb.txt y\r\nplan.txt New\r\n"},
            {"added to a file of CR line ends", "a.txt x\r", "New", "a.txt x\rplan.txt New\r"},
            {"last line keeps its missing end", "plan.txt old", "New", "plan.txt New"},
            {"UTF-8: U+00A0 breaks, final break dropped", kBom + "a.txt \xC3\xA9\n",
             "One\r\nTwo\r\n", kBom + "a.txt \xC3\xA9\nplan.txt One" + kNbsp + "Two\n"},
            {"8-bit: Total Commander's form in Windows-1252", "a.txt x\r\n",
             "\xC3\xA9t\xC3\xA9\r\nTwo", "a.txt x\r\nplan.txt \xE9t\xE9\\nTwo" + kTcMark + "\r\n"},
            {"8-bit: text beyond Windows-1252 leaves the entry out", "a.txt x\r\nplan.txt old\r\n",
             "\xCE\xA9", "a.txt x\r\n"},
            {"8-bit: ... and the file, when no other entry is left", "plan.txt old\r\n", "\xCE\xA9",
             nullopt},
            {"UTF-16LE", "\xFF\xFE" + utf16("a.txt x\r\n"), "One\r\nTwo",
             "\xFF\xFE" + utf16("a.txt x\r\nplan.txt One") + "\xA0\x00"s + utf16("Two\r\n")},
            {"removed, file kept", "plan.txt old\r\na.txt x\r\n", kRemove, "a.txt x\r\n"},
            {"nothing but breaks removes", "plan.txt old\r\na.txt x\r\n", "\r\n\r\n",
             "a.txt x\r\n"},
            {"last entry removed: the file goes", kBom + "plan.txt old\r\n\r\n", kRemove, nullopt},
            {"a BOM bared by the removal reads anew", "plan.txt old\n" + kBom + "plan.txt 2\n",
             kRemove, nullopt},
            {"a lone CR and an LF that would join: moved to the end",
             "plan.txt old\rPLAN.TXT dup\n\n tail\n", "New", "\n tail\nplan.txt New\n"},
        };
    for (const auto& [name, before, description, after] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(withEntry(before, "plan.txt", description), after);
    }
    EXPECT_EQ(withEntry("a.txt x\n", "My Plan.txt", "Q"), "a.txt x\n\"My Plan.txt\" Q\n");
    // A file name that is not UTF-8 keeps its bytes in an 8-bit file, and finds its entry.
    EXPECT_EQ(withEntry("caf\xE9.txt old\n", "caf\xE9.txt", "\xE2\x82\xAC"), "caf\xE9.txt \x80\n");
    for (std::string_view unwritable : {"\"quoted", "my \"plan\".txt"})
        EXPECT_EQ(withEntry("a.txt x\n", unwritable, "Q"), "a.txt x\n") << unwritable;
}

class DescriptIonFileTest : public StoreFixture {
protected:
    WriteResult save(const std::string& text,
                     std::chrono::milliseconds timeout = kFolderLockTimeout) {
        state_.targetFileDesc = text;
        state_.removeTargetFileDescFlag = text.empty() ? 1 : 0;
        return updateDescriptIon(state_, prompter_, timeout);
    }
    std::string folder() const { return state_.target.indexFilePath; }
};

// The file's name in any letter case; the lower-case one where several exist. A save
// round-trips through the file; deleting the last entry removes it,
// and a folder without one never gets one.
TEST_F(DescriptIonFileTest, KeepsTheEntryOnlyWhereAFileExists) {
    ASSERT_EQ(save("New"), WriteResult::Ok);
    EXPECT_EQ(descriptIonFile(folder()), "");

    const std::string upper = dir_.write("docs/DESCRIPT.ION", "a.txt x\r\n");
    EXPECT_EQ(descriptIonFile(folder()), upper);
    ASSERT_EQ(save("Two\r\nlines"), WriteResult::Ok);
    EXPECT_EQ(readFileBytes(upper), "a.txt x\r\nplan.txt Two\\nlines" + kTcMark + "\r\n");
    EXPECT_EQ(readDescriptIon(state_.target), "Two\r\nlines");

    const std::string lower = dir_.write("docs/descript.ion", "plan.txt Lower\r\n");
    EXPECT_EQ(readDescriptIon(state_.target), "Lower");
    ASSERT_EQ(save(""), WriteResult::Ok);
    EXPECT_FALSE(fileExists(lower));
    EXPECT_EQ(readFileBytes(upper), "a.txt x\r\nplan.txt Two\\nlines" + kTcMark + "\r\n");
    EXPECT_TRUE(prompter_.shown.empty());
}

// A second copy of the program holding the folder's lock makes the save wait, then fail
// with the store's message, leaving the file as it was.
TEST_F(DescriptIonFileTest, WaitsForTheFoldersLockThenFailsWithItsMessage) {
    const std::string file = dir_.write("docs/descript.ion", "plan.txt old\r\n");
    FolderLock other;
    ASSERT_FALSE(other.acquire(folder(), std::chrono::milliseconds(0)));
    EXPECT_EQ(save("New", std::chrono::milliseconds(50)), WriteResult::Error);
    EXPECT_EQ(readFileBytes(file), "plan.txt old\r\n");
    EXPECT_EQ(prompter_.texts(), std::vector<std::string>{kUpdateFailed});
    other.release();
    EXPECT_EQ(save("New"), WriteResult::Ok);
    EXPECT_EQ(readFileBytes(file), "plan.txt New\r\n");
}

// Fifty items of one folder saved at once, each by a thread of its own as by another
// copy of the program: each save reads the file that the one before it wrote, so every
// entry (one line each) is kept.
TEST_F(DescriptIonFileTest, ConcurrentSavesOfOneFolderKeepEveryEntry) {
    constexpr int kSaves = 50;
    const std::string file = dir_.write("docs/descript.ion", "plan.txt Kept\r\n");
    std::vector<SharedState> states;
    for (int i = 0; i < kSaves; ++i) {
        const std::string item = "docs/item" + std::to_string(i);
        dir_.write(item, "");
        setTarget(item);
        state_.targetFileDesc = "text";
        states.push_back(state_);
    }
    std::vector<ScriptedPrompter> prompters(kSaves);
    std::vector<WriteResult> results(kSaves, WriteResult::Error);
    {
        std::vector<std::jthread> saves;
        saves.reserve(kSaves);
        for (int i = 0; i < kSaves; ++i)
            saves.emplace_back([&, i] { results[i] = updateDescriptIon(states[i], prompters[i]); });
    }
    EXPECT_EQ(std::count(results.begin(), results.end(), WriteResult::Ok), kSaves);
    const std::string bytes = readFileBytes(file);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\n'), 1 + kSaves);
}

}  // namespace

#include "core/save_sequence.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <array>
#include <filesystem>

#include "platform/lookup.h"
#include "platform/xattr.h"
#include "tests/store_fixture.h"
#include "tests/streams.h"

namespace {

using Texts = std::vector<std::string>;
using Left = std::array<bool, 3>;  // whether the failsafe, exported and index files exist

const std::string kExportError = "Error: Problem while updating exported description file.";
const std::string kNtfsWarning =
    "WARNING: File description cannot be saved in NTFS.  '00_index.txt' file creation option "
    "is disabled.  Auto-creation of exported description files option is also disabled.  "
    "Continuing will result in the description not being saved at all (any changes will be "
    "lost).  Continue?";

// ext4 keeps about 4 KiB in one attribute value: a longer description makes the
// summary stream's write fail for real.
const std::string kTooLong(6000, 'L');

class SaveSequenceTest : public StoreFixture {
protected:
    // Saves `text` with a fresh prompter that gives `answers`.
    SaveOutcome save(const std::string& text, std::deque<Answer> answers = {}) {
        prompter_ = ScriptedPrompter();
        prompter_.answers = std::move(answers);
        editor_.setText(text);
        editor_.setUpdateEnabled(true);
        return Command1_Click(state_, editor_, prompter_);
    }
    void expectBackInEditing() {
        EXPECT_EQ(editor_.updateCaption, "Update [F10]");
        EXPECT_TRUE(editor_.updateEnabled() && editor_.cancelEnabled && editor_.textEnabled);
    }
    std::string record(const std::string& lines) const {
        return beginLine() + "\r\n" + lines + endLine() + "\r\n";
    }
    Left storeFilesLeft() const {
        return {fileExists(failsafeFile()), fileExists(target() + ".description"),
                fileExists(state_.target.indexFile)};
    }
    void removeStoreFiles() {
        for (const std::string& path :
             {failsafeFile(), target() + ".description", state_.target.indexFile})
            std::filesystem::remove(path);
    }
};

// The failsafe markers are blanked, but not in the streams. Deleting removes the exported
// file whether the box is ticked or not. Nothing happens while Update is disabled.
TEST_F(SaveSequenceTest, WritesEveryStoreAndDeletesFromEveryStoreOnlyAfterYes) {
    const std::string typed =
        "a veskor FAILSAFE db 1.7 begin b\r\nVeskor failsafe DB 1.7 END c failsafe DB 1.7 END";
    const std::string blanked = "a   b\r\n", blanked2 = "  c failsafe DB 1.7 END\r\n";
    editor_.setExportChecked(true);
    EXPECT_EQ(Command1_Click(state_, editor_, prompter_), SaveOutcome::NotRun);
    EXPECT_EQ(save(typed), SaveOutcome::Stored);
    EXPECT_EQ(failsafe(), record(blanked + blanked2));
    EXPECT_EQ(exported(), blanked + blanked2);
    EXPECT_EQ(index(), "plan.txt     " + blanked + "             " + blanked2);
    EXPECT_EQ(summaryText(), typed);
    EXPECT_EQ(prompter_.texts(), Texts{});

    editor_.setExportChecked(false);
    editor_.setUpdateBold(true);
    EXPECT_EQ(save(""), SaveOutcome::ReturnedToEditing);
    EXPECT_EQ(prompter_.texts(), Texts{"Delete existing description?"});
    EXPECT_EQ(failsafe(), record(blanked + blanked2));
    EXPECT_TRUE(editor_.updateBold());
    expectBackInEditing();
    EXPECT_EQ(save("", {Answer::Yes}), SaveOutcome::Stored);
    EXPECT_EQ(storeFilesLeft(), (Left{fileExists(failsafeFile()), false, false}));
    EXPECT_EQ(failsafe() + summaryText(), "");  // an empty database file may stay
}

// Saving writes nothing; deleting removes only the exported file.
TEST_F(SaveSequenceTest, AVanishedTargetEndsWithoutStoring) {
    for (const std::string text : {"text", ""}) {
        SCOPED_TRACE(text.empty() ? "deleting" : "saving");
        putExported("orphan");
        putFailsafeRecord("kept\r\n");
        std::filesystem::remove(target());
        EXPECT_EQ(save(text, {Answer::Yes}), SaveOutcome::EndedWithoutStoring);
        EXPECT_EQ(prompter_.texts(),
                  Texts{text.empty() ? "Delete existing description?"
                                     : "Error: Target appears to no longer exist."});
        EXPECT_EQ(storeFilesLeft(), (Left{true, !text.empty(), false}));
        EXPECT_EQ(failsafe(), record("kept\r\n"));
    }
}

// Each store fails for real: a folder stands where its file must be written. The last
// row's export stands in for the streams, which cannot hold the text.
TEST_F(SaveSequenceTest, StopsAtTheFirstStoreThatFailsAndKeepsWhatWasWritten) {
    const std::string failsafeError = "Error: Problem while updating filesafe DB.";
    const std::string indexError =
        "Error: Problem while updating '00_index.txt' file.\r\n(You can disable '00_index.txt' "
        "creation in Options.)";
    const std::string typed = "new text";
    const std::tuple<std::string, std::string, bool, std::string, Left> rows[] = {
        // blocked file, text, export box, message, store files left
        {"data/failsafe db/ver1.7.dat", typed, true, failsafeError, {false, false, false}},
        {"docs/plan.txt.description", typed, true, kExportError, {true, false, false}},
        {"docs/00_index.txt", typed, true, indexError, {true, true, false}},
        {"docs/plan.txt.description", kTooLong, false, kExportError, {true, false, true}},
    };
    for (const auto& [blocked, text, boxTicked, message, left] : rows) {
        SCOPED_TRACE(blocked + (boxTicked ? "" : " as the fallback"));
        removeStoreFiles();
        const std::string blocker = dir_.mkdir(blocked);
        editor_.setExportChecked(boxTicked);
        EXPECT_EQ(save(text), SaveOutcome::ReturnedToEditing);
        ::rmdir(blocker.c_str());
        EXPECT_EQ(prompter_.texts(), Texts{message});
        EXPECT_EQ(storeFilesLeft(), left);
        EXPECT_EQ(summaryText(), "");
        expectBackInEditing();
    }
}

// The warning comes when no other store will hold the text, even when the export box
// had the exported file written.
TEST_F(SaveSequenceTest, FallsBackWhenTheStreamsCannotBeWritten) {
    using enum SaveOutcome;
    // optionsCreate00index, optionsCreateExpDescNonNTFS, export box, answer to the warning
    const std::tuple<const char*, int, int, bool, Answer, SaveOutcome> rows[] = {
        {"exported file and index stand in", 1, 1, false, Answer::No, Stored},
        {"index stands in", 1, 0, false, Answer::No, Stored},
        {"nothing else, user goes on", 0, 0, false, Answer::Yes, EndedWithoutStoring},
        {"nothing else, user stays", 0, 0, false, Answer::No, ReturnedToEditing},
        {"nothing else, box closed", 0, 0, false, Answer::Cancel, ReturnedToEditing},
        {"export box ticked, user goes on", 0, 0, true, Answer::Yes, EndedWithoutStoring},
    };
    for (const auto& [name, index, exportNonNtfs, boxTicked, answer, outcome] : rows) {
        SCOPED_TRACE(name);
        removeStoreFiles();
        state_.options.optionsCreate00index = index;
        state_.options.optionsCreateExpDescNonNTFS = exportNonNtfs;
        editor_.setExportChecked(boxTicked);
        EXPECT_EQ(save(kTooLong, {answer}), outcome);
        EXPECT_EQ(prompter_.texts(), index == 0 ? Texts{kNtfsWarning} : Texts{});
        const bool exported = boxTicked || exportNonNtfs == 1;
        EXPECT_EQ(editor_.exportChecked(), exported);
        EXPECT_EQ(storeFilesLeft(), (Left{true, exported, index == 1}));
        EXPECT_EQ(failsafe(), record(kTooLong + "\r\n"));
    }
}

// descript.ion is kept only where one exists, before the streams, and stops the save when
// it fails; the file manager's comment follows the streams and is never left behind.
TEST_F(SaveSequenceTest, KeepsTheStoresOfOtherProgramsInStep) {
    const std::string ion = dir_.write("docs/descript.ion", "a.txt x\r\n");
    auto comment = [&] { return streamOf(target(), "xdg.comment").value_or("(none)"); };
    EXPECT_EQ(save("Two\r\nlines"), SaveOutcome::Stored);
    EXPECT_EQ(readFileBytes(ion), "a.txt x\r\nplan.txt Two\\nlines\x04\xC2\r\n");
    EXPECT_EQ(comment(), "Two\nlines");

    ASSERT_EQ(::chmod(ion.c_str(), 0444), 0);
    EXPECT_EQ(save("Third"), SaveOutcome::ReturnedToEditing);
    EXPECT_EQ(prompter_.texts(), Texts{"Error: Problem while updating 'descript.ion' file."});
    EXPECT_EQ(summaryText() + "|" + comment(), "Two\r\nlines|Two\nlines");
    ASSERT_EQ(::chmod(ion.c_str(), 0644), 0);

    EXPECT_EQ(save(kTooLong), SaveOutcome::Stored);
    EXPECT_EQ(summaryText() + "|" + comment(), "|(none)");
    EXPECT_EQ(save("Fourth"), SaveOutcome::Stored);
    EXPECT_EQ(comment(), "Fourth");
    EXPECT_EQ(save("", {Answer::Yes}), SaveOutcome::Stored);
    EXPECT_EQ(readFileBytes(ion) + comment(), "a.txt x\r\n(none)");
}

}  // namespace

#include "core/save_sequence.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <cstdio>

#include "platform/lookup.h"
#include "tests/store_fixture.h"

namespace {

using Texts = std::vector<std::string>;

const std::string kExportError = "Error: Problem while updating exported description file.";
const std::string kNtfsWarning =
    "WARNING: File description cannot be saved in NTFS.  '00_index.txt' file creation option "
    "is disabled.  Auto-creation of exported description files option is also disabled.  "
    "Continuing will result in the description not being saved at all (any changes will be "
    "lost).  Continue?";

// ext4 keeps about 4 KiB in one attribute value: a longer description makes the
// summary stream's write fail for real.
const std::string kTooLongForTheStreams(6000, 'L');

class SaveSequenceTest : public StoreFixture {
protected:
    SaveSequenceTest() { editor_.setCancelEnabled(true); }

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
    bool exportedExists() const { return fileExists(target() + ".description"); }
    bool indexExists() const { return fileExists(state_.target.indexFile); }
    void removeStoreFiles() {
        for (const std::string& path :
             {failsafeFile(), target() + ".description", state_.target.indexFile})
            std::remove(path.c_str());
    }
};

TEST_F(SaveSequenceTest, DoesNothingWhileTheUpdateButtonIsDisabled) {
    editor_.setText("text");
    EXPECT_EQ(Command1_Click(state_, editor_, prompter_), SaveOutcome::NotRun);
    EXPECT_FALSE(fileExists(failsafeFile()));
}

TEST_F(SaveSequenceTest, AnEmptyBoxDeletesEverywhereOnlyAfterYes) {
    putExported("old");
    putIndexEntry("old");
    putFailsafeRecord("old\r\n");
    putSummary("old");
    editor_.setUpdateBold(true);
    EXPECT_EQ(save(""), SaveOutcome::ReturnedToEditing);
    EXPECT_EQ(prompter_.texts(), Texts{"Delete existing description?"});
    EXPECT_EQ(failsafe(), record("old\r\n"));
    EXPECT_TRUE(editor_.updateBold());
    expectBackInEditing();
    EXPECT_EQ(save("", {Answer::Yes}), SaveOutcome::Stored);
    EXPECT_FALSE(exportedExists() || indexExists());
    EXPECT_EQ(failsafe() + summaryText(), "");
}

// Every store gets the text; the failsafe markers are blanked, but not in the streams.
TEST_F(SaveSequenceTest, WritesEveryEnabledStoreBlankingOnlyTheFullMarkerTexts) {
    editor_.setExportChecked(true);
    const std::string typed =
        "a veskor FAILSAFE db 1.7 begin b\r\nVeskor failsafe DB 1.7 END c failsafe DB 1.7 END";
    const std::string blanked = "a   b\r\n", blanked2 = "  c failsafe DB 1.7 END\r\n";
    EXPECT_EQ(save(typed), SaveOutcome::Stored);
    EXPECT_EQ(failsafe(), record(blanked + blanked2));
    EXPECT_EQ(exported(), blanked + blanked2);
    EXPECT_EQ(index(), "plan.txt     " + blanked + "             " + blanked2);
    EXPECT_EQ(summaryText(), typed);
    EXPECT_EQ(prompter_.texts(), Texts{});
}

// Saving writes nothing; deleting removes only the exported file.
TEST_F(SaveSequenceTest, AVanishedTargetEndsWithoutStoring) {
    for (const std::string text : {"text", ""}) {
        SCOPED_TRACE(text.empty() ? "deleting" : "saving");
        putExported("orphan");
        putFailsafeRecord("kept\r\n");
        std::remove(target().c_str());
        EXPECT_EQ(save(text, {Answer::Yes}), SaveOutcome::EndedWithoutStoring);
        EXPECT_EQ(prompter_.texts(),
                  Texts{text.empty() ? "Delete existing description?"
                                     : "Error: Target appears to no longer exist."});
        EXPECT_EQ(exportedExists(), !text.empty());
        EXPECT_EQ(failsafe(), record("kept\r\n"));
        EXPECT_FALSE(indexExists());
    }
}

// Each store fails for real: a folder stands where its file must be written.
TEST_F(SaveSequenceTest, StopsAtTheFirstStoreThatFailsAndKeepsWhatWasWritten) {
    const std::string indexError =
        "Error: Problem while updating '00_index.txt' file.\r\n(You can disable '00_index.txt' "
        "creation in Options.)";
    const std::tuple<const char*, std::string, bool, bool> rows[] = {
        // blocked file, message, failsafe written, exported written
        {"data/failsafe db/ver1.7.dat", "Error: Problem while updating filesafe DB.", false, false},
        {"docs/plan.txt.description", kExportError, true, false},
        {"docs/00_index.txt", indexError, true, true},
    };
    for (const auto& [blocked, message, failsafeWritten, exportedWritten] : rows) {
        SCOPED_TRACE(blocked);
        removeStoreFiles();
        const std::string blocker = dir_.mkdir(blocked);
        editor_.setExportChecked(true);
        EXPECT_EQ(save("new text"), SaveOutcome::ReturnedToEditing);
        ::rmdir(blocker.c_str());
        EXPECT_EQ(prompter_.texts(), Texts{message});
        EXPECT_EQ(fileExists(failsafeFile()), failsafeWritten);
        EXPECT_EQ(exportedExists(), exportedWritten);
        EXPECT_FALSE(indexExists());
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
        EXPECT_EQ(save(kTooLongForTheStreams, {answer}), outcome);
        EXPECT_EQ(prompter_.texts(), index == 0 ? Texts{kNtfsWarning} : Texts{});
        EXPECT_EQ(editor_.exportChecked(), boxTicked || exportNonNtfs == 1);
        EXPECT_EQ(exportedExists(), boxTicked || exportNonNtfs == 1);
        EXPECT_EQ(indexExists(), index == 1);
        EXPECT_EQ(failsafe(), record(kTooLongForTheStreams + "\r\n"));
    }
}

TEST_F(SaveSequenceTest, AFailingFallbackExportReturnsToEditing) {
    state_.options.optionsCreate00index = state_.options.optionsCreateExpDescNonNTFS = 1;
    dir_.mkdir("docs/plan.txt.description");
    EXPECT_EQ(save(kTooLongForTheStreams), SaveOutcome::ReturnedToEditing);
    EXPECT_EQ(prompter_.texts(), Texts{kExportError});
    EXPECT_TRUE(indexExists());
    expectBackInEditing();
}

}  // namespace

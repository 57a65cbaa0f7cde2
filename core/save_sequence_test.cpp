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
    SaveSequenceTest() {
        editor_.setUpdateEnabled(true);
        editor_.setCancelEnabled(true);
    }

    SaveOutcome save(const std::string& text, Prompter& prompter) {
        editor_.setText(text);
        return Command1_Click(state_, editor_, prompter);
    }
    SaveOutcome save(const std::string& text) { return save(text, prompter_); }

    void expectBackInEditing() {
        EXPECT_EQ(editor_.updateCaption, "Update [F10]");
        EXPECT_TRUE(editor_.updateEnabled() && editor_.cancelEnabled && editor_.textEnabled);
    }

    std::string record(const std::string& lines) const {
        return beginLine() + "\r\n" + lines + endLine() + "\r\n";
    }
    bool exportedExists() const { return fileExists(target() + ".description"); }
    void removeStoreFiles() {
        for (const std::string& path :
             {failsafeFile(), target() + ".description", state_.target.indexFile})
            std::remove(path.c_str());
    }
};

TEST_F(SaveSequenceTest, WritesEveryEnabledStore) {
    editor_.setExportChecked(true);
    EXPECT_EQ(save("First line\r\nSecond"), SaveOutcome::Stored);
    EXPECT_EQ(failsafe(), record("First line\r\nSecond\r\n"));
    EXPECT_EQ(exported(), "First line\r\nSecond\r\n");
    EXPECT_EQ(index(), "plan.txt     First line\r\n             Second\r\n");
    EXPECT_EQ(summaryText(), "First line\r\nSecond");
    EXPECT_TRUE(prompter_.shown.empty());
}

TEST_F(SaveSequenceTest, DoesNothingWhileTheUpdateButtonIsDisabled) {
    editor_.setUpdateEnabled(false);
    EXPECT_EQ(save("text"), SaveOutcome::NotRun);
    EXPECT_FALSE(fileExists(failsafeFile()));
}

TEST_F(SaveSequenceTest, AnEmptyBoxAsksBeforeDeleting) {
    editor_.setUpdateBold(true);
    EXPECT_EQ(save(""), SaveOutcome::ReturnedToEditing);
    EXPECT_EQ(prompter_.texts(), Texts{"Delete existing description?"});
    EXPECT_EQ(prompter_.shown[0].buttons, Buttons::YesNo);
    EXPECT_FALSE(fileExists(failsafeFile()));
    EXPECT_TRUE(editor_.updateBold());
    expectBackInEditing();
}

TEST_F(SaveSequenceTest, DeletingRemovesTheEntriesAndEmptiesTheStreams) {
    putExported("old");
    putIndexEntry("old");
    putFailsafeRecord("old\r\n");
    putSummary("old");
    prompter_.answers = {Answer::Yes};
    EXPECT_EQ(save(""), SaveOutcome::Stored);
    EXPECT_FALSE(exportedExists() || fileExists(state_.target.indexFile));
    EXPECT_EQ(failsafe(), "");
    EXPECT_EQ(summaryText(), "");
}

TEST_F(SaveSequenceTest, BlanksOnlyTheFullMarkerTextsAndOnlyOutsideTheStreams) {
    editor_.setExportChecked(true);
    const std::string typed =
        "a veskor FAILSAFE db 1.7 begin b Veskor failsafe DB 1.7 END c failsafe DB 1.7 END";
    const std::string blanked = "a   b   c failsafe DB 1.7 END";
    EXPECT_EQ(save(typed), SaveOutcome::Stored);
    EXPECT_EQ(failsafe(), record(blanked + "\r\n"));
    EXPECT_EQ(exported(), blanked + "\r\n");
    EXPECT_EQ(index(), "plan.txt     " + blanked + "\r\n");
    EXPECT_EQ(summaryText(), typed);
}

// Saving (flag 0) writes nothing; deleting (flag 1) removes only the exported file.
TEST_F(SaveSequenceTest, AVanishedTargetEndsWithoutStoring) {
    for (const std::string text : {"text", ""}) {
        SCOPED_TRACE(text.empty() ? "deleting" : "saving");
        putExported("orphan");
        putFailsafeRecord("kept\r\n");
        std::remove(target().c_str());
        editor_.setUpdateEnabled(true);
        ScriptedPrompter prompter;
        prompter.answers = {Answer::Yes};
        EXPECT_EQ(save(text, prompter), SaveOutcome::EndedWithoutStoring);
        EXPECT_EQ(prompter.texts(),
                  Texts{text.empty() ? "Delete existing description?"
                                     : "Error: Target appears to no longer exist."});
        EXPECT_EQ(exportedExists(), !text.empty());
        EXPECT_EQ(failsafe(), record("kept\r\n"));
        EXPECT_FALSE(fileExists(state_.target.indexFile));
    }
}

// Each store fails for real: a folder stands where its file must be written.
TEST_F(SaveSequenceTest, StopsAtTheFirstStoreThatFailsAndKeepsWhatWasWritten) {
    struct Case {
        const char* blocker;
        std::string message;
        bool failsafeWritten, exportedWritten;
    } const cases[] = {
        {"data/failsafe db/ver1.7.dat", "Error: Problem while updating filesafe DB.", false, false},
        {"docs/plan.txt.description", kExportError, true, false},
        {"docs/00_index.txt",
         "Error: Problem while updating '00_index.txt' file.\r\n(You can disable '00_index.txt' "
         "creation in Options.)",
         true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.blocker);
        removeStoreFiles();
        const std::string blocker = dir_.mkdir(c.blocker);
        editor_.setExportChecked(true);
        ScriptedPrompter prompter;
        EXPECT_EQ(save("new text", prompter), SaveOutcome::ReturnedToEditing);
        ::rmdir(blocker.c_str());
        EXPECT_EQ(prompter.texts(), Texts{c.message});
        EXPECT_EQ(fileExists(failsafeFile()), c.failsafeWritten);
        EXPECT_EQ(exportedExists(), c.exportedWritten);
        EXPECT_FALSE(fileExists(state_.target.indexFile));
        EXPECT_EQ(summaryText(), "");
        expectBackInEditing();
    }
}

// The warning comes when no other store will hold the text, even when the export box
// had the exported file written.
TEST_F(SaveSequenceTest, FallsBackWhenTheStreamsCannotBeWritten) {
    using enum SaveOutcome;
    struct Case {
        const char* name;
        int index, exportNonNtfs;
        bool boxTicked;
        Answer answer;  // to the warning, when it comes
        SaveOutcome outcome;
        bool warned;
    } const cases[] = {
        {"exported file and index stand in", 1, 1, false, Answer::No, Stored, false},
        {"index stands in", 1, 0, false, Answer::No, Stored, false},
        {"nothing else, user goes on", 0, 0, false, Answer::Yes, EndedWithoutStoring, true},
        {"nothing else, user stays", 0, 0, false, Answer::No, ReturnedToEditing, true},
        {"nothing else, box closed", 0, 0, false, Answer::Cancel, ReturnedToEditing, true},
        {"export box ticked, user goes on", 0, 0, true, Answer::Yes, EndedWithoutStoring, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        removeStoreFiles();
        state_.options.optionsCreate00index = c.index;
        state_.options.optionsCreateExpDescNonNTFS = c.exportNonNtfs;
        editor_.setExportChecked(c.boxTicked);
        editor_.setUpdateEnabled(true);
        ScriptedPrompter prompter;
        prompter.answers = {c.answer};
        EXPECT_EQ(save(kTooLongForTheStreams, prompter), c.outcome);
        EXPECT_EQ(prompter.texts(), c.warned ? Texts{kNtfsWarning} : Texts{});
        EXPECT_EQ(editor_.exportChecked(), c.boxTicked || c.exportNonNtfs == 1);
        EXPECT_EQ(exportedExists(), c.boxTicked || c.exportNonNtfs == 1);
        EXPECT_EQ(fileExists(state_.target.indexFile), c.index == 1);
        EXPECT_EQ(failsafe(), record(kTooLongForTheStreams + "\r\n"));
    }
}

TEST_F(SaveSequenceTest, AFailingFallbackExportReturnsToEditing) {
    state_.options.optionsCreate00index = state_.options.optionsCreateExpDescNonNTFS = 1;
    dir_.mkdir("docs/plan.txt.description");
    EXPECT_EQ(save(kTooLongForTheStreams), SaveOutcome::ReturnedToEditing);
    EXPECT_EQ(prompter_.texts(), Texts{kExportError});
    EXPECT_TRUE(fileExists(state_.target.indexFile));
    expectBackInEditing();
}

}  // namespace

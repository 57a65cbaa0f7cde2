#include "core/save_sequence.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <cstdio>

#include "platform/lookup.h"
#include "platform/xattr.h"
#include "tests/store_fixture.h"

namespace {

const std::string kFailsafeError = "Error: Problem while updating filesafe DB.";
const std::string kExportError = "Error: Problem while updating exported description file.";
const std::string kIndexError =
    "Error: Problem while updating '00_index.txt' file.\r\n"
    "(You can disable '00_index.txt' creation in Options.)";
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

    SaveOutcome save(const std::string& text) {
        editor_.setText(text);
        return Command1_Click(state_, editor_, prompter_);
    }

    void expectBackInEditing() {
        EXPECT_EQ(editor_.updateCaption, "Update [F10]");
        EXPECT_TRUE(editor_.updateEnabled());
        EXPECT_TRUE(editor_.cancelEnabled);
        EXPECT_TRUE(editor_.textEnabled);
    }

    std::string record(const std::string& lines) const {
        return beginLine() + "\r\n" + lines + endLine() + "\r\n";
    }

    void setOptions(int index, int exportNonNtfs) {
        state_.options.optionsCreate00index = index;
        state_.options.optionsCreateExpDescNonNTFS = exportNonNtfs;
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
    EXPECT_EQ(editor_.updateCaption, "Update [F10]");
}

TEST_F(SaveSequenceTest, AnEmptyBoxAsksBeforeDeleting) {
    editor_.setUpdateBold(true);
    EXPECT_EQ(save(""), SaveOutcome::ReturnedToEditing);
    EXPECT_EQ(prompter_.texts(), std::vector<std::string>{"Delete existing description?"});
    EXPECT_EQ(prompter_.shown[0].buttons, Buttons::YesNo);
    EXPECT_EQ(prompter_.shown[0].icon, Icon::None);
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
    EXPECT_FALSE(fileExists(target() + ".description"));
    EXPECT_FALSE(fileExists(state_.target.indexFile));
    EXPECT_EQ(failsafe(), "");
    EXPECT_EQ(summaryText(), "");
}

TEST_F(SaveSequenceTest, BlanksOnlyTheFullMarkerTextsAndOnlyOutsideTheStreams) {
    editor_.setExportChecked(true);
    const std::string typed =
        "a veskor FAILSAFE db 1.7 begin b Veskor failsafe DB 1.7 END c "
        "failsafe DB 1.7 END";
    const std::string blanked = "a   b   c failsafe DB 1.7 END";
    EXPECT_EQ(save(typed), SaveOutcome::Stored);
    EXPECT_EQ(failsafe(), record(blanked + "\r\n"));
    EXPECT_EQ(exported(), blanked + "\r\n");
    EXPECT_EQ(index(), "plan.txt     " + blanked + "\r\n");
    EXPECT_EQ(summaryText(), typed);
}

TEST_F(SaveSequenceTest, AVanishedTargetEndsWithoutWritingAnything) {
    std::remove(target().c_str());
    EXPECT_EQ(save("text"), SaveOutcome::EndedWithoutStoring);
    EXPECT_EQ(prompter_.texts(),
              std::vector<std::string>{"Error: Target appears to no longer exist."});
    EXPECT_EQ(prompter_.shown[0].icon, Icon::Critical);
    EXPECT_FALSE(fileExists(failsafeFile()));
    EXPECT_FALSE(fileExists(state_.target.indexFile));
}

TEST_F(SaveSequenceTest, DeletingForAVanishedTargetRemovesOnlyItsExportedFile) {
    putExported("orphan");
    putFailsafeRecord("kept\r\n");
    std::remove(target().c_str());
    prompter_.answers = {Answer::Yes};
    EXPECT_EQ(save(""), SaveOutcome::EndedWithoutStoring);
    EXPECT_FALSE(fileExists(target() + ".description"));
    EXPECT_EQ(failsafe(), record("kept\r\n"));
    EXPECT_EQ(prompter_.texts(), std::vector<std::string>{"Delete existing description?"});
}

// Each store fails for real: a folder stands where its file must be written.
TEST_F(SaveSequenceTest, StopsAtTheFirstStoreThatFailsAndKeepsWhatWasWritten) {
    struct Case {
        const char* name;
        std::string blocker;  // a folder made where the store writes
        std::string message;
        bool failsafeWritten, exportedWritten;
    } const cases[] = {
        {"failsafe", "data/failsafe db/ver1.7.dat", kFailsafeError, false, false},
        {"exported", "docs/plan.txt.description", kExportError, true, false},
        {"index", "docs/00_index.txt", kIndexError, true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::remove(failsafeFile().c_str());
        std::remove((target() + ".description").c_str());
        ScriptedPrompter prompter;
        const std::string blocker = dir_.mkdir(c.blocker);
        editor_.setText("new text");
        editor_.setExportChecked(true);
        EXPECT_EQ(Command1_Click(state_, editor_, prompter), SaveOutcome::ReturnedToEditing);
        ::rmdir(blocker.c_str());
        EXPECT_EQ(prompter.texts(), std::vector<std::string>{c.message});
        EXPECT_EQ(fileExists(failsafeFile()), c.failsafeWritten);
        EXPECT_EQ(fileExists(target() + ".description"), c.exportedWritten);
        EXPECT_FALSE(fileExists(state_.target.indexFile));
        EXPECT_EQ(summaryText(), "");
        expectBackInEditing();
    }
}

TEST_F(SaveSequenceTest, FallsBackWhenTheStreamsCannotBeWritten) {
    struct Case {
        const char* name;
        int index, exportNonNtfs;
        std::deque<Answer> answers;
        SaveOutcome outcome;
        bool warned, exportedWritten, indexWritten;
    } const cases[] = {
        {"exported file stands in", 1, 1, {}, SaveOutcome::Stored, false, true, true},
        {"index holds it", 1, 0, {}, SaveOutcome::Stored, false, false, true},
        {"nothing else, user goes on",
         0,
         0,
         {Answer::Yes},
         SaveOutcome::EndedWithoutStoring,
         true,
         false,
         false},
        {"nothing else, user stays",
         0,
         0,
         {Answer::No},
         SaveOutcome::ReturnedToEditing,
         true,
         false,
         false},
        {"nothing else, box closed",
         0,
         0,
         {Answer::Cancel},
         SaveOutcome::ReturnedToEditing,
         true,
         false,
         false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        for (const std::string& path : {target() + ".description", state_.target.indexFile})
            std::remove(path.c_str());
        setOptions(c.index, c.exportNonNtfs);
        editor_.setExportChecked(false);
        ScriptedPrompter prompter;
        prompter.answers = c.answers;
        editor_.setText(kTooLongForTheStreams);
        EXPECT_EQ(Command1_Click(state_, editor_, prompter), c.outcome);
        EXPECT_EQ(prompter.texts(),
                  c.warned ? std::vector<std::string>{kNtfsWarning} : std::vector<std::string>{});
        EXPECT_EQ(editor_.exportChecked(), c.exportNonNtfs == 1);
        EXPECT_EQ(fileExists(target() + ".description"), c.exportedWritten);
        EXPECT_EQ(fileExists(state_.target.indexFile), c.indexWritten);
        EXPECT_EQ(failsafe(), record(kTooLongForTheStreams + "\r\n"));
        editor_.setUpdateEnabled(true);
    }
}

TEST_F(SaveSequenceTest, WarnsEvenWhenTheExportBoxHadWrittenTheFile) {
    setOptions(0, 0);
    editor_.setExportChecked(true);
    prompter_.answers = {Answer::Yes};
    EXPECT_EQ(save(kTooLongForTheStreams), SaveOutcome::EndedWithoutStoring);
    EXPECT_EQ(prompter_.texts(), std::vector<std::string>{kNtfsWarning});
    EXPECT_EQ(exported(), kTooLongForTheStreams + "\r\n");
}

TEST_F(SaveSequenceTest, AFailingFallbackExportReturnsToEditing) {
    setOptions(1, 1);
    dir_.mkdir("docs/plan.txt.description");
    EXPECT_EQ(save(kTooLongForTheStreams), SaveOutcome::ReturnedToEditing);
    EXPECT_EQ(prompter_.texts(), std::vector<std::string>{kExportError});
    EXPECT_TRUE(fileExists(state_.target.indexFile));
    expectBackInEditing();
}

}  // namespace

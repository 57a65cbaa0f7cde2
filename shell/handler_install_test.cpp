#include "shell/handler_install.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

const std::string kAddQuestion =
    "Doing this will add the ability to view and modify file comments using file manager.  "
    "Continue?";
const std::string kRemoveQuestion =
    "Doing this will remove the ability to view and modify file comments using file manager.  "
    "Continue?";
const char* const kEntry = "applications/veskor-edit-description.desktop";
const char* const kServiceMenu = "kio/servicemenus/veskor-edit-description.desktop";
const char* const kScript = "nautilus/scripts/Edit description";

// The data folder is set apart from the home folder's default, so that every case also
// shows that $XDG_DATA_HOME is followed.
class HandlerInstallTest : public ::testing::Test {
protected:
    HandlerInstallTest() { setenv("XDG_DATA_HOME", data.path().c_str(), 1); }

    std::string file(const char* name) const { return readFileBytes(data / name); }
    bool isExecutable(const char* name) const { return ::access((data / name).c_str(), X_OK) == 0; }
    bool anyInstalled() const {
        return !file(kEntry).empty() || !file(kServiceMenu).empty() || !file(kScript).empty();
    }
    // What desktop-file-validate says of the entry: nothing, when it is valid.
    std::string validatorSays() const {
        const std::string out = home.home() + "/validate.out";
        const std::string command = "desktop-file-validate '" + data / kEntry + "' >" + out;
        EXPECT_EQ(std::system((command + " 2>&1").c_str()), 0);
        return readFileBytes(out);
    }

    TempHome home;  // puts XDG_DATA_HOME back
    TempDir data;
    ScriptedPrompter prompter;
};

// A program folder with every character that an Exec line or a shell must escape.
TEST_F(HandlerInstallTest, YesInstallsAValidEntryForEveryFileAndFolderAndYesRemovesIt) {
    prompter.answers = {Answer::Yes, Answer::Yes};
    installHandler(prompter, "/opt/Veskor Tools/a$b\\c%d \"e\" `f`/");
    EXPECT_EQ(prompter.shown.at(0).buttons, Buttons::YesNoCancel);
    const std::string exec =
        "\nExec=\"/opt/Veskor Tools/a\\\\$b\\\\\\\\c%%d \\\\\"e\\\\\" \\\\`f\\\\`/veskor\" %f\n";
    EXPECT_NE(file(kEntry).find(exec), std::string::npos);
    EXPECT_NE(file(kEntry).find("\nMimeType=application/octet-stream;inode/directory;\n"),
              std::string::npos);
    EXPECT_EQ(validatorSays(), "");
    EXPECT_NE(file(kServiceMenu).find(exec), std::string::npos);
    EXPECT_EQ(file(kScript),
              "#!/bin/sh\n# Opens the selected file or folder in Veskor.\n"
              "exec '/opt/Veskor Tools/a$b\\c%d \"e\" `f`/veskor' \"$@\"\n");
    EXPECT_TRUE(isExecutable(kServiceMenu) && isExecutable(kScript));

    uninstallHandler(prompter, "/opt/");
    EXPECT_EQ(prompter.texts(),
              (std::vector<std::string>{kAddQuestion, "Done.", kRemoveQuestion, "Done."}));
    EXPECT_FALSE(anyInstalled());
}

TEST_F(HandlerInstallTest, NoOrCancelChangesNothing) {
    for (Answer answer : {Answer::No, Answer::Cancel}) {
        SCOPED_TRACE(answer == Answer::No ? "No" : "Cancel");
        prompter.answers = {answer, answer};
        installHandler(prompter, "/opt/");
        EXPECT_FALSE(anyInstalled());
        ASSERT_FALSE(installDesktopIntegration(data.path(), "/opt/veskor"));
        uninstallHandler(prompter, "/opt/");
        EXPECT_TRUE(anyInstalled());
        removeDesktopIntegration(data.path());
    }
    EXPECT_EQ(prompter.texts(), (std::vector<std::string>{kAddQuestion, kRemoveQuestion,
                                                          kAddQuestion, kRemoveQuestion}));
}

}  // namespace

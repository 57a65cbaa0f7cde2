#include "shell/handler_install.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/loop_volume.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

std::string question(const char* change) {
    return std::string("Doing this will ") + change +
           " the ability to view and modify file comments using file manager.  Continue?";
}
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

    TempHome home;  // puts XDG_DATA_HOME back
    TempDir data;
    ScriptedPrompter prompter;
};

// A program folder with every character that an Exec line or a shell must escape.
TEST_F(HandlerInstallTest, OnlyYesInstallsAValidEntryForEveryFileAndFolderAndOnlyYesRemovesIt) {
    using enum Answer;
    const std::string folder = "/opt/Veskor Tools/a$b\\c%d \"e\" `f`/";
    prompter.answers = {No, Cancel, Yes, No, Cancel, Yes};
    installHandler(prompter, folder);
    installHandler(prompter, folder);
    EXPECT_FALSE(anyInstalled());
    installHandler(prompter, folder);
    EXPECT_EQ(prompter.shown.at(0).buttons, Buttons::YesNoCancel);
    const std::string exec =
        "\nExec=\"/opt/Veskor Tools/a\\\\$b\\\\\\\\c%%d \\\\\"e\\\\\" \\\\`f\\\\`/veskor\" %f\n";
    EXPECT_NE(file(kEntry).find(exec), std::string::npos);
    EXPECT_NE(file(kEntry).find("\nMimeType=application/octet-stream;inode/directory;\n"),
              std::string::npos);
    std::string said;  // nothing, of a valid entry
    EXPECT_EQ(runShell("(desktop-file-validate '" + data / kEntry + "' 2>&1)", &said), 0);
    EXPECT_EQ(said, "");
    EXPECT_NE(file(kServiceMenu).find(exec), std::string::npos);
    EXPECT_EQ(file(kScript),
              "#!/bin/sh\n# Opens the selected file or folder in Veskor.\n"
              "exec '/opt/Veskor Tools/a$b\\c%d \"e\" `f`/veskor' \"$@\"\n");
    EXPECT_TRUE(isExecutable(kServiceMenu) && isExecutable(kScript));

    uninstallHandler(prompter, folder);
    uninstallHandler(prompter, folder);
    EXPECT_TRUE(anyInstalled());
    uninstallHandler(prompter, folder);
    EXPECT_FALSE(anyInstalled());
    const std::string add = question("add"), remove = question("remove");
    EXPECT_EQ(prompter.texts(),
              (std::vector<std::string>{add, add, add, "Done.", remove, remove, remove, "Done."}));
}

// GNOME Files' module has "Edit description" on its menus: its script would add a second.
TEST_F(HandlerInstallTest, WithTheGnomeFilesModuleNoScriptIsAddedAndAnOldOneGoes) {
    ASSERT_FALSE(installDesktopIntegration(data.path(), "/usr/bin/veskor"));
    ASSERT_FALSE(file(kScript).empty());
    ASSERT_FALSE(installDesktopIntegration(data.path(), "/usr/bin/veskor", {.nautilus = true}));
    EXPECT_EQ(file(kScript), "");
    EXPECT_FALSE(file(kEntry).empty());
    EXPECT_FALSE(file(kServiceMenu).empty());
}

}  // namespace

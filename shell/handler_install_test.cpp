#include "shell/handler_install.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
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

// GNOME Files runs the script in the selected items' folder with their names as they
// are. Each item reaches the program alone, as a full path, however its folder is
// spelled; with nothing selected the program starts without arguments.
TEST_F(HandlerInstallTest, TheFileManagerScriptOpensEachSelectedItemByItsFullPath) {
    TempDir dir;
    const std::string calls = dir / "calls";
    const std::string program =
        dir.write("a$b\\c 'd' `e`/veskor", "#!/bin/sh\necho \"$#:$*\" >>" + calls + "\n");
    ASSERT_EQ(::chmod(program.c_str(), 0755), 0);
    ASSERT_FALSE(installDesktopIntegration(data.path(), program));
    std::string script = "'";  // built in steps: GCC 12 -O3 warns wrongly on "'" + path
    script += data / kScript;
    script += "'";
    const std::string folder = dir.mkdir("selected");
    ASSERT_EQ(
        runShell("cd " + folder + " && " + script + " -platformpluginpath pl '/a b' && " + script),
        0);
    std::string sorted;
    ASSERT_EQ(runShell("LC_ALL=C sort " + calls, &sorted), 0);
    EXPECT_EQ(sorted, "0:\n1:/a b\n1:" + folder + "/-platformpluginpath\n1:" + folder + "/pl\n");
}

// A program folder with a line break, a tab and the characters that an Exec line quotes,
// read back by GLib's desktop-entry reader: the entry keeps one Exec line, and starting
// it starts that very program with the file. (GLib refuses a "%" in the program's path,
// which the entry writes as "%%", so the folder has none.) A control character that an
// entry cannot hold writes nothing.
TEST_F(HandlerInstallTest, TheDesktopEntryStartsTheProgramWhateverItsFolderIsCalled) {
    if (runShell("command -v gio") != 0)
        GTEST_SKIP() << "needs gio (libglib2.0-bin) to start the entry";
    TempDir dir;
    const std::string calls = dir / "calls";
    const std::string program = dir.write("line\nbreak\ttab $x `y` \"q\" \\z/veskor",
                                          "#!/bin/sh\nprintf '%s|' \"$0\" \"$@\" >" + calls +
                                              ".new && mv " + calls + ".new " + calls + "\n");
    ASSERT_EQ(::chmod(program.c_str(), 0755), 0);
    EXPECT_EQ(installDesktopIntegration(data.path(), dir.mkdir("bell\a") + "/veskor"),
              std::errc::invalid_argument);
    EXPECT_FALSE(anyInstalled());
    ASSERT_FALSE(installDesktopIntegration(data.path(), program));
    const std::string entry = file(kEntry);
    EXPECT_EQ(entry.find("\nExec="), entry.rfind("\nExec=")) << entry;
    EXPECT_EQ(runShell("(desktop-file-validate '" + data / kEntry + "')"), 0) << entry;
    const std::string target = dir.write("a file.txt", "x");
    ASSERT_EQ(runShell("(gio launch '" + data / kEntry + "' '" + target + "')"), 0) << entry;
    for (int waited = 0; waited < 3000 && ::access(calls.c_str(), F_OK) != 0; ++waited)
        ::usleep(10000);
    EXPECT_EQ(readFileBytes(calls), program + "|" + target + "|");
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

#include "shell/handler_install.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cstdio>
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

// desktop-file-validate accepts the entry without a word.
void expectValid(const std::string& entry) {
    std::string output;
    FILE* pipe = popen(("desktop-file-validate '" + entry + "' 2>&1").c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::array<char, 256> buffer;
    while (std::fgets(buffer.data(), buffer.size(), pipe))
        output += buffer.data();
    EXPECT_EQ(pclose(pipe), 0) << output;
    EXPECT_EQ(output, "");
}

bool isExecutable(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && (st.st_mode & S_IXUSR) != 0;
}

// The data folder is set apart from the home folder's default, so that every case also
// shows that $XDG_DATA_HOME is followed.
class HandlerInstallTest : public ::testing::Test {
protected:
    HandlerInstallTest() { setenv("XDG_DATA_HOME", data.path().c_str(), 1); }

    std::string entry() const { return data / "applications/veskor-edit-description.desktop"; }
    std::string serviceMenu() const {
        return data / "kio/servicemenus/veskor-edit-description.desktop";
    }
    std::string script() const { return data / "nautilus/scripts/Edit description"; }
    bool anyInstalled() const {
        return !readFileBytes(entry()).empty() || !readFileBytes(serviceMenu()).empty() ||
               !readFileBytes(script()).empty();
    }

    TempHome home;  // puts XDG_DATA_HOME back
    TempDir data;
    ScriptedPrompter prompter;
};

TEST_F(HandlerInstallTest, YesInstallsAValidEntryForEveryFileAndFolder) {
    prompter.answers = {Answer::Yes};
    installHandler(prompter, "/opt/Veskor Tools/");
    EXPECT_EQ(prompter.texts(), (std::vector<std::string>{kAddQuestion, "Done."}));
    EXPECT_EQ(prompter.shown.at(0).buttons, Buttons::YesNoCancel);

    const std::string exec = "\nExec=\"/opt/Veskor Tools/veskor\" %f\n";
    EXPECT_NE(readFileBytes(entry()).find(exec), std::string::npos);
    EXPECT_NE(readFileBytes(entry()).find("\nMimeType=application/octet-stream;inode/directory;\n"),
              std::string::npos);
    expectValid(entry());
    EXPECT_NE(readFileBytes(serviceMenu()).find(exec), std::string::npos);
    EXPECT_EQ(readFileBytes(script()),
              "#!/bin/sh\n# Opens the selected file or folder in Veskor.\n"
              "exec '/opt/Veskor Tools/veskor' \"$@\"\n");
    EXPECT_TRUE(isExecutable(serviceMenu()));
    EXPECT_TRUE(isExecutable(script()));
}

TEST_F(HandlerInstallTest, YesRemovesWhatWasInstalled) {
    ASSERT_FALSE(installDesktopIntegration(data.path(), "/opt/veskor"));
    prompter.answers = {Answer::Yes};
    uninstallHandler(prompter, "/opt/");
    EXPECT_EQ(prompter.texts(), (std::vector<std::string>{kRemoveQuestion, "Done."}));
    EXPECT_FALSE(anyInstalled());
}

TEST_F(HandlerInstallTest, NoOrCancelChangesNothing) {
    for (Answer answer : {Answer::No, Answer::Cancel}) {
        SCOPED_TRACE(answer == Answer::No ? "No" : "Cancel");
        prompter.shown.clear();
        prompter.answers = {answer};
        installHandler(prompter, "/opt/");
        EXPECT_FALSE(anyInstalled());

        ASSERT_FALSE(installDesktopIntegration(data.path(), "/opt/veskor"));
        prompter.answers = {answer};
        uninstallHandler(prompter, "/opt/");
        EXPECT_TRUE(anyInstalled());
        removeDesktopIntegration(data.path());

        EXPECT_EQ(prompter.texts(), (std::vector<std::string>{kAddQuestion, kRemoveQuestion}));
    }
}

TEST_F(HandlerInstallTest, ExecQuotesAnyProgramPath) {
    const std::string folder = home.home() + "/odd";
    const std::string program = folder + "/a$b\\c%d \"e\" `f`/veskor";
    ASSERT_FALSE(installDesktopIntegration(folder, program));
    EXPECT_EQ(execArgument("/a$b\\c%d \"e\" `f`/veskor"),
              "\"/a\\\\$b\\\\\\\\c%%d \\\\\"e\\\\\" \\\\`f\\\\`/veskor\"");
    expectValid(folder + "/applications/veskor-edit-description.desktop");
}

}  // namespace

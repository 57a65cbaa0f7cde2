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

// Runs a command line; its exit status, with everything it printed.
std::pair<int, std::string> run(const std::string& command) {
    std::string output;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe)
        return {-1, "cannot start " + command};
    std::array<char, 256> buffer;
    while (std::fgets(buffer.data(), buffer.size(), pipe))
        output += buffer.data();
    return {pclose(pipe), output};
}

bool isExecutable(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && (st.st_mode & S_IXUSR) != 0;
}

class HandlerInstallTest : public ::testing::Test {
protected:
    std::string entry() const {
        return home.dataHome() + "/applications/veskor-edit-description.desktop";
    }
    std::string serviceMenu() const {
        return home.dataHome() + "/kio/servicemenus/veskor-edit-description.desktop";
    }
    std::string script() const { return home.dataHome() + "/nautilus/scripts/Edit description"; }
    bool anyInstalled() const {
        return !readFileBytes(entry()).empty() || !readFileBytes(serviceMenu()).empty() ||
               !readFileBytes(script()).empty();
    }

    TempHome home;
    ScriptedPrompter prompter;
};

TEST_F(HandlerInstallTest, YesInstallsAValidEntryForEveryFileAndFolder) {
    prompter.answers = {Answer::Yes};

    installHandler(prompter, "/opt/Veskor Tools/");

    ASSERT_EQ(prompter.shown.size(), 2u);
    EXPECT_EQ(prompter.shown[0].text, kAddQuestion);
    EXPECT_EQ(prompter.shown[0].title, "Veskor");
    EXPECT_EQ(prompter.shown[0].buttons, Buttons::YesNoCancel);
    EXPECT_EQ(prompter.shown[0].icon, Icon::None);
    EXPECT_EQ(prompter.shown[1].text, "Done.");
    EXPECT_EQ(prompter.shown[1].buttons, Buttons::Ok);

    const std::string text = readFileBytes(entry());
    EXPECT_NE(text.find("\nExec=\"/opt/Veskor Tools/veskor\" %f\n"), std::string::npos);
    EXPECT_NE(text.find("\nMimeType=application/octet-stream;inode/directory;\n"),
              std::string::npos);
    const auto [status, output] = run("desktop-file-validate '" + entry() + "'");
    EXPECT_EQ(status, 0) << output;
    EXPECT_EQ(output, "");

    EXPECT_NE(readFileBytes(serviceMenu()).find("\nExec=\"/opt/Veskor Tools/veskor\" %f\n"),
              std::string::npos);
    EXPECT_TRUE(isExecutable(serviceMenu()));
    EXPECT_EQ(readFileBytes(script()),
              "#!/bin/sh\n# Opens the selected file or folder in Veskor.\n"
              "exec '/opt/Veskor Tools/veskor' \"$@\"\n");
    EXPECT_TRUE(isExecutable(script()));
}

TEST_F(HandlerInstallTest, YesRemovesWhatWasInstalled) {
    ASSERT_FALSE(installDesktopIntegration(home.dataHome(), "/opt/veskor"));
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

        ASSERT_FALSE(installDesktopIntegration(home.dataHome(), "/opt/veskor"));
        prompter.answers = {answer};
        uninstallHandler(prompter, "/opt/");
        EXPECT_TRUE(anyInstalled());
        removeDesktopIntegration(home.dataHome());

        EXPECT_EQ(prompter.texts(), (std::vector<std::string>{kAddQuestion, kRemoveQuestion}));
    }
}

TEST_F(HandlerInstallTest, FollowsXdgDataHome) {
    TempDir elsewhere;
    setenv("XDG_DATA_HOME", elsewhere.path().c_str(), 1);
    prompter.answers = {Answer::Yes};

    installHandler(prompter, "/opt/");

    EXPECT_FALSE(readFileBytes(elsewhere / "applications/veskor-edit-description.desktop").empty());
    EXPECT_FALSE(anyInstalled());
}

TEST_F(HandlerInstallTest, ExecQuotesAnyProgramPath) {
    const std::string folder = home.home() + "/odd";
    const std::string program = folder + "/a$b\\c%d \"e\" `f`/veskor";
    ASSERT_FALSE(installDesktopIntegration(folder, program));

    EXPECT_EQ(execArgument("/a$b\\c%d \"e\" `f`/veskor"),
              "\"/a\\\\$b\\\\\\\\c%%d \\\\\"e\\\\\" \\\\`f\\\\`/veskor\"");
    const auto [status, output] =
        run("desktop-file-validate '" + folder + "/applications/veskor-edit-description.desktop'");
    EXPECT_EQ(status, 0) << output;
    EXPECT_EQ(output, "");
}

}  // namespace

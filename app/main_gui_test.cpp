// The real editor started with arguments that Qt would read as its own options.
#include <gtest/gtest.h>

#include <string>

#include "tests/loop_volume.h"
#include "tests/temp_dir.h"

namespace {

// The words of a file name that two selected files "-platformpluginpath" and "plugins",
// or a name made up to look like options, hand the editor as its arguments. Taken as
// options, Qt would look for plugins in "plugins" and fail to find a platform
// "nowhere"; taken as the target's text, they name the file "NAME".
TEST(EditorCommandLineTest, QtTakesNoOptionFromTheTargetsText) {
    TempHome home;
    TempDir folder;
    folder.mkdir("plugins/platforms");
    const std::string name = "-platformpluginpath plugins -platform nowhere -style fusion";
    folder.write(name, "x");
    // The editor quits once its window has painted; Qt names each plugin folder it
    // searches.
    const std::string call = "cd '" + folder.path() +
                             "' && QT_QPA_PLATFORM=offscreen VESKOR_BENCH_QUIT_WHEN_SHOWN=1 "
                             "QT_DEBUG_PLUGINS=1 timeout 120 " VESKOR_BINARY_DIR "/veskor " +
                             name + " 2>&1";
    std::string said;
    EXPECT_EQ(runShell("(" + call + ")", &said), 0) << said;
    EXPECT_EQ(said.find("\"plugins\""), std::string::npos) << said;
    EXPECT_EQ(said.find("nowhere"), std::string::npos) << said;
}

}  // namespace

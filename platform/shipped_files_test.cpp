#include "platform/shipped_files.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/temp_dir.h"

// An installation's layout below a temporary prefix: the program in bin/, its files in
// share/veskor/. The copy beside the program (a build folder or a portable copy) wins.
TEST(ShippedFilesTest, TakesTheCopyBesideTheProgramFirstThenTheInstalledOne) {
    TempDir dir;
    const std::string appPath = dir.mkdir("prefix/bin") + "/";
    auto help = [&] { return shippedFile(appPath, "../share/veskor", "help.html"); };
    // Neither: the place beside the program, which is what a message should name.
    EXPECT_EQ(help(), appPath + "help.html");

    // Installed only: the path comes out without "..", also beside a folder of its name.
    dir.write("prefix/share/veskor/help.html", "x");
    const std::string installedHelp = dir.path() + "prefix/share/veskor/help.html";
    EXPECT_EQ(help(), installedHelp);
    dir.mkdir("prefix/bin/help.html");
    EXPECT_EQ(help(), installedHelp);

    std::filesystem::remove(appPath + "help.html");
    dir.write("prefix/bin/help.html", "x");
    EXPECT_EQ(help(), appPath + "help.html");
}

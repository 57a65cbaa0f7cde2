#include "platform/shipped_files.h"

#include <gtest/gtest.h>

#include "tests/temp_dir.h"

namespace {

// An installation's layout below a temporary prefix: the program in bin/, its files
// in share/veskor/.
class ShippedFilesTest : public ::testing::Test {
protected:
    std::string bin() const { return dir_.mkdir("prefix/bin") + "/"; }
    std::string installed(std::string_view name) const {
        return dir_.write("prefix/share/veskor/" + std::string(name), "x");
    }
    std::string beside(std::string_view name) const {
        return dir_.write("prefix/bin/" + std::string(name), "x");
    }

    TempDir dir_;
};

TEST_F(ShippedFilesTest, TakesTheCopyBesideTheProgramFirstThenTheInstalledOne) {
    const std::string appPath = bin();
    // Neither: the place beside the program, which is what a message should name.
    EXPECT_EQ(shippedFile(appPath, "../share/veskor", "help.html"), appPath + "help.html");

    // Installed only: the path comes out without "..".
    const std::string installedHelp = installed("help.html");
    EXPECT_EQ(shippedFile(appPath, "../share/veskor", "help.html"), installedHelp);
    EXPECT_EQ(installedHelp, dir_.path() + "prefix/share/veskor/help.html");

    // A copy beside the program wins: a build folder or a portable copy.
    beside("help.html");
    EXPECT_EQ(shippedFile(appPath, "../share/veskor", "help.html"), appPath + "help.html");
}

TEST_F(ShippedFilesTest, AFolderOfTheFilesNameIsNotTheFile) {
    const std::string appPath = bin();
    dir_.mkdir("prefix/bin/help.html");
    const std::string installedHelp = installed("help.html");
    EXPECT_EQ(shippedFile(appPath, "../share/veskor", "help.html"), installedHelp);
}

}  // namespace

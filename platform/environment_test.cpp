#include "platform/environment.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/temp_dir.h"

TEST(EnvironmentTest, FindsTheUsersDataFolderAndTheProgramFolder) {
    TempHome home;
    setenv("HOME", "/home/u/", 1);
    setenv("XDG_DATA_HOME", "/data/xdg/", 1);
    EXPECT_EQ(appDataFolder(), "/data/xdg");
    setenv("XDG_DATA_HOME", "data", 1);  // a relative path is ignored
    EXPECT_EQ(appDataFolder(), "/home/u/.local/share");
    const std::string program = programFolder();
    EXPECT_TRUE(program.size() > 1 && program.front() == '/' && program.back() == '/') << program;
    EXPECT_EQ(currentFolder().back(), '/');
}

#include "platform/environment.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/temp_dir.h"

TEST(EnvironmentTest, FindsTheUsersDataFolder) {
    TempHome home;
    struct Case {
        const char* name;
        const char* xdg;  // nullptr: unset
        const char* home;
        std::string expected;
    } const cases[] = {
        {"absolute XDG_DATA_HOME wins", "/data/xdg/", "/home/u", "/data/xdg"},
        {"relative XDG_DATA_HOME is ignored", "data", "/home/u", "/home/u/.local/share"},
        {"empty XDG_DATA_HOME is ignored", "", "/home/u/", "/home/u/.local/share"},
        {"unset XDG_DATA_HOME", nullptr, "/home/u", "/home/u/.local/share"},
        {"no HOME either", nullptr, "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        if (c.xdg)
            setenv("XDG_DATA_HOME", c.xdg, 1);
        else
            unsetenv("XDG_DATA_HOME");
        setenv("HOME", c.home, 1);
        EXPECT_EQ(appDataFolder(), c.expected);
    }
}

TEST(EnvironmentTest, NamesTheProgramAndCurrentFoldersWithATrailingSlash) {
    const std::string program = programFolder();
    ASSERT_FALSE(program.empty());
    EXPECT_EQ(program.back(), '/');
    EXPECT_EQ(program.front(), '/');
    EXPECT_EQ(currentFolder().back(), '/');
    EXPECT_EQ(IsHost64Bit(), sizeof(void*) == 8 ? 1 : 0);
}

#include "platform/environment.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/temp_dir.h"

TEST(EnvironmentTest, FindsTheUsersDataFolder) {
    TempHome home;
    struct Case {
        const char* xdg;  // nullptr: unset
        const char* home;
        std::string expected;
    } const cases[] = {
        {"/data/xdg/", "/home/u", "/data/xdg"},
        {"data", "/home/u", "/home/u/.local/share"},  // a relative path is ignored
        {"", "/home/u/", "/home/u/.local/share"},
        {nullptr, "/home/u", "/home/u/.local/share"},
        {nullptr, "", ""},
    };
    for (const auto& [xdg, homeValue, expected] : cases) {
        SCOPED_TRACE(expected);
        if (xdg)
            setenv("XDG_DATA_HOME", xdg, 1);
        else
            unsetenv("XDG_DATA_HOME");
        setenv("HOME", homeValue, 1);
        EXPECT_EQ(appDataFolder(), expected);
    }
    ASSERT_FALSE(programFolder().empty());
    EXPECT_EQ(programFolder().front(), '/');
    EXPECT_EQ(programFolder().back(), '/');
    EXPECT_EQ(currentFolder().back(), '/');
}

#include "picker/picker_model.h"

#include <gtest/gtest.h>

namespace {

struct Row {
    const char* name;
    std::string input, expected;
};

TEST(PickerModelTest, VersionLineLeavesOutARevisionOfZero) {
    EXPECT_EQ(versionLine(10, 3, 12), "Veskor version 10.3.12");
    EXPECT_EQ(versionLine(2, 3, 0), "Veskor version 2.3");
}

TEST(PickerModelTest, PathsOfFoldersAndDrives) {
    const Row kFolders[] = {{"slashes", "//srv///docs/", "/srv/docs"},
                            {"dots", "/srv/./docs/../pics", "/srv/pics"},
                            {"above the root", "/..", "/"},
                            {"relative", "sub/deeper", "/home/ann/sub/deeper"}};
    for (const auto& [name, path, expected] : kFolders) {
        SCOPED_TRACE(name);
        EXPECT_EQ(folderPathFrom("/home/ann", path), expected);
    }
    const Row kDrives[] = {{"below a nested mount", "/media/usb/inner/x", "/media/usb/inner"},
                           {"a name that only starts like a mount", "/media/usb2/x", "/"}};
    for (const auto& [name, folder, expected] : kDrives) {
        SCOPED_TRACE(name);
        EXPECT_EQ(driveOf(folder, {"/", "/media/usb", "/media/usb/inner", "/boot"}), expected);
    }
    EXPECT_EQ(choiceTarget("/", "Plan.txt"), "/Plan.txt");
}

TEST(PickerModelTest, PatternsMatchWithWildcardsAndWithoutCase) {
    const struct {
        const char* name;
        std::string pattern, file;
        bool expected;
    } kCases[] = {
        {"all files, no extension", "*.*", "Makefile", true},
        {"extension only at the end", "*.txt", "Plan.txt.bak", false},
        {"one non-ASCII character", "?.doc", "\xC3\xA9.doc", true},
        {"star backtracks", "a*b*c", "axxbyybzc", true},
        {"alternatives", "*.txt;*.doc", "Plan.doc", true},
    };
    for (const auto& [name, pattern, file, expected] : kCases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(matchesPattern(file, pattern), expected);
    }
}

}  // namespace

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

TEST(PickerModelTest, TheDriveOfAFolderIsTheDeepestMountHoldingIt) {
    const Row kCases[] = {
        {"the mount itself", "/media/usb", "/media/usb"},
        {"below a nested mount", "/media/usb/inner/x", "/media/usb/inner"},
        {"a name that only starts like a mount", "/media/usb2/x", "/"},
    };
    for (const auto& [name, folder, expected] : kCases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(driveOf(folder, {"/", "/media/usb", "/media/usb/inner", "/boot"}), expected);
    }
}

TEST(PickerModelTest, FolderPathsAreAbsoluteAndPlainAndChoicesJoinWithOneSlash) {
    const Row kCases[] = {
        {"trailing slash", "/srv/docs/", "/srv/docs"},
        {"repeated slashes", "//srv///docs", "/srv/docs"},
        {"dots", "/srv/./docs/../pics", "/srv/pics"},
        {"above the root", "/..", "/"},
        {"relative", "sub/deeper", "/home/ann/sub/deeper"},
        {"empty", "", ""},
    };
    for (const auto& [name, path, expected] : kCases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(folderPathFrom("/home/ann", path), expected);
    }
    EXPECT_EQ(choiceTarget("/srv/docs", "Plan.txt"), "/srv/docs/Plan.txt");
    EXPECT_EQ(choiceTarget("/", "Plan.txt"), "/Plan.txt");
    EXPECT_EQ(choiceTarget("/srv/docs", ""), "/srv/docs");
}

TEST(PickerModelTest, PatternsMatchWithWildcardsAndWithoutCase) {
    const struct {
        const char* name;
        std::string pattern, file;
        bool expected;
    } kCases[] = {
        {"all files, no extension", "*.*", "Makefile", true},
        {"extension in capitals", "*.txt", "PLAN.TXT", true},
        {"extension only at the end", "*.txt", "Plan.txt.bak", false},
        {"one non-ASCII character", "?.doc", "\xC3\xA9.doc", true},
        {"star backtracks", "a*b*c", "axxbyybzc", true},
        {"star matches nothing", "Plan*.txt", "Plan.txt", true},
        {"alternatives", "*.txt;*.doc", "Plan.doc", true},
        {"name.* without extension", "Plan.*", "Plan", true},
        {"empty pattern", "", "Plan.txt", false},
    };
    for (const auto& [name, pattern, file, expected] : kCases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(matchesPattern(file, pattern), expected);
    }
}

}  // namespace

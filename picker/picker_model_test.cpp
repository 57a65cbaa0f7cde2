#include "picker/picker_model.h"

#include <gtest/gtest.h>

namespace {

TEST(PickerModelTest, VersionLineLeavesOutARevisionOfZero) {
    EXPECT_EQ(versionLine(2, 3, 2), "Veskor version 2.3.2");
    EXPECT_EQ(versionLine(2, 3, 0), "Veskor version 2.3");
    EXPECT_EQ(versionLine(10, 0, 12), "Veskor version 10.0.12");
}

TEST(PickerModelTest, TheDriveOfAFolderIsTheDeepestMountHoldingIt) {
    std::vector<std::string> mounts{"/", "/media/usb", "/media/usb/inner", "/boot"};
    struct Case {
        const char* name;
        std::string folder;
        std::string expected;
    } cases[] = {
        {"the mount itself", "/media/usb", "/media/usb"},
        {"below a mount", "/media/usb/docs/x", "/media/usb"},
        {"below a nested mount", "/media/usb/inner/x", "/media/usb/inner"},
        {"a name that only starts like a mount", "/media/usb2/x", "/"},
        {"on no mount but the root", "/home/ann", "/"},
    };
    for (const auto& [name, folder, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(driveOf(folder, mounts), expected);
    }
}

TEST(PickerModelTest, FolderPathsAreAbsoluteAndPlain) {
    struct Case {
        const char* name;
        std::string path;
        std::string expected;
    } cases[] = {
        {"absolute", "/srv/docs", "/srv/docs"},
        {"trailing slash", "/srv/docs/", "/srv/docs"},
        {"repeated slashes", "//srv///docs", "/srv/docs"},
        {"dots", "/srv/./docs/../pics", "/srv/pics"},
        {"above the root", "/..", "/"},
        {"relative", "sub/deeper", "/home/ann/sub/deeper"},
        {"empty", "", ""},
    };
    for (const auto& [name, path, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(folderPathFrom("/home/ann", path), expected);
    }
}

TEST(PickerModelTest, AChoiceJoinsFolderAndNameWithOneSlash) {
    EXPECT_EQ(choiceTarget("/srv/docs", "Plan.txt"), "/srv/docs/Plan.txt");
    EXPECT_EQ(choiceTarget("/", "Plan.txt"), "/Plan.txt");
    EXPECT_EQ(choiceTarget("/srv/docs", ""), "/srv/docs");
}

TEST(PickerModelTest, PatternsMatchWithWildcardsAndWithoutCase) {
    struct Case {
        const char* name;
        std::string pattern, file;
        bool expected;
    } cases[] = {
        {"all files, dotted", "*.*", "Plan.txt", true},
        {"all files, no extension", "*.*", "Makefile", true},
        {"extension", "*.txt", "Plan.txt", true},
        {"extension in capitals", "*.txt", "PLAN.TXT", true},
        {"other extension", "*.txt", "Plan.doc", false},
        {"extension only at the end", "*.txt", "Plan.txt.bak", false},
        {"one character", "?.doc", "a.doc", true},
        {"one non-ASCII character", "?.doc", "\xC3\xA9.doc", true},
        {"star backtracks", "a*b*c", "axxbyybzc", true},
        {"star matches nothing", "Plan*.txt", "Plan.txt", true},
        {"alternatives", "*.txt;*.doc", "Plan.doc", true},
        {"name.* without extension", "Plan.*", "Plan", true},
        {"exact name", "Plan.txt", "plan.TXT", true},
        {"empty pattern", "", "Plan.txt", false},
    };
    for (const auto& [name, pattern, file, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(matchesPattern(file, pattern), expected);
    }
}

}  // namespace

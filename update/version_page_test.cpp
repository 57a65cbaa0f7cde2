#include "update/version_page.h"

#include <gtest/gtest.h>

namespace {

TEST(VersionPageTest, PadsEachNumberToThreeDigitsButNeverCutsOne) {
    EXPECT_EQ(localVersionText(2, 3, 2), "002.003.002");
    EXPECT_EQ(localVersionText(10, 0, 1234), "010.000.1234");
}

TEST(VersionPageTest, ComparesTheTextBeforeTheFirstBreakOrBlank) {
    struct Case {
        const char* name;
        std::string_view page;
        bool newer;
    } const kCases[] = {
        {"a blank before the CR", "002.003.002 x\r002.009.000", false},
        {"a LF before the CR", "002.003.002\n\r", false},
        {"longer than ours", "002.003.0020", true},
        {"a prefix of ours", "002.003.00", false},
        {"a NUL byte is a character", std::string_view("002.003.002\0", 12), true},
        {"a Windows-1252 byte above the digits", "\xE9", true},
        {"a line break first", "\r\n009.000.000", false},
    };
    for (const auto& [name, page, newer] : kCases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(announcesNewerVersion(page, "002.003.002"), newer);
    }
}

}  // namespace

#include "update/version_page.h"

#include <gtest/gtest.h>

namespace {

TEST(VersionPageTest, PadsEachNumberToThreeDigitsButNeverCutsOne) {
    EXPECT_EQ(localVersionText(10, 0, 1234), "010.000.1234");
}

TEST(VersionPageTest, ComparesTheTextBeforeTheFirstBreakOrBlank) {
    const std::pair<std::string_view, bool> kCases[] = {
        {"002.003.002 x\r002.009.000", false},          // a blank before the CR
        {"002.003.002\n\r", false},                     // a LF before the CR
        {"002.003.0020", true},                         // longer than ours
        {"002.003.00", false},                          // a prefix of ours
        {std::string_view("002.003.002\0", 12), true},  // a NUL byte is a character
        {"\xE9", true},                                 // a Windows-1252 byte
        {"", false},
    };
    for (const auto& [page, newer] : kCases) {
        SCOPED_TRACE(page);
        EXPECT_EQ(announcesNewerVersion(page, "002.003.002"), newer);
    }
}

}  // namespace

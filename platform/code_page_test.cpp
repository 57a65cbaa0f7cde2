#include "platform/code_page.h"

#include <gtest/gtest.h>

TEST(CodePageTest, DecodesFileBytesAsUtf8WithWindows1252Fallback) {
    const std::pair<std::string, std::string> cases[] = {
        {"caf\xC3\xA9", "caf\xC3\xA9"},  // valid UTF-8 kept
        {"\x80 \x93x\x94", "\xE2\x82\xAC \xE2\x80\x9Cx\xE2\x80\x9D"},
        {"\x81", "\xC2\x81"},                  // undefined in 1252
        {"\xC3", "\xC3\x83"},                  // truncated sequence
        {"\xC0\xAF", "\xC3\x80\xC2\xAF"},      // overlong encoding
        {"\xC3\xA9\xE9", "\xC3\xA9\xC3\xA9"},  // only the invalid byte falls back
    };
    for (const auto& [bytes, expected] : cases) {
        SCOPED_TRACE(expected);
        EXPECT_EQ(decodeFileText(bytes), expected);
    }
}

TEST(CodePageTest, CountsCutsAndUpperCasesCharactersNotBytes) {
    const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z";  // a é € 😀 z
    EXPECT_EQ(characterCount(text), 5u);
    EXPECT_EQ(characterCount("\xFF\xFE"), 2u);
    EXPECT_EQ(firstCharacters(text, 2), "a\xC3\xA9");
    EXPECT_EQ(charactersFrom(text, 3), "\xF0\x9F\x98\x80z");
    EXPECT_EQ(firstCharacters(text, 99), text);
    EXPECT_EQ(charactersFrom(text, 99), "");
    EXPECT_EQ(upperCase("/home/\xC3\xA9t\xC3\xA9/plan.doc"), "/HOME/\xC3\x89T\xC3\x89/PLAN.DOC");
    EXPECT_EQ(upperCase("stra\xC3\x9F-\xFF-a"), "STRA\xC3\x9F-\xFF-A");  // sharp s stays
}

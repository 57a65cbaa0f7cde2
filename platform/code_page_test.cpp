#include "platform/code_page.h"

#include <gtest/gtest.h>

TEST(CodePageTest, DecodesFileBytesAsUtf8WithWindows1252Fallback) {
    const std::pair<std::string, std::string> cases[] = {
        {"caf\xC3\xA9", "caf\xC3\xA9"},  // valid UTF-8 kept
        {"caf\xE9", "caf\xC3\xA9"},
        {"\x80 \x93x\x94", "\xE2\x82\xAC \xE2\x80\x9Cx\xE2\x80\x9D"},
        {"\x81", "\xC2\x81"},                              // undefined in 1252
        {"\xC3", "\xC3\x83"},                              // truncated sequence
        {"\xC0\xAF", "\xC3\x80\xC2\xAF"},                  // overlong encoding
        {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xE2\x82\xAC"},  // surrogate
        {"\xC3\xA9\xE9", "\xC3\xA9\xC3\xA9"},              // mixed
    };
    for (const auto& [bytes, expected] : cases) {
        SCOPED_TRACE(expected);
        EXPECT_EQ(decodeFileText(bytes), expected);
    }
}

TEST(CodePageTest, CountsCutsAndUpperCasesCharactersNotBytes) {
    const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z";  // a é € 😀 z
    EXPECT_EQ(characterCount(text), 5u);
    EXPECT_EQ(firstCharacters(text, 2), "a\xC3\xA9");
    EXPECT_EQ(charactersFrom(text, 3), "\xF0\x9F\x98\x80z");
    EXPECT_EQ(firstCharacters(text, 99), text);
    EXPECT_EQ(charactersFrom(text, 99), "");
    EXPECT_EQ(characterCount("\xFF\xFE"), 2u);
    EXPECT_EQ(upperCase("/home/\xC3\xA9t\xC3\xA9/plan.doc"), "/HOME/\xC3\x89T\xC3\x89/PLAN.DOC");
    EXPECT_EQ(upperCase("stra\xC3\x9F-a"), "STRA\xC3\x9F-A");  // sharp s has no simple upper case
    EXPECT_EQ(upperCase("\xFF-a"), "\xFF-A");
}

TEST(CodePageTest, ConvertsBetweenUtf8AndWindowsCodePages) {
    struct Case {
        unsigned page;
        std::string utf8, bytes;
    } const cases[] = {
        {1252, "caf\xC3\xA9 \xE2\x82\xAC", "caf\xE9 \x80"},
        {65001, "\xE2\x82\xAC", "\xE2\x82\xAC"},
        {1200, "a\xC3\xA9", std::string("a\0\xE9\0", 4)},
        {932, "\xE6\x97\xA5", "\x93\xFA"},
        {10000, "\xC3\xA9", "\x8E"},
    };
    for (const auto& [page, utf8, bytes] : cases) {
        SCOPED_TRACE(page);
        EXPECT_EQ(encodeCodePage(utf8, page), bytes);
        EXPECT_EQ(decodeCodePage(bytes, page), utf8);
    }
    EXPECT_EQ(encodeCodePage("\xE6\x97\xA5", 1252), std::nullopt);
    EXPECT_EQ(encodeCodePage("abc", 54321), std::nullopt);
    EXPECT_EQ(decodeCodePage("\xFF\xFF", 932), std::nullopt);
    EXPECT_EQ(decodeCodePage("\x81\x8D", 1252), "\xC2\x81\xC2\x8D");
}

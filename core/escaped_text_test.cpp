#include "core/escaped_text.h"

#include <gtest/gtest.h>

namespace {

TEST(EscapedTextTest, EscapesEveryControlAndStrayByteAndKeepsTheRest) {
    // name, text, kept, shown
    const std::tuple<const char*, std::string, std::string, std::string> rows[] = {
        {"plain text with a backslash", "caf\xC3\xA9 C:\\Docs \xE2\x82\xAC \xF0\x9F\x98\x80", "",
         "caf\xC3\xA9 C:\\Docs \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {"C0 controls and DEL", std::string("a\0\t\n\r\x1b\x7F", 7), "",
         "a\\x00\\t\\n\\r\\x1b\\x7f"},
        {"C1 controls, the first character after them kept", "\xC2\x80\xC2\x9F\xC2\xA0", "",
         "\\u0080\\u009f\xC2\xA0"},
        {"stray, overlong and cut-off bytes", "\x9B[2J \xE9t\xE9 \xC0\xAF \xE2\x82", "",
         "\\x9b[2J \\xe9t\\xe9 \\xc0\\xaf \\xe2\\x82"},
        {"line breaks and tabs kept", "one\n\ttwo\r\x1b", "\n\t", "one\n\ttwo\\r\\x1b"},
    };
    for (const auto& [name, text, kept, shown] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(escapedControls(text, kept), shown);
    }
}

}  // namespace

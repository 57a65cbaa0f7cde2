#include "platform/line_reader.h"

#include <gtest/gtest.h>

#include "tests/temp_dir.h"

namespace {

using Lines = std::vector<std::string>;

Lines readAll(const std::string& path) {
    LineReader reader(path);
    Lines lines;
    for (std::string line; reader.next(line);)
        lines.push_back(line);
    return lines;
}

}  // namespace

TEST(LineReaderTest, SplitsLinesAtEveryKindOfLineEnd) {
    struct Case {
        const char* name;
        std::string bytes;
        Lines expected;
    } const cases[] = {
        {"crlf", "a\r\nb\r\n", {"a", "b"}},
        {"lf", "a\nb\n", {"a", "b"}},
        {"lone cr", "a\rb\r", {"a", "b"}},
        {"mixed, no final line end", "a\r\nb\nc\rd", {"a", "b", "c", "d"}},
        {"empty lines kept", "\r\n\r\nx\r\n", {"", "", "x"}},
        {"cr cr lf is an empty line", "a\r\r\nb", {"a", "", "b"}},
        {"empty file", "", {}},
        {"nul bytes", std::string("a\0b\r\n", 5), {std::string("a\0b", 3)}},
    };
    TempDir dir;
    for (const auto& [name, bytes, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(readAll(dir.write("f.txt", bytes)), expected);
        Lines split;
        for (auto line : splitLines(bytes))
            split.emplace_back(line);
        EXPECT_EQ(split, expected);
    }
}

TEST(LineReaderTest, KeepsLinesWholeAcrossItsReadBuffer) {
    TempDir dir;
    // Reads of 4, 8, 16, 32 and then 64 KiB end at these offsets.
    for (std::size_t at : {4095u, 4096u, 4097u, 12287u, 61439u, 126975u}) {
        SCOPED_TRACE(at);
        std::string first(at, 'x');
        EXPECT_EQ(readAll(dir.write("f.txt", first + "\r\nnext\r\n")), (Lines{first, "next"}));
        EXPECT_EQ(readAll(dir.write("f.txt", first + "\r")), (Lines{first}));
    }
}

#include "platform/line_reader.h"

#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <string_view>
#include <tuple>

#include "tests/child_process.h"
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

// A line past the limit comes back cut; its rest is skipped, or handed on whole by
// copyRestOfLine(), whatever line end follows and wherever the reads split it.
TEST(LineReaderTest, CutsOverlongLinesAndHandsOnTheirRest) {
    const std::size_t cap = kMaxLineBytes;
    // name, length of the long line, its line end
    const std::tuple<const char*, std::size_t, std::string> rows[] = {
        {"at the limit", cap, "\r\n"},
        {"one past, CR LF", cap + 1, "\r\n"},
        {"three times, LF", 3 * cap + 7, "\n"},
        {"lone CR", 2 * cap, "\r"},
        {"CR LF split by a read", cap + (1 << 16) - 1, "\r\n"},
        {"no line end, last line", 2 * cap + 1, ""},
    };
    TempDir dir;
    for (const auto& [name, length, end] : rows) {
        SCOPED_TRACE(name);
        std::string longLine(length, 'x');
        longLine[0] = 'a';
        longLine[length - 1] = 'z';
        const std::string path =
            dir.write("f.txt", "first\r\n" + longLine + end + (end.empty() ? "" : "next\r\n"));
        Lines skipped = readAll(path);
        ASSERT_EQ(skipped.size(), end.empty() ? 2u : 3u);
        EXPECT_EQ(skipped[1], longLine.substr(0, cap));

        LineReader reader(path);
        std::string line, copy;
        ASSERT_TRUE(reader.next(line) && reader.next(line));
        EXPECT_EQ(reader.wasCut(), length > cap);
        reader.copyRestOfLine([&](std::string_view rest) { copy += rest; });
        EXPECT_TRUE(line + copy == longLine);
        EXPECT_EQ(reader.next(line), !end.empty());
        EXPECT_EQ(line, end.empty() ? "" : "next");
    }
}

#if !defined(__SANITIZE_ADDRESS__)
// A sparse file of gigabytes without a line end (no disk blocks: anyone can make one in
// a shared folder) is read through in a child that may not map more than 256 MiB.
TEST(LineReaderTest, ReadsAHugeLineInBoundedMemory) {
    TempDir dir;
    const std::string path = dir.write("00_index.txt", "");
    ASSERT_EQ(::truncate(path.c_str(), off_t{2} << 30), 0);
    EXPECT_TRUE(inChild(
        [&] {
            const rlimit limit{256u << 20, 256u << 20};
            if (::setrlimit(RLIMIT_AS, &limit) != 0)
                return false;
            Lines lines = readAll(path);
            return lines.size() == 1 && lines[0].size() == kMaxLineBytes;
        },
        120));
}
#endif

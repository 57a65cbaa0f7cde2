#include "stores/summary_info_codec.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/gsf_reader.h"

namespace {

constexpr std::uint32_t kTitleId = 2, kSubjectId = 3, kCommentsId = 6, kCreatedId = 12;

using Property = std::pair<std::uint32_t, std::string>;  // id, value

// Other programs put the values right after the table; we leave eight zero bytes.
enum class Layout { Foreign, Ours };

std::string fromHex(std::string_view hex) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += hex[i] == ' ' ? 1 : 2)
        if (hex[i] != ' ')
            bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
    return bytes;
}

std::string le32(std::uint64_t v) {
    return {static_cast<char>(v), static_cast<char>(v >> 8), static_cast<char>(v >> 16),
            static_cast<char>(v >> 24)};
}

// A VT_LPSTR whose Size field is `size`, the bytes zero-padded to it.
std::string lpstr(std::string_view bytes, std::uint32_t size) {
    std::string value = le32(0x1E) + le32(size) + std::string(bytes);
    value.resize(8 + size, '\0');
    return value;
}
const std::string kEmptyLpstr = lpstr("", 4);
// "Wide" as VT_LPWSTR, a type that the update cannot keep.
const std::string kWide = fromHex("1F 00 00 00 05 00 00 00 57 00 69 00 64 00 65 00 00 00 00 00");
const Property kCreated{kCreatedId, le32(0x40) + le32(0x5678'9ABC) + le32(0x01D9'1234)};
const auto codePage = [](unsigned page) { return Property{1, le32(2) + le32(page)}; };
const auto comments = [](std::string value) { return Property{kCommentsId, std::move(value)}; };
const Property kLocale{0x80000000, le32(0x13) + le32(0x409)};

// A stream with the documented header and one section holding `properties`.
std::string propertySet(const std::vector<Property>& properties, Layout layout = Layout::Ours) {
    std::size_t gap = layout == Layout::Ours ? 8 : 0;
    std::string table, values;
    for (const auto& [id, value] : properties) {
        table += le32(id) + le32(8 + 8 * properties.size() + gap + values.size());
        values += value;
    }
    return createSummaryInfo("").substr(0, 48) + le32(8 + table.size() + gap + values.size()) +
           le32(properties.size()) + table + std::string(gap, '\0') + values;
}

// Every stream the codec writes must read back in an independent reader with the text
// saved; a set without Comments reads as none.
void expectLibgsfReads(const std::string& stream, const std::string& description) {
    EXPECT_EQ(commentsReadByLibgsf(stream),
              description.empty() ? std::nullopt : std::optional(description));
}

TEST(SummaryInfoCodecTest, FreshStreamsAreExactAndAnUpdateBuildsTheSame) {
    const std::string header =
        "FE FF 00 00 05 01 02 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
        "01 00 00 00 E0 85 9F F2 F9 4F 68 10 AB 91 08 00 2B 27 B3 D9 30 00 00 00";
    const std::string codePageAndLocale = "02 00 00 00 E4 04 00 00 13 00 00 00 09 04 00 00";
    const std::tuple<const char*, std::string, std::string> rows[] = {
        {"116 bytes", "abc",
         fromHex(header +
                 "44 00 00 00 03 00 00 00 01 00 00 00 28 00 00 00 00 00 00 80 30 00 00 00" +
                 "06 00 00 00 38 00 00 00 00 00 00 00 00 00 00 00" + codePageAndLocale +
                 "1E 00 00 00 04 00 00 00 61 62 63 00")},
        {"96 bytes: no Comments", "",
         fromHex(header +
                 "30 00 00 00 02 00 00 00 01 00 00 00 20 00 00 00 00 00 00 80 28 00 00 00" +
                 "00 00 00 00 00 00 00 00" + codePageAndLocale)},
        {"Windows-1252", "caf\xC3\xA9",
         propertySet({codePage(1252), kLocale, comments(lpstr("caf\xE9", 8))})},
        {"beyond Windows-1252", "\xCE\xA9 \xE2\x82\xAC",
         propertySet({codePage(65001), kLocale, comments(lpstr("\xCE\xA9 \xE2\x82\xAC", 8))})},
    };
    for (const auto& [name, description, stream] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(createSummaryInfo(description), stream);
        EXPECT_EQ(readSummaryInfoDesc(stream), description);
        EXPECT_EQ(updateSummaryInfo(createSummaryInfo("old"), description), stream);
        expectLibgsfReads(stream, description);
    }
}

// An update declares the code page its strings are really in: a set that declares
// none, 0, a page the C library cannot convert or one that is no VT_I2 has its strings
// read as Windows-1252 and says so from then on.
TEST(SummaryInfoCodecTest, UpdateKeepsOtherValuesAndPutsCommentsLast) {
    const Property plan{kTitleId, lpstr("Plan", 5)}, ansi{kTitleId, lpstr("caf\xE9", 5)},
        utf8{kTitleId, lpstr("caf\xC3\xA9", 8)}, omega = comments(lpstr("\xCE\xA9", 4));
    const Property utf16 =
        comments(fromHex("1E 00 00 00 0C 00 00 00 47 00 72 00 FC 00 DF 00 A9 03 00 00"));
    const Property sjis = comments(fromHex("1E 00 00 00 08 00 00 00 93 FA 96 7B 8C EA 00 00"));
    const Property cafe = comments(lpstr("caf\xE9", 8)), fresh = comments(lpstr("new", 4));
    const Property cp1252 = codePage(1252), asI4{1, le32(3) + le32(1252)};
    using Properties = std::vector<Property>;
    const std::tuple<const char*, Properties, std::string, Properties> rows[] = {
        {"another program's set: Comments first, a wide string",
         {comments(lpstr("old text", 9)), plan, kCreated, {kSubjectId, kWide}},
         "new",
         {cp1252, plan, kCreated, {kSubjectId, kEmptyLpstr}, fresh}},
        {"1252 -> 65001", {cp1252, ansi}, "\xCE\xA9", {codePage(65001), utf8, omega}},
        {"none -> 65001", {ansi, kCreated}, "\xCE\xA9", {codePage(65001), utf8, kCreated, omega}},
        {"0 -> 1252", {codePage(0), ansi}, "caf\xC3\xA9", {cp1252, ansi, cafe}},
        {"0 -> 65001", {ansi, codePage(0)}, "\xCE\xA9", {utf8, codePage(65001), omega}},
        {"unknown page -> 1252", {codePage(12345), ansi}, "caf\xC3\xA9", {cp1252, ansi, cafe}},
        {"UTF-16BE -> 1252", {codePage(1201)}, "new", {cp1252, fresh}},
        {"CodePage as VT_I4 -> 1252", {asI4, ansi}, "new", {cp1252, ansi, fresh}},
        {"1200 (UTF-16)", {codePage(1200)}, "Gr\xC3\xBC\xC3\x9F\xCE\xA9", {codePage(1200), utf16}},
        {"932", {codePage(932)}, "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E", {codePage(932), sjis}},
        {"a second CodePage that disagrees",
         {codePage(1253), kCreated, codePage(0)},
         "\xCE\xA9 \xE2\x82\xAC",
         {codePage(1253), kCreated, codePage(1253), comments(lpstr("\xD9 \x80", 4))}},
        {"a dictionary naming property 0x1000 \"Plan\"",
         {codePage(1252),
          {0, le32(1) + le32(0x1000) + le32(5) + fromHex("50 6C 61 6E 00 00 00 00")}},
         "new",
         {cp1252, {0, le32(0)}, fresh}},
    };
    for (const auto& [name, before, description, after] : rows) {
        SCOPED_TRACE(name);
        std::string updated = updateSummaryInfo(propertySet(before, Layout::Foreign), description);
        EXPECT_EQ(updated, propertySet(after));
        EXPECT_EQ(readSummaryInfoDesc(updated), description);
        expectLibgsfReads(updated, description);
    }
}

// The text ends at the first zero within Size; a value the reader cannot take reads as
// no text, and an update leaves an unrecognised stream as it was.
TEST(SummaryInfoCodecTest, MalformedStreamsAreReadAsFarAsTheyGo) {
    const std::string sound = createSummaryInfo("abc");
    auto patched = [&](std::size_t at, std::string_view hex) {
        return std::string(sound).replace(at, 4, fromHex(hex));
    };
    auto withComments = [](std::string_view hex) {
        return propertySet({comments(fromHex(hex))}, Layout::Foreign);
    };
    const std::string newComments = propertySet({codePage(1252), comments(lpstr("new", 4))});
    // stream, text read, stream after an update to "new" ("": the stream unchanged)
    const std::tuple<const char*, std::string, std::string, std::string> rows[] = {
        {"empty", "", "", ""},
        {"version 1", patched(0, "FE FF 01 00"), "", ""},
        {"two sections", patched(24, "02 00 00 00"), "", ""},
        {"section not at 48", patched(44, "34 00 00 00"), "", ""},
        {"no properties", patched(52, "00 00 00 00"), "", ""},
        {"zero in the middle", withComments("1E 00 00 00 08 00 00 00 61 62 00 64 65 66 00 00"),
         "ab", newComments},
        {"no zero within Size", withComments("1E 00 00 00 03 00 00 00 61 62 63 64 00 00 00 00"),
         "abc", newComments},
        {"wide string", propertySet({comments(kWide)}, Layout::Foreign), "", newComments},
        {"Comments at offset 2^32-1", patched(76, "FF FF FF FF"), "", createSummaryInfo("new")},
        {"Locale at offset 2^31", patched(68, "00 00 00 80"), "abc",
         propertySet({codePage(1252), {0x80000000, kEmptyLpstr}, comments(lpstr("new", 4))})},
    };
    for (const auto& [name, stream, text, updated] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(readSummaryInfoDesc(stream), text);
        EXPECT_EQ(updateSummaryInfo(stream, "new"), updated.empty() ? stream : updated);
        if (!updated.empty())
            expectLibgsfReads(updated, "new");
    }
}

TEST(SummaryInfoCodecTest, SharedValuesDoNotMultiplyTheStream) {
    std::string big = lpstr(std::string(4000, 'x'), 4001);
    std::vector<Property> properties(500, Property{kTitleId, big});
    std::string stream = propertySet(properties, Layout::Foreign);
    for (std::size_t i = 1; i < properties.size(); ++i)  // every entry points at the first value
        stream.replace(56 + 8 * i + 4, 4, stream.substr(56 + 4, 4));
    stream.resize(56 + 8 * properties.size() + big.size());
    EXPECT_LT(updateSummaryInfo(stream, "new").size(), 3 * stream.size());
}

}  // namespace

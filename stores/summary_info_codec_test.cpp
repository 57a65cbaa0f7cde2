#include "stores/summary_info_codec.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/temp_dir.h"

namespace {

constexpr std::uint32_t kCodePageId = 1;
constexpr std::uint32_t kTitleId = 2;
constexpr std::uint32_t kSubjectId = 3;
constexpr std::uint32_t kCommentsId = 6;
constexpr std::uint32_t kCreatedId = 12;
constexpr const char* kEmptyLpstrHex = "1E 00 00 00 04 00 00 00 00 00 00 00";

struct Property {
    std::uint32_t id;
    std::string value;
};

// Other programs put the values right after the table; we leave eight zero bytes.
enum class Layout { Foreign, Ours };

std::string fromHex(std::string_view hex) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size();) {
        if (hex[i] == ' ') {
            ++i;
            continue;
        }
        bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
        i += 2;
    }
    return bytes;
}

std::string toHex(std::string_view bytes) {
    static const char* digits = "0123456789ABCDEF";
    std::string hex;
    for (char c : bytes) {
        auto b = static_cast<unsigned char>(c);
        if (!hex.empty())
            hex += ' ';
        hex += digits[b >> 4];
        hex += digits[b & 15];
    }
    return hex;
}

std::string le32(std::uint64_t v) {
    std::string out;
    for (int i = 0; i < 4; ++i)
        out += static_cast<char>((v >> (8 * i)) & 0xFF);
    return out;
}

std::uint32_t u32At(std::string_view s, std::size_t at) {
    std::uint32_t v = 0;
    for (std::size_t i = 4; i-- > 0;)
        v = (v << 8) | static_cast<unsigned char>(s.at(at + i));
    return v;
}

std::string i2(unsigned v) {
    return le32(2) + le32(v);
}
std::string filetime(std::uint64_t t) {
    return le32(0x40) + le32(t) + le32(t >> 32);
}
std::string lpstr(std::string_view bytes, std::uint32_t size) {
    std::string value = le32(0x1E) + le32(size) + std::string(bytes);
    value.resize(8 + size, '\0');
    return value;
}
std::string lpwstr(std::u16string_view text) {
    std::string value = le32(0x1F) + le32(text.size() + 1);
    for (char16_t c : text)
        value += std::string{static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
    value.append(text.size() % 2 ? 2 : 4, '\0');
    return value;
}

// A stream with the documented header and one section holding `properties`.
std::string propertySet(const std::vector<Property>& properties, Layout layout) {
    std::size_t gap = layout == Layout::Ours ? 8 : 0;
    std::string table, values;
    for (const Property& p : properties) {
        table += le32(p.id) + le32(8 + 8 * properties.size() + gap + values.size());
        values += p.value;
    }
    return createSummaryInfo("").substr(0, 48) + le32(8 + table.size() + gap + values.size()) +
           le32(properties.size()) + table + std::string(gap, '\0') + values;
}

std::vector<std::pair<std::uint32_t, std::uint32_t>> tableOf(std::string_view stream) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> table;
    for (std::uint32_t i = 0; i < u32At(stream, 52); ++i)
        table.emplace_back(u32At(stream, 56 + 8 * i), u32At(stream, 60 + 8 * i));
    return table;
}

// The value of the first property `id`, to the next value or the end of the stream.
std::string valueAt(std::string_view stream, std::uint32_t id) {
    auto table = tableOf(stream);
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (table[i].first != id)
            continue;
        std::size_t end = i + 1 < table.size() ? 48 + table[i + 1].second : stream.size();
        return std::string(stream.substr(48 + table[i].second, end - 48 - table[i].second));
    }
    return "(absent)";
}

std::string commentsOf(std::string_view stream) {
    return readSummaryInfoDesc(stream);
}

// The sample streams in stores/testdata: X.bin and, beside it, X.updated.bin, what an
// update of X.bin with the text "text" must give.
std::vector<std::pair<std::string, std::string>> sampleStreams() {
    namespace fs = std::filesystem;
    std::vector<std::pair<std::string, std::string>> samples;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(VESKOR_SOURCE_DIR "/stores/testdata", ec)) {
        std::string name = entry.path().filename().string();
        if (name.ends_with(".bin") && !name.ends_with(".updated.bin"))
            samples.emplace_back(name, readFileBytes(entry.path().string()));
    }
    return samples;
}

TEST(SummaryInfoCodecTest, FreshStreamsAreTheDocumentedBytes) {
    struct Row {
        const char* name;
        std::string description;
        std::string expectedHex;
    } rows[] = {
        {"three characters", "abc",
         "FE FF 00 00 05 01 02 00  00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00"
         "01 00 00 00 E0 85 9F F2 F9 4F 68 10 AB 91 08 00 2B 27 B3 D9 30 00 00 00"
         "44 00 00 00 03 00 00 00"
         "01 00 00 00 28 00 00 00 00 00 00 80 30 00 00 00 06 00 00 00 38 00 00 00"
         "00 00 00 00 00 00 00 00"
         "02 00 00 00 E4 04 00 00 13 00 00 00 09 04 00 00"
         "1E 00 00 00 04 00 00 00 61 62 63 00"},
        {"empty", "",
         "FE FF 00 00 05 01 02 00  00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00"
         "01 00 00 00 E0 85 9F F2 F9 4F 68 10 AB 91 08 00 2B 27 B3 D9 30 00 00 00"
         "30 00 00 00 02 00 00 00 01 00 00 00 20 00 00 00 00 00 00 80 28 00 00 00"
         "00 00 00 00 00 00 00 00"
         "02 00 00 00 E4 04 00 00 13 00 00 00 09 04 00 00"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string stream = createSummaryInfo(row.description);
        EXPECT_EQ(toHex(stream), toHex(fromHex(row.expectedHex)));
        EXPECT_EQ(commentsOf(stream), row.description);
    }
    EXPECT_EQ(createSummaryInfo("abc").size(), 116u);
    EXPECT_EQ(createSummaryInfo("").size(), 96u);
}

TEST(SummaryInfoCodecTest, CommentsSizeCountsTerminatorAndPadding) {
    struct Row {
        const char* name;
        std::string description;
        std::string expectedValueHex;
    } rows[] = {
        {"one character", "a", "1E 00 00 00 04 00 00 00 61 00 00 00"},
        {"four characters", "abcd", "1E 00 00 00 08 00 00 00 61 62 63 64 00 00 00 00"},
        {"seven characters", "abcdefg", "1E 00 00 00 08 00 00 00 61 62 63 64 65 66 67 00"},
        {"line break", "a\r\nb", "1E 00 00 00 08 00 00 00 61 0D 0A 62 00 00 00 00"},
        {"Windows-1252", "caf\xC3\xA9", "1E 00 00 00 08 00 00 00 63 61 66 E9 00 00 00 00"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string stream = createSummaryInfo(row.description);
        EXPECT_EQ(toHex(valueAt(stream, kCommentsId)), toHex(fromHex(row.expectedValueHex)));
        EXPECT_EQ(commentsOf(stream), row.description);
        EXPECT_EQ(commentsOf(updateSummaryInfo(createSummaryInfo("old"), row.description)),
                  row.description);
    }
}

TEST(SummaryInfoCodecTest, LongDescriptionSurvivesCreateAndUpdate) {
    std::string description;
    for (int i = 0; i < 10000; ++i)
        description += "x\r\n";
    EXPECT_EQ(commentsOf(createSummaryInfo(description)), description);
    EXPECT_EQ(commentsOf(updateSummaryInfo(createSummaryInfo("abc"), description)), description);
}

TEST(SummaryInfoCodecTest, FreshStreamDeclaresUtf8ForTextBeyondWindows1252) {
    std::string greek = "\xCE\xA9 = ohm, \xE2\x82\xAC = euro";
    std::string stream = createSummaryInfo(greek);
    EXPECT_EQ(toHex(valueAt(stream, kCodePageId)), "02 00 00 00 E9 FD 00 00");
    EXPECT_EQ(commentsOf(stream), greek);
}

TEST(SummaryInfoCodecTest, EmptyDescriptionRemovesCommentsAndKeepsTheRest) {
    std::string stream = updateSummaryInfo(createSummaryInfo("abc"), "");
    EXPECT_EQ(toHex(stream), toHex(createSummaryInfo("")));
    EXPECT_EQ(commentsOf(stream), "");
}

// A set as other programs write it: values right after the table, Comments first, an
// odd-sized string, a time and a wide string that the update cannot keep.
TEST(SummaryInfoCodecTest, UpdateKeepsOtherValuesAndPutsCommentsLast) {
    std::string title = lpstr("Plan", 5);
    std::string created = filetime(0x01D9'1234'5678'9ABCull);
    std::string stream = propertySet({{kCommentsId, lpstr("old text", 9)},
                                      {kTitleId, title},
                                      {kCreatedId, created},
                                      {kSubjectId, lpwstr(u"Wide")}},
                                     Layout::Foreign);

    std::string updated = updateSummaryInfo(stream, "new");

    EXPECT_EQ(toHex(updated),
              toHex(propertySet({{kTitleId, title},
                                 {kCreatedId, created},
                                 {kSubjectId, fromHex(kEmptyLpstrHex)},
                                 {kCommentsId, fromHex("1E 00 00 00 04 00 00 00 6E 65 77 00")}},
                                Layout::Ours)));
    EXPECT_EQ(commentsOf(updated), "new");
    EXPECT_EQ(updated.substr(0, 48), stream.substr(0, 48));
}

TEST(SummaryInfoCodecTest, UpdateWithoutCommentsStillReplacesUnknownTypes) {
    std::string stream =
        propertySet({{kTitleId, lpwstr(u"Wide")}, {kCreatedId, filetime(1)}}, Layout::Foreign);
    EXPECT_EQ(toHex(updateSummaryInfo(stream, "")),
              toHex(propertySet({{kTitleId, fromHex(kEmptyLpstrHex)}, {kCreatedId, filetime(1)}},
                                Layout::Ours)));
}

TEST(SummaryInfoCodecTest, UnrecognisedStreamsAreLeftAloneAndReadEmpty) {
    std::string sound = createSummaryInfo("abc");
    auto patched = [&](std::size_t at, std::string_view hex) {
        std::string s = sound;
        s.replace(at, 4, fromHex(hex));
        return s;
    };
    struct Row {
        const char* name;
        std::string stream;
    } rows[] = {
        {"empty", ""},
        {"cut inside the header", sound.substr(0, 30)},
        {"cut before NumProperties", sound.substr(0, 52)},
        {"version 1", patched(0, "FE FF 01 00")},
        {"other byte order", patched(0, "FF FE 00 00")},
        {"two sections", patched(24, "02 00 00 00")},
        {"section not at 48", patched(44, "34 00 00 00")},
        {"no properties", patched(52, "00 00 00 00")},
        {"text", "not a property set at all, just words and more words......"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(commentsOf(row.stream), "");
        EXPECT_EQ(toHex(updateSummaryInfo(row.stream, "new")), toHex(row.stream));
    }
}

TEST(SummaryInfoCodecTest, ReaderTakesTheTextUpToTheFirstZero) {
    struct Row {
        const char* name;
        std::string comments;
        std::string expected;
    } rows[] = {
        {"zero in the middle", fromHex("1E 00 00 00 08 00 00 00 61 62 00 64 65 66 00 00"), "ab"},
        {"no zero within Size", fromHex("1E 00 00 00 03 00 00 00 61 62 63 64 00 00 00 00"), "abc"},
        {"Size 0", fromHex("1E 00 00 00 00 00 00 00 61 62 63 00"), ""},
        {"Size beyond the stream", fromHex("1E 00 00 00 FF FF FF 7F 61 62"), "ab"},
        {"Size cut short", fromHex("1E 00 00 00 08 00"), ""},
        {"wide string", lpwstr(u"Wide"), ""},
        {"integer", fromHex("03 00 00 00 07 00 00 00"), ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string stream = propertySet({{kCommentsId, row.comments}}, Layout::Foreign);
        EXPECT_EQ(commentsOf(stream), row.expected);
    }
}

TEST(SummaryInfoCodecTest, ValuesOutsideTheStreamBecomeEmptyStrings) {
    std::string stream =
        propertySet({{kTitleId, lpstr("Plan", 5)}, {kCommentsId, lpstr("x", 2)}}, Layout::Foreign);
    stream.replace(56 + 4, 4, fromHex("00 00 00 80"));  // Title's offset: 2^31
    stream.replace(56 + 12, 4, fromHex("FF FF FF FF"));
    EXPECT_EQ(commentsOf(stream), "");
    EXPECT_EQ(toHex(updateSummaryInfo(stream, "")),
              toHex(propertySet({{kTitleId, fromHex(kEmptyLpstrHex)}}, Layout::Ours)));
}

TEST(SummaryInfoCodecTest, TableCutShortKeepsTheEntriesThatArePresent) {
    std::string stream = propertySet({{kTitleId, filetime(7)}}, Layout::Foreign).substr(0, 64);
    stream.replace(52, 4, fromHex("FF FF FF 7F"));  // NumProperties far beyond the stream
    std::string updated = updateSummaryInfo(stream, "abc");
    EXPECT_EQ(tableOf(updated).size(), 2u);
    EXPECT_EQ(commentsOf(updated), "abc");
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

TEST(SummaryInfoCodecTest, CommentsUseTheSetsCodePageWhenTheTextFits) {
    struct Row {
        const char* name;
        unsigned codePage;
        std::string description;
        std::string expectedValueHex;
    } rows[] = {
        {"UTF-16", 1200, "Gr\xC3\xBC\xC3\x9F\xCE\xA9",
         "1E 00 00 00 0C 00 00 00 47 00 72 00 FC 00 DF 00 A9 03 00 00"},
        {"Shift-JIS", 932, "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E",
         "1E 00 00 00 08 00 00 00 93 FA 96 7B 8C EA 00 00"},
        {"UTF-8, even for text that fits Windows-1252", 65001, "\xC3\xA9",
         "1E 00 00 00 04 00 00 00 C3 A9 00 00"},
        {"page unknown to iconv", 4711, "\xC3\xA9", "1E 00 00 00 04 00 00 00 E9 00 00 00"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string stream = propertySet({{kCodePageId, i2(row.codePage)}}, Layout::Foreign);
        std::string updated = updateSummaryInfo(stream, row.description);
        EXPECT_EQ(toHex(valueAt(updated, kCodePageId)), toHex(i2(row.codePage)));
        EXPECT_EQ(toHex(valueAt(updated, kCommentsId)), toHex(fromHex(row.expectedValueHex)));
        EXPECT_EQ(commentsOf(updated), row.description);
    }
}

TEST(SummaryInfoCodecTest, TextBeyondTheSetsCodePageSwitchesTheSetToUtf8) {
    std::string cafeInAnsi = lpstr("caf\xE9", 5);
    std::string cafeInUtf8 = fromHex("1E 00 00 00 08 00 00 00 63 61 66 C3 A9 00 00 00");
    std::string omega = fromHex("1E 00 00 00 04 00 00 00 CE A9 00 00");
    struct Row {
        const char* name;
        std::vector<Property> before;
        std::vector<Property> after;
    } rows[] = {
        {"declared 1252",
         {{kCodePageId, i2(1252)}, {kTitleId, cafeInAnsi}},
         {{kCodePageId, i2(65001)}, {kTitleId, cafeInUtf8}, {kCommentsId, omega}}},
        {"no CodePage",
         {{kTitleId, cafeInAnsi}, {kCreatedId, filetime(3)}},
         {{kCodePageId, i2(65001)},
          {kTitleId, cafeInUtf8},
          {kCreatedId, filetime(3)},
          {kCommentsId, omega}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string updated =
            updateSummaryInfo(propertySet(row.before, Layout::Foreign), "\xCE\xA9");
        EXPECT_EQ(toHex(updated), toHex(propertySet(row.after, Layout::Ours)));
        EXPECT_EQ(commentsOf(updated), "\xCE\xA9");
    }
}

TEST(SummaryInfoCodecTest, SampleStreamsUpdateToTheirGoldenFiles) {
    auto samples = sampleStreams();
    ASSERT_GE(samples.size(), 4u);
    for (const auto& [name, stream] : samples) {
        SCOPED_TRACE(name);
        std::string updated = updateSummaryInfo(stream, "text");
        std::string golden = VESKOR_SOURCE_DIR "/stores/testdata/" +
                             name.substr(0, name.size() - 4) + ".updated.bin";
        EXPECT_EQ(toHex(updated), toHex(readFileBytes(golden)));
        auto table = tableOf(updated);
        ASSERT_FALSE(table.empty());
        for (const auto& [id, offset] : table)
            EXPECT_LE(48u + offset + 4u, updated.size()) << "id " << id;
        EXPECT_EQ(table.back().first, kCommentsId);
        EXPECT_EQ(commentsOf(updated), "text");
    }
}

}  // namespace

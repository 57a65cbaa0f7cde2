#include "stores/summary_info_codec.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "platform/code_page.h"

namespace {

constexpr std::size_t kSectionStart = 48;
constexpr std::size_t kTableStart = 56;
constexpr std::size_t kEntrySize = 8;

constexpr std::uint32_t kDictionaryId = 0x00000000;
constexpr std::uint32_t kCodePageId = 0x00000001;
constexpr std::uint32_t kLocaleId = 0x80000000;
constexpr std::uint32_t kCommentsId = 0x00000006;

constexpr std::uint32_t kVtI2 = 0x02;
constexpr std::uint32_t kVtI4 = 0x03;
constexpr std::uint32_t kVtUi4 = 0x13;
constexpr std::uint32_t kVtLpstr = 0x1E;
constexpr std::uint32_t kVtFiletime = 0x40;

constexpr unsigned kAnsiPage = 1252;
constexpr unsigned kUtf8Page = 65001;
constexpr unsigned kUtf16Page = 1200;
constexpr std::uint32_t kEnglishUsLocale = 0x409;

constexpr std::string_view kByteOrderAndVersion{"\xFE\xFF\0\0", 4};

// Byte order FE FF, version 0, system 5.1 of kind 2, a zero CLSID, one property set
// (FMTID_SummaryInformation) whose section starts at offset 48.
constexpr unsigned char kFreshHeader[kSectionStart] = {
    0xFE, 0xFF, 0x00, 0x00, 0x05, 0x01, 0x02, 0x00, 0,    0,    0,    0,    0,    0,    0,    0,
    0,    0,    0,    0,    0,    0,    0,    0,    1,    0,    0,    0,    0xE0, 0x85, 0x9F, 0xF2,
    0xF9, 0x4F, 0x68, 0x10, 0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9, 0x30, 0,    0,    0};

// What stands in for a value that an update cannot keep: an empty VT_LPSTR.
const std::string kEmptyLpstr{"\x1E\0\0\0\x04\0\0\0\0\0\0\0", 12};
// What stands in for the dictionary, which names user-defined properties: none.
const std::string kEmptyDictionary(4, '\0');

// A table entry, with the stream's bytes from its value's first byte to the end
// (empty when its offset points past the end).
struct Property {
    std::uint32_t id;
    std::string_view value;
};

using Properties = std::vector<std::pair<std::uint32_t, std::string>>;

std::optional<std::uint32_t> u32At(std::string_view bytes, std::size_t pos) {
    if (bytes.size() < 4 || pos > bytes.size() - 4)
        return std::nullopt;
    std::uint32_t v = 0;
    for (std::size_t i = 4; i-- > 0;)
        v = (v << 8) | static_cast<unsigned char>(bytes[pos + i]);
    return v;
}

void putU32(std::string& out, std::uint32_t v) {
    for (int shift = 0; shift < 32; shift += 8)
        out.push_back(static_cast<char>((v >> shift) & 0xFF));
}

std::string_view valueAt(std::string_view stream, std::uint32_t sectionOffset) {
    std::uint64_t pos = std::uint64_t{kSectionStart} + sectionOffset;
    return pos <= stream.size() ? stream.substr(static_cast<std::size_t>(pos)) : std::string_view{};
}

// The property table of a stream in the subset we understand, or nullopt. Entries that
// NumProperties promises but the stream does not hold are left out.
std::optional<std::vector<Property>> recognisedTable(std::string_view stream) {
    if (stream.substr(0, 4) != kByteOrderAndVersion || u32At(stream, 24) != 1u ||
        u32At(stream, 44) != kSectionStart)
        return std::nullopt;
    std::optional<std::uint32_t> count = u32At(stream, 52);
    if (!count || *count == 0)
        return std::nullopt;
    std::size_t present =
        stream.size() >= kTableStart ? (stream.size() - kTableStart) / kEntrySize : 0;
    std::vector<Property> table(std::min<std::size_t>(*count, present));
    for (std::size_t i = 0; i < table.size(); ++i) {
        std::size_t at = kTableStart + i * kEntrySize;
        table[i] = {*u32At(stream, at), valueAt(stream, *u32At(stream, at + 4))};
    }
    return table;
}

std::optional<std::uint32_t> typeOf(std::string_view value) {
    return u32At(value, 0);
}

// The CodePage that the set declares; the first CodePage entry decides, and one that
// is not a VT_I2 declares nothing. The value is unsigned: 65001 is stored as E9 FD.
std::optional<unsigned> declaredCodePage(const std::vector<Property>& table) {
    auto entry = std::find_if(table.begin(), table.end(),
                              [](const Property& p) { return p.id == kCodePageId; });
    if (entry == table.end() || typeOf(entry->value) != kVtI2 || entry->value.size() < 6)
        return std::nullopt;
    return static_cast<unsigned char>(entry->value[4]) |
           static_cast<unsigned>(static_cast<unsigned char>(entry->value[5])) << 8;
}

std::size_t codePageEntries(const std::vector<Property>& table) {
    return static_cast<std::size_t>(std::count_if(
        table.begin(), table.end(), [](const Property& p) { return p.id == kCodePageId; }));
}

// The page that text is converted with: the declared one when the C library knows
// it, else Windows-1252, the page of sets that declare none. Pages other than 1200
// that put zero bytes into text (UTF-16BE, UTF-32) cannot hold a zero-terminated
// string and are read as Windows-1252 too.
unsigned usablePage(std::optional<unsigned> declared) {
    unsigned page = declared.value_or(kAnsiPage);
    // The C library always converts these; listings read one set per entry.
    if (page == kUtf16Page || page == kAnsiPage || page == kUtf8Page)
        return page;
    return encodeCodePage("A", page) == "A" ? page : kAnsiPage;
}

std::size_t terminatorWidth(unsigned page) {
    return page == kUtf16Page ? 2 : 1;
}

std::string_view untilTerminator(std::string_view bytes, unsigned page) {
    if (page != kUtf16Page)
        return bytes.substr(0, bytes.find('\0'));
    std::size_t end = 0;
    while (end + 1 < bytes.size() && (bytes[end] != '\0' || bytes[end + 1] != '\0'))
        end += 2;
    return bytes.substr(0, end);
}

// The text bytes of a VT_LPSTR value, without terminator and padding; nullopt for
// any other type or a value cut short before its Size.
std::optional<std::string_view> lpstrText(std::string_view value, unsigned page) {
    std::optional<std::uint32_t> size = u32At(value, 4);
    if (typeOf(value) != kVtLpstr || !size)
        return std::nullopt;
    return untilTerminator(value.substr(8, *size), page);
}

// Bytes that are not valid in their page still read as text rather than vanish.
std::string decodeText(std::string_view bytes, unsigned page) {
    if (std::optional<std::string> text = decodeCodePage(bytes, page))
        return *std::move(text);
    return decodeFileText(bytes);
}

// The program's text in `page`; nullopt when a character does not fit. Text is UTF-8
// already, so 65001 needs no conversion.
std::optional<std::string> encodeText(std::string_view text, unsigned page) {
    if (page == kUtf8Page)
        return std::string(text);
    return encodeCodePage(text, page);
}

std::string scalarValue(std::uint32_t type, std::uint32_t value) {
    std::string out;
    putU32(out, type);
    putU32(out, value);
    return out;
}

// Size counts the terminator and the padding to a multiple of four.
std::string lpstrValue(std::string_view encoded, unsigned page) {
    std::size_t size = (encoded.size() + terminatorWidth(page) + 3) / 4 * 4;
    std::string out;
    putU32(out, kVtLpstr);
    putU32(out, static_cast<std::uint32_t>(size));
    out += encoded;
    out.resize(8 + size, '\0');
    return out;
}

// How many bytes of a value an update copies; nullopt for types outside the subset.
std::optional<std::uint64_t> copiedLength(std::string_view value) {
    std::optional<std::uint32_t> type = typeOf(value);
    if (type == kVtI2)
        return 6;
    // NOLINTNEXTLINE(misc-redundant-expression): two constants; optional's == fools it
    if (type == kVtI4 || type == kVtUi4)
        return 8;
    if (type == kVtFiletime)
        return 12;
    if (type == kVtLpstr)
        if (std::optional<std::uint32_t> size = u32At(value, 4))
            return std::uint64_t{8} + *size;
    return std::nullopt;
}

// A copy of a value as the update keeps it. `budget` is what is left of the stream's
// length: values of a sound set never overlap, so copies beyond it only come from
// table entries that share a value, and they get the empty string instead, which
// keeps the rebuilt stream in proportion to the old one.
std::string copiedValue(std::string_view value, std::size_t& budget) {
    std::optional<std::uint64_t> length = copiedLength(value);
    if (!length || *length > value.size() || *length > budget)
        return kEmptyLpstr;
    budget -= static_cast<std::size_t>(*length);
    std::string copy(value.substr(0, static_cast<std::size_t>(*length)));
    if (typeOf(value) == kVtI2)
        copy.append(2, '\0');
    return copy;
}

std::string reencodedAsUtf8(std::string value, unsigned fromPage) {
    std::optional<std::string_view> text = lpstrText(value, fromPage);
    if (!text)
        return value;
    return lpstrValue(decodeText(*text, fromPage), kUtf8Page);
}

// What an update does to the set's code page: the page that CodePage is to declare,
// when it does not already say how the strings are read, and the page to re-encode
// the strings from when they move to UTF-8.
struct PageChange {
    std::optional<unsigned> declare;
    std::optional<unsigned> reencodeFrom;
};

// Every property but Comments, in table order, with the set's CodePage (first, where
// it had none) declaring the page that its strings are really in. The dictionary's
// names are not kept: its entries have no type field to copy them by, and a
// stand-in that is no dictionary makes other readers refuse the whole set.
Properties keptProperties(const std::vector<Property>& table, std::size_t budget,
                          const PageChange& change) {
    Properties kept;
    for (const Property& property : table) {
        if (property.id == kCommentsId)
            continue;
        if (property.id == kDictionaryId) {
            kept.emplace_back(property.id, kEmptyDictionary);
            continue;
        }
        std::string value = copiedValue(property.value, budget);
        if (change.declare && property.id == kCodePageId)
            value = scalarValue(kVtI2, *change.declare);
        else if (change.reencodeFrom)
            value = reencodedAsUtf8(std::move(value), *change.reencodeFrom);
        kept.emplace_back(property.id, std::move(value));
    }
    if (change.declare && codePageEntries(table) == 0)
        kept.insert(kept.begin(), {kCodePageId, scalarValue(kVtI2, *change.declare)});
    return kept;
}

// The section after `header`: Size, NumProperties, the table, eight zero bytes that
// every offset counts, and the values. nullopt when it outgrows 32-bit offsets.
std::optional<std::string> serialized(std::string_view header, const Properties& properties) {
    std::uint64_t valuesStart = 16 + std::uint64_t{kEntrySize} * properties.size();
    std::string table, values;
    for (const auto& [id, value] : properties) {
        if (valuesStart + values.size() > UINT32_MAX)
            return std::nullopt;
        putU32(table, id);
        putU32(table, static_cast<std::uint32_t>(valuesStart + values.size()));
        values += value;
    }
    if (valuesStart + values.size() > UINT32_MAX)
        return std::nullopt;
    std::string out(header);
    putU32(out, static_cast<std::uint32_t>(valuesStart + values.size()));
    putU32(out, static_cast<std::uint32_t>(properties.size()));
    out += table;
    out.append(8, '\0');
    out += values;
    return out;
}

}  // namespace

std::string readSummaryInfoDesc(std::string_view stream) {
    std::optional<std::vector<Property>> table = recognisedTable(stream);
    if (!table)
        return {};
    auto comments = std::find_if(table->begin(), table->end(),
                                 [](const Property& p) { return p.id == kCommentsId; });
    if (comments == table->end())
        return {};
    unsigned page = usablePage(declaredCodePage(*table));
    std::optional<std::string_view> bytes = lpstrText(comments->value, page);
    return bytes ? decodeText(*bytes, page) : std::string();
}

// A set without CodePage, with CodePage 0 or with a page that the C library cannot
// convert has its strings read as Windows-1252; an update says so, so that every
// other reader takes them the same way.
std::string updateSummaryInfo(std::string_view stream, std::string_view description) {
    std::optional<std::vector<Property>> table = recognisedTable(stream);
    if (!table)
        return std::string(stream);
    std::optional<unsigned> declared = declaredCodePage(*table);
    unsigned page = usablePage(declared);
    PageChange change;
    // Readers differ on which of two CodePage entries decides; the later ones are made
    // to agree with the first, which decides here.
    if (declared != page || codePageEntries(*table) > 1)
        change.declare = page;
    std::optional<std::string> comments;
    if (!description.empty()) {
        comments = encodeText(description, page);
        if (!comments) {
            comments = std::string(description);
            change = {kUtf8Page, page};
            page = kUtf8Page;
        }
    }
    Properties kept = keptProperties(*table, stream.size(), change);
    if (comments)
        kept.emplace_back(kCommentsId, lpstrValue(*comments, page));
    return serialized(stream.substr(0, kSectionStart), kept).value_or(std::string(stream));
}

std::string createSummaryInfo(std::string_view description) {
    std::optional<std::string> ansi;
    if (!description.empty())
        ansi = encodeCodePage(description, kAnsiPage);
    unsigned page = description.empty() || ansi ? kAnsiPage : kUtf8Page;
    Properties properties{{kCodePageId, scalarValue(kVtI2, page)},
                          {kLocaleId, scalarValue(kVtUi4, kEnglishUsLocale)}};
    if (!description.empty())
        properties.emplace_back(kCommentsId, lpstrValue(ansi ? *ansi : description, page));
    std::string_view header{reinterpret_cast<const char*>(kFreshHeader), sizeof kFreshHeader};
    return serialized(header, properties).value_or(std::string());
}

#include "stores/descript_ion_format.h"

#include <algorithm>
#include <vector>

#include "platform/code_page.h"

namespace {

constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Bom = "\xFF\xFE";
constexpr std::string_view kCrLf = "\r\n";
constexpr std::string_view kNoBreakSpace = "\xC2\xA0";
constexpr std::string_view kEscapedBreak = "\\n";
// Total Commander's mark at the end of a multi-line entry: the bytes it writes, and
// the same bytes read as Windows-1252 (U+0004 U+00C2).
constexpr std::string_view kMultiLineMark = "\x04\xC2";
constexpr std::string_view kMultiLineMarkText = "\x04\xC3\x82";

enum class Encoding { Utf8, Utf16Le, EightBit };

// One line of the file as bytes, without its end, and its end.
struct RawLine {
    std::string_view content;
    std::string_view end;
};

// A file cut into its BOM and its lines, each line also decoded to UTF-8.
struct DescriptionFile {
    Encoding encoding = Encoding::EightBit;
    std::string_view bom;
    std::vector<RawLine> raw;
    std::vector<std::string> lines;
};

std::size_t unitWidth(Encoding encoding) {
    return encoding == Encoding::Utf16Le ? 2 : 1;
}

// The code unit at `pos`: a byte, or a little-endian 16-bit unit.
unsigned unitAt(std::string_view bytes, std::size_t pos, std::size_t width) {
    unsigned unit = static_cast<unsigned char>(bytes[pos]);
    if (width == 2)
        unit |= static_cast<unsigned>(static_cast<unsigned char>(bytes[pos + 1])) << 8;
    return unit;
}

// Lines end at CR LF, LF or a lone CR, counted in code units so that UTF-16 text
// splits only where it breaks; a final line end starts no further line.
std::vector<RawLine> splitRawLines(std::string_view bytes, std::size_t width) {
    std::vector<RawLine> lines;
    std::size_t start = 0, pos = 0;
    while (pos + width <= bytes.size()) {
        const unsigned unit = unitAt(bytes, pos, width);
        if (unit != '\r' && unit != '\n') {
            pos += width;
            continue;
        }
        std::size_t end = pos + width;
        if (unit == '\r' && end + width <= bytes.size() && unitAt(bytes, end, width) == '\n')
            end += width;
        lines.push_back({bytes.substr(start, pos - start), bytes.substr(pos, end - pos)});
        start = pos = end;
    }
    if (start < bytes.size())
        lines.push_back({bytes.substr(start), {}});
    return lines;
}

bool isAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Without a BOM, only text that is valid UTF-8 and not plain ASCII counts as UTF-8: a
// file of ASCII alone comes from a program that writes its 8-bit code page.
Encoding encodingOf(std::string_view bytes) {
    if (bytes.starts_with(kUtf8Bom))
        return Encoding::Utf8;
    if (bytes.starts_with(kUtf16Bom))
        return Encoding::Utf16Le;
    return !isAscii(bytes) && decodeFileText(bytes) == bytes ? Encoding::Utf8 : Encoding::EightBit;
}

std::string decodeLine(std::string_view content, Encoding encoding) {
    if (encoding == Encoding::Utf16Le)
        return decodeCodePage(content, 1200).value_or("");
    return decodeFileText(content);
}

DescriptionFile parseFile(std::string_view bytes) {
    DescriptionFile file;
    file.encoding = encodingOf(bytes);
    if (bytes.starts_with(kUtf8Bom))
        file.bom = bytes.substr(0, kUtf8Bom.size());
    else if (file.encoding == Encoding::Utf16Le)
        file.bom = bytes.substr(0, kUtf16Bom.size());
    file.raw = splitRawLines(bytes.substr(file.bom.size()), unitWidth(file.encoding));
    for (const RawLine& line : file.raw)
        file.lines.push_back(decodeLine(line.content, file.encoding));
    return file;
}

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view skipBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    return text;
}

// A line that carries on the entry above it (Far's multi-line form).
bool isContinuation(std::string_view line) {
    return !line.empty() && isBlank(line.front());
}

struct Head {
    std::string_view name;
    std::string_view text;
};

// A line that starts an entry: its name, quoted or up to the first blank, and the
// description after the blanks that follow the name.
Head splitHead(std::string_view line) {
    if (line.starts_with('"')) {
        std::size_t close = line.find('"', 1);
        if (close == std::string_view::npos)
            return {line.substr(1), {}};
        return {line.substr(1, close - 1), skipBlanks(line.substr(close + 1))};
    }
    std::size_t blank = line.find_first_of(" \t");
    if (blank == std::string_view::npos)
        return {line, {}};
    return {line.substr(0, blank), skipBlanks(line.substr(blank))};
}

std::string replaceAll(std::string_view text, std::string_view from, std::string_view to) {
    std::string out;
    for (std::size_t pos = 0;;) {
        std::size_t found = text.find(from, pos);
        out += text.substr(pos, found - pos);
        if (found == std::string_view::npos)
            return out;
        out += to;
        pos = found + from.size();
    }
}

// A head line's description with its breaks as CR LF, in whichever form it has them.
// Only the Unicode files' writer breaks lines with U+00A0; in 8-bit text it is a space.
std::string headText(std::string_view text, Encoding encoding) {
    if (text.ends_with(kMultiLineMarkText)) {
        text.remove_suffix(kMultiLineMarkText.size());
        return replaceAll(text, kEscapedBreak, kCrLf);
    }
    if (encoding == Encoding::EightBit)
        return std::string(text);
    return replaceAll(text, kNoBreakSpace, kCrLf);
}

bool namesTarget(std::string_view line, const std::string& upperName) {
    return !line.empty() && !isContinuation(line) && upperCase(splitHead(line).name) == upperName;
}

// The index just past the entry whose head line is at `head`.
std::size_t entryEnd(const DescriptionFile& file, std::size_t head) {
    std::size_t end = head + 1;
    while (end < file.lines.size() && isContinuation(file.lines[end]))
        ++end;
    return end;
}

bool hasBlank(std::string_view name) {
    return name.find_first_of(" \t") != std::string_view::npos;
}

// A quote inside a quoted name, or at the start of a bare one, would end or open it.
bool formatCanHold(std::string_view name) {
    return !name.empty() && !name.starts_with('"') &&
           !(hasBlank(name) && name.find('"') != std::string_view::npos);
}

// The description's lines, breaks at its end dropped: a commander shows no empty
// last line.
std::vector<std::string_view> descriptionLines(std::string_view description) {
    std::vector<std::string_view> lines;
    for (std::size_t pos = 0; pos <= description.size();) {
        std::size_t end = description.find_first_of("\r\n", pos);
        if (end == std::string_view::npos)
            end = description.size();
        lines.push_back(description.substr(pos, end - pos));
        pos = end + (description.substr(end).starts_with(kCrLf) ? 2 : 1);
    }
    while (!lines.empty() && lines.back().empty())
        lines.pop_back();
    return lines;
}

std::string joined(const std::vector<std::string_view>& lines, std::string_view separator) {
    std::string out;
    for (std::size_t i = 0; i < lines.size(); ++i)
        out += std::string(i ? separator : "") + std::string(lines[i]);
    return out;
}

std::string quotedName(std::string_view name) {
    return hasBlank(name) ? '"' + std::string(name) + '"' : std::string(name);
}

// A name in Windows-1252 where it fits; otherwise its bytes as they are (UTF-8, or a
// name that is not UTF-8), as the file system holds them, so its entry is still found.
std::string eightBit(std::string_view text) {
    return encodeCodePage(text, 1252).value_or(std::string(text));
}

// The new head line in the file's encoding. A Unicode file names the item as this
// program reads its name; an 8-bit file keeps the name's own bytes where they are not
// UTF-8, as the file system holds them. A description that Windows-1252 cannot hold has
// no entry in an 8-bit file (nullopt): UTF-8 bytes there would read as other letters.
std::optional<std::string> encodedEntry(std::string_view name,
                                        const std::vector<std::string_view>& lines,
                                        Encoding encoding) {
    const std::string head = quotedName(decodeFileText(name)) + ' ';
    if (encoding == Encoding::Utf16Le)
        return encodeCodePage(head + joined(lines, kNoBreakSpace), 1200);
    if (encoding == Encoding::Utf8)
        return head + joined(lines, kNoBreakSpace);
    std::optional<std::string> text = encodeCodePage(joined(lines, kEscapedBreak), 1252);
    if (!text)
        return std::nullopt;
    std::string bytes = eightBit(quotedName(name)) + ' ' + *text;
    return lines.size() > 1 ? bytes + std::string(kMultiLineMark) : bytes;
}

// The line end that new lines take: the file's first, else CR LF.
std::string lineEndOf(const DescriptionFile& file) {
    for (const RawLine& line : file.raw) {
        if (!line.end.empty())
            return std::string(line.end);
    }
    return file.encoding == Encoding::Utf16Le ? std::string("\r\0\n\0", 4) : std::string(kCrLf);
}

// One pass of withEntry() over the file as it reads now.
std::optional<std::string> rewritten(std::string_view fileBytes, std::string_view name,
                                     std::optional<std::string_view> description) {
    const DescriptionFile file = parseFile(fileBytes);
    std::optional<std::string> entry;
    if (std::vector<std::string_view> lines = descriptionLines(description.value_or(""));
        !lines.empty())
        entry = encodedEntry(name, lines, file.encoding);

    const std::string upperName = descriptIonKey(name);
    std::string out(file.bom);
    bool kept = false;
    for (std::size_t i = 0; i < file.raw.size(); ++i) {
        if (namesTarget(file.lines[i], upperName)) {
            // The first entry of the target is replaced where it stands; others go.
            if (entry) {
                out += *entry + std::string(file.raw[i].end);
                entry.reset();
                kept = true;
            }
            i = entryEnd(file, i) - 1;
            continue;
        }
        out += std::string(file.raw[i].content) + std::string(file.raw[i].end);
        kept = kept || !skipBlanks(file.lines[i]).empty();
    }
    if (entry) {
        // A cut last character of UTF-16 text would shift every unit after it.
        if ((out.size() - file.bom.size()) % unitWidth(file.encoding) != 0)
            out += '\0';
        if (!file.raw.empty() && file.raw.back().end.empty())
            out += lineEndOf(file);
        out += *entry + lineEndOf(file);
        kept = true;
    }
    return kept ? std::optional(out) : std::nullopt;
}

// The file without any entry for `name`; nullopt when nothing else is left. Removing
// the first line may bare a BOM that the next line began with, and the file then reads
// anew: what names the target then goes as well. Each round removes a line, so this
// ends.
std::optional<std::string> withoutEntries(std::string_view fileBytes, std::string_view name) {
    std::optional<std::string> out = rewritten(fileBytes, name, std::nullopt);
    while (out && descriptionIn(*out, name))
        out = rewritten(*out, name, std::nullopt);
    return out;
}

}  // namespace

std::string descriptIonKey(std::string_view name) {
    return upperCase(decodeFileText(name));
}

std::unordered_map<std::string, std::string> descriptIonEntries(std::string_view fileBytes) {
    const DescriptionFile file = parseFile(fileBytes);
    std::unordered_map<std::string, std::string> entries;
    for (std::size_t i = 0; i < file.lines.size(); ++i) {
        if (file.lines[i].empty() || isContinuation(file.lines[i]))
            continue;
        const Head head = splitHead(file.lines[i]);
        std::string text = headText(head.text, file.encoding);
        for (std::size_t next = i + 1; next < entryEnd(file, i); ++next)
            text += std::string(kCrLf) + std::string(skipBlanks(file.lines[next]));
        entries.try_emplace(upperCase(head.name), std::move(text));
    }
    return entries;
}

std::optional<std::string> descriptionIn(std::string_view fileBytes, std::string_view name) {
    auto entries = descriptIonEntries(fileBytes);
    auto entry = entries.find(descriptIonKey(name));
    if (entry == entries.end())
        return std::nullopt;
    return std::move(entry->second);
}

std::optional<std::string> withEntry(std::string_view fileBytes, std::string_view name,
                                     std::optional<std::string_view> description) {
    if (!formatCanHold(name))
        return std::string(fileBytes);
    const std::vector<std::string_view> lines = descriptionLines(description.value_or(""));
    if (lines.empty())
        return withoutEntries(fileBytes, name);
    std::optional<std::string> out = rewritten(fileBytes, name, description);
    if (out && descriptionIn(*out, name) == joined(lines, kCrLf))
        return out;
    // Where the old entry stood, a lone CR before it and an LF after it may join, and
    // a removed duplicate may bare a BOM: the entry then goes at the end instead.
    std::string rest =
        withoutEntries(fileBytes, name).value_or(std::string(parseFile(fileBytes).bom));
    return rewritten(rest, name, description);
}

#include "platform/code_page.h"

#include <iconv.h>
#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <map>

namespace {

// Windows-1252 bytes 0x80-0x9F; the rest of the page equals Latin-1. Undefined bytes
// map to the C1 control of the same value, as Windows itself does.
constexpr std::array<char32_t, 32> kWindows1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

// A byte that is not part of a UTF-8 sequence, read as Windows-1252.
void appendWindows1252(std::string& out, unsigned char b) {
    appendUtf8(out, b < 0xA0 ? kWindows1252High[b - 0x80u] : char32_t{b});
}

// Appends `bytes` to `out`, copying runs of ASCII whole, as every decoding here leaves
// them; at each other byte, `decode(at)` appends what begins there and returns how many
// bytes it took.
template <typename Decode>
void appendDecoded(std::string& out, std::string_view bytes, Decode decode) {
    out.reserve(out.size() + bytes.size());
    for (std::size_t from = 0; from < bytes.size();) {
        std::size_t high = from;
        while (high < bytes.size() && static_cast<unsigned char>(bytes[high]) < 0x80)
            ++high;
        out.append(bytes.substr(from, high - from));
        if (high == bytes.size())
            break;
        from = high + decode(high);
    }
}

// The iconv name of a Windows code page.
std::string iconvName(unsigned codePage) {
    switch (codePage) {
        case 1200:
            return "UTF-16LE";
        case 1201:
            return "UTF-16BE";
        case 65001:
            return "UTF-8";
        case 10000:
            return "MACINTOSH";
        case 20127:
            return "ASCII";
        case 28591:
            return "ISO-8859-1";
        case 932:
            return "CP932";
        case 936:
            return "GBK";
        case 949:
            return "CP949";
        case 950:
            return "BIG5";
        default:
            return "CP" + std::to_string(codePage);
    }
}

// Opening a conversion loads and sets up its module; listings convert the text of
// many entries, so each thread keeps the conversions it opened.
class OpenConversions {
public:
    OpenConversions() = default;
    OpenConversions(const OpenConversions&) = delete;
    OpenConversions& operator=(const OpenConversions&) = delete;
    ~OpenConversions() {
        for (auto& [names, cd] : m_open)
            ::iconv_close(cd);
    }

    // A conversion in its initial state; nullopt when iconv does not know the names.
    std::optional<iconv_t> get(const std::string& from, const std::string& to) {
        auto it = m_open.find({from, to});
        if (it == m_open.end()) {
            iconv_t cd = ::iconv_open(to.c_str(), from.c_str());
            // NOLINTNEXTLINE(performance-no-int-to-ptr): iconv's own failure value
            if (cd == reinterpret_cast<iconv_t>(-1))
                return std::nullopt;
            it = m_open.emplace(std::pair{from, to}, cd).first;
        }
        ::iconv(it->second, nullptr, nullptr, nullptr, nullptr);
        return it->second;
    }

private:
    std::map<std::pair<std::string, std::string>, iconv_t> m_open;
};

std::optional<std::string> convert(std::string_view in, const std::string& from,
                                   const std::string& to) {
    thread_local OpenConversions conversions;
    std::optional<iconv_t> opened = conversions.get(from, to);
    if (!opened)
        return std::nullopt;
    iconv_t cd = *opened;
    std::string out(in.size() * 4 + 16, '\0');
    char* src = const_cast<char*>(in.data());
    std::size_t srcLeft = in.size();
    char* dst = out.data();
    std::size_t dstLeft = out.size();
    std::size_t rc = ::iconv(cd, &src, &srcLeft, &dst, &dstLeft);
    if (rc == static_cast<std::size_t>(-1) || srcLeft != 0)
        return std::nullopt;
    out.resize(out.size() - dstLeft);
    return out;
}

// Bytes of the character at `pos`: a whole UTF-8 sequence, or one stray byte.
std::size_t characterLength(std::string_view utf8, std::size_t pos) {
    char32_t code = 0;
    std::size_t len = utf8Sequence(utf8, pos, code);
    return len == 0 ? 1 : len;
}

// Calls visit(sequence, code) for every valid UTF-8 sequence, and visit(byte, nullopt)
// for every byte that is not part of one.
template <typename Visit>
void forEachCharacter(std::string_view text, Visit visit) {
    for (std::size_t pos = 0; pos < text.size();) {
        char32_t code = 0;
        std::size_t len = utf8Sequence(text, pos, code);
        if (len == 0) {
            visit(text.substr(pos++, 1), std::nullopt);
        } else {
            visit(text.substr(pos, len), std::optional<char32_t>(code));
            pos += len;
        }
    }
}

locale_t utf8Locale() {
    static locale_t locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

}  // namespace

std::size_t utf8Sequence(std::string_view s, std::size_t pos, char32_t& code) {
    auto byte = [&](std::size_t i) { return static_cast<unsigned char>(s[i]); };
    unsigned char b = byte(pos);
    std::size_t len = b < 0x80         ? 1
                      : (b >> 5) == 6  ? 2
                      : (b >> 4) == 14 ? 3
                      : (b >> 3) == 30 ? 4
                                       : 0;
    if (len == 0 || pos + len > s.size())
        return 0;
    code = len == 1 ? b : len == 2 ? (b & 0x1Fu) : len == 3 ? (b & 0x0Fu) : (b & 0x07u);
    for (std::size_t i = 1; i < len; ++i) {
        if ((byte(pos + i) & 0xC0) != 0x80)
            return 0;
        code = (code << 6) | (byte(pos + i) & 0x3Fu);
    }
    static constexpr char32_t kMin[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kMin[len] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return 0;
    return len;
}

std::string decodeFileText(std::string_view bytes) {
    std::string out;
    appendDecoded(out, bytes, [&](std::size_t at) {
        char32_t code = 0;
        std::size_t len = utf8Sequence(bytes, at, code);
        if (len == 0) {
            appendWindows1252(out, static_cast<unsigned char>(bytes[at]));
            return std::size_t{1};
        }
        out.append(bytes.substr(at, len));
        return len;
    });
    return out;
}

std::size_t characterCount(std::string_view utf8) {
    std::size_t count = 0;
    for (std::size_t pos = 0; pos < utf8.size(); ++count)
        pos += static_cast<unsigned char>(utf8[pos]) < 0x80 ? 1 : characterLength(utf8, pos);
    return count;
}

std::string_view firstCharacters(std::string_view utf8, std::size_t count) {
    std::size_t pos = 0;
    for (std::size_t n = 0; n < count && pos < utf8.size(); ++n)
        pos += characterLength(utf8, pos);
    return utf8.substr(0, pos);
}

std::string_view charactersFrom(std::string_view utf8, std::size_t start) {
    return utf8.substr(firstCharacters(utf8, start).size());
}

std::string upperCase(std::string_view utf8) {
    std::string out(utf8);
    // Most paths and texts are ASCII, and listings upper-case one per entry.
    if (std::all_of(utf8.begin(), utf8.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        for (char& c : out)
            c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
        return out;
    }
    out.clear();
    forEachCharacter(utf8, [&](std::string_view sequence, std::optional<char32_t> code) {
        if (!code) {
            out += sequence;
        } else if (*code < 0x80) {
            out += static_cast<char>(*code >= 'a' && *code <= 'z' ? *code - 32 : *code);
        } else {
            locale_t locale = utf8Locale();
            auto upper = locale ? ::towupper_l(static_cast<wint_t>(*code), locale)
                                : static_cast<wint_t>(*code);
            appendUtf8(out, static_cast<char32_t>(upper));
        }
    });
    return out;
}

std::optional<std::string> encodeCodePage(std::string_view utf8, unsigned codePage) {
    return convert(utf8, "UTF-8", iconvName(codePage));
}

std::string decodeWindows1252(std::string_view bytes) {
    std::string out;
    appendDecoded(out, bytes, [&](std::size_t at) {
        appendWindows1252(out, static_cast<unsigned char>(bytes[at]));
        return std::size_t{1};
    });
    return out;
}

std::optional<std::string> decodeCodePage(std::string_view bytes, unsigned codePage) {
    // iconv refuses the five bytes that Windows-1252 leaves undefined; Windows reads
    // them as the C1 controls of the same value, and so do we.
    if (codePage == 1252)
        return decodeWindows1252(bytes);
    return convert(bytes, iconvName(codePage), "UTF-8");
}

#include "core/escaped_text.h"

#include "platform/code_page.h"

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

void appendHex(std::string& out, std::string_view prefix, unsigned value, int digits) {
    out += prefix;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        out += kHexDigits[(value >> static_cast<unsigned>(shift)) & 0xFu];
}

void appendEscapedControl(std::string& out, unsigned char c) {
    switch (c) {
        case '\t':
            out += "\\t";
            return;
        case '\n':
            out += "\\n";
            return;
        case '\r':
            out += "\\r";
            return;
        default:
            appendHex(out, "\\x", c, 2);
    }
}

bool isC0OrDel(unsigned char c) {
    return c < 0x20 || c == 0x7F;
}

}  // namespace

std::string escapedControls(std::string_view text, std::string_view kept) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t pos = 0; pos < text.size();) {
        const auto c = static_cast<unsigned char>(text[pos]);
        if (c >= 0x20 && c < 0x7F) {
            out += text[pos++];
            continue;
        }
        if (isC0OrDel(c)) {
            if (kept.find(text[pos]) != std::string_view::npos)
                out += text[pos];
            else
                appendEscapedControl(out, c);
            ++pos;
            continue;
        }
        char32_t code = 0;
        const std::size_t length = utf8Sequence(text, pos, code);
        if (length == 0)
            appendHex(out, "\\x", c, 2);
        else if (code < 0xA0)
            appendHex(out, "\\u", static_cast<unsigned>(code), 4);
        else
            out.append(text.substr(pos, length));
        pos += length == 0 ? 1 : length;
    }
    return out;
}

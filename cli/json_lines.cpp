#include "cli/json_lines.h"

#include <nlohmann/json.hpp>

#include <charconv>

#include "platform/code_page.h"

namespace {

using nlohmann::json;
// Keys keep the order they are written in: path, path_hex, description, source.
using nlohmann::ordered_json;

constexpr char kHexDigits[] = "0123456789abcdef";

bool isUtf8(const std::string& text) {
    return decodeFileText(text) == text;
}

std::string hexOf(std::string_view bytes) {
    std::string hex;
    hex.reserve(2 * bytes.size());
    for (char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        hex += kHexDigits[byte >> 4];
        hex += kHexDigits[byte & 0xFu];
    }
    return hex;
}

std::optional<std::string> bytesOfHex(std::string_view hex) {
    if (hex.size() % 2 != 0)
        return std::nullopt;
    std::string bytes;
    bytes.reserve(hex.size() / 2);
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        unsigned value = 0;
        const char* end = hex.data() + i + 2;
        if (std::from_chars(hex.data() + i, end, value, 16).ptr != end)
            return std::nullopt;
        bytes += static_cast<char>(value);
    }
    return bytes;
}

// The string member `key`, or nullopt.
std::optional<std::string> stringMember(const json& object, const char* key) {
    auto it = object.find(key);
    if (it == object.end() || !it->is_string())
        return std::nullopt;
    return it->get<std::string>();
}

// The serializer escapes the controls below U+0020; DEL and the C1 controls, which
// terminals act on too, it leaves as they are. Outside strings a line holds ASCII
// punctuation only, so each such character is inside a string.
std::string withEveryControlEscaped(std::string line) {
    if (line.find_first_of("\x7F\xC2") == std::string::npos)
        return line;
    std::string out;
    out.reserve(line.size() + 16);
    for (std::size_t i = 0; i < line.size(); ++i) {
        const auto c = static_cast<unsigned char>(line[i]);
        const auto next = i + 1 < line.size() ? static_cast<unsigned char>(line[i + 1]) : 0u;
        if (c == 0x7F) {
            out += "\\u007f";
        } else if (c == 0xC2 && next >= 0x80 && next < 0xA0) {
            out += "\\u00";
            out += kHexDigits[next >> 4];
            out += kHexDigits[next & 0xFu];
            ++i;
        } else {
            out += line[i];
        }
    }
    return out;
}

}  // namespace

std::string jsonLine(const DescriptionLine& line) {
    ordered_json object = {{"path", decodeFileText(line.path)}};
    if (!isUtf8(line.path))
        object["path_hex"] = hexOf(line.path);
    object["description"] = decodeFileText(line.description);
    object["source"] = line.source;
    return withEveryControlEscaped(
        object.dump(-1, ' ', false, ordered_json::error_handler_t::replace));
}

std::optional<DescriptionLine> parseJsonLine(const std::string& line) {
    // No exceptions: a line that is not JSON is discarded.
    json object = json::parse(line, nullptr, false);
    if (object.is_discarded() || !object.is_object())
        return std::nullopt;
    auto path = stringMember(object, "path");
    auto description = stringMember(object, "description");
    if (!path || !description)
        return std::nullopt;
    if (object.contains("path_hex")) {
        auto hex = stringMember(object, "path_hex");
        path = hex ? bytesOfHex(*hex) : std::nullopt;
        if (!path)
            return std::nullopt;
    }
    return DescriptionLine{*path, *description, stringMember(object, "source").value_or("")};
}

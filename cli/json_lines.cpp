#include "cli/json_lines.h"

#include <nlohmann/json.hpp>

#include "platform/code_page.h"

namespace {

using nlohmann::json;
// Keys keep the order they are written in: path, description, source.
using nlohmann::ordered_json;

bool isUtf8(const std::string& text) {
    return decodeFileText(text) == text;
}

// The string member `key`, or nullopt.
std::optional<std::string> stringMember(const json& object, const char* key) {
    auto it = object.find(key);
    if (it == object.end() || !it->is_string())
        return std::nullopt;
    return it->get<std::string>();
}

}  // namespace

std::optional<std::string> jsonLine(const DescriptionLine& line) {
    if (!isUtf8(line.path))
        return std::nullopt;
    ordered_json object = {{"path", line.path},
                           {"description", decodeFileText(line.description)},
                           {"source", line.source}};
    return object.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
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
    return DescriptionLine{*path, *description, stringMember(object, "source").value_or("")};
}

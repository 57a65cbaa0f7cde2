#include "core/paths.h"

#include <vector>

namespace {

std::vector<std::string_view> resolvedComponents(std::string_view path) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    while (start <= path.size()) {
        std::size_t end = path.find('/', start);
        if (end == std::string_view::npos)
            end = path.size();
        std::string_view part = path.substr(start, end - start);
        if (part == "..") {
            if (!parts.empty())
                parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        start = end + 1;
    }
    return parts;
}

}  // namespace

std::string lexicallyNormal(std::string_view path) {
    std::string out;
    for (std::string_view part : resolvedComponents(path)) {
        out += '/';
        out += part;
    }
    if (out.empty() || path.ends_with('/'))
        out += '/';
    return out;
}

std::string_view lastComponent(std::string_view path) {
    std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view folderOf(std::string_view path) {
    std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash + 1);
}

std::string withTrailingSeparator(std::string_view path) {
    std::string out(path);
    if (!out.ends_with('/'))
        out += '/';
    return out;
}

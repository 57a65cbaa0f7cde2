#include "picker/picker_model.h"

#include <cctype>
#include <filesystem>

namespace {

bool isUtf8Continuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

bool sameLetter(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
}

// Classic wildcard matching with one backtrack point for the last "*".
bool matchesGlob(std::string_view name, std::string_view glob) {
    size_t n = 0, g = 0, starGlob = std::string_view::npos, starName = 0;
    while (n < name.size()) {
        if (g < glob.size() && glob[g] == '*') {
            starGlob = g++;
            starName = n;
        } else if (g < glob.size() && (glob[g] == '?' || sameLetter(glob[g], name[n]))) {
            // "?" takes one whole character, not one byte of it.
            bool anyChar = glob[g] == '?';
            ++g;
            ++n;
            while (anyChar && n < name.size() && isUtf8Continuation(name[n]))
                ++n;
        } else if (starGlob != std::string_view::npos) {
            g = starGlob + 1;
            n = ++starName;
        } else {
            return false;
        }
    }
    while (g < glob.size() && glob[g] == '*')
        ++g;
    return g == glob.size();
}

bool matchesOne(std::string_view name, std::string_view glob) {
    if (matchesGlob(name, glob))
        return true;
    bool anyExtension = glob.size() >= 2 && glob.substr(glob.size() - 2) == ".*";
    return anyExtension && name.find('.') == std::string_view::npos &&
           matchesGlob(name, glob.substr(0, glob.size() - 2));
}

bool isUnder(const std::string& folder, const std::string& mount) {
    if (mount == "/")
        return true;
    return folder.starts_with(mount) &&
           (folder.size() == mount.size() || folder[mount.size()] == '/');
}

}  // namespace

std::string versionLine(int major, int minor, int revision) {
    std::string line = "Veskor version " + std::to_string(major) + "." + std::to_string(minor);
    // Appended in two steps: GCC 12 at -O3 sees a false overlap (-Wrestrict) in
    // "." + std::to_string(...).
    if (revision != 0) {
        line += '.';
        line += std::to_string(revision);
    }
    return line;
}

std::string startFolder(const std::string& profile,
                        const std::function<bool(const std::string&)>& exists) {
    if (profile.empty())
        return {};
    for (const char* name : {"/My Documents", "/Documents"}) {
        if (exists(profile + name))
            return profile + name;
    }
    return profile;
}

std::string driveOf(const std::string& folder, const std::vector<std::string>& mounts) {
    std::string best = "/";
    for (const std::string& mount : mounts) {
        if (mount.size() > best.size() && isUnder(folder, mount))
            best = mount;
    }
    return best;
}

std::string folderPathFrom(const std::string& base, const std::string& path) {
    if (path.empty())
        return {};
    std::filesystem::path full = path.front() == '/' ? path : base + "/" + path;
    std::string normal = full.lexically_normal().string();
    while (normal.size() > 1 && normal.back() == '/')
        normal.pop_back();
    return normal;
}

std::string choiceTarget(const std::string& folder, const std::string& name) {
    if (name.empty())
        return folder;
    return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

bool matchesPattern(std::string_view name, std::string_view pattern) {
    for (size_t start = 0; start <= pattern.size();) {
        size_t end = pattern.find(';', start);
        if (end == std::string_view::npos)
            end = pattern.size();
        if (matchesOne(name, pattern.substr(start, end - start)))
            return true;
        start = end + 1;
    }
    return false;
}

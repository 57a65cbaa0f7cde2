#include "cli/listing.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "platform/code_page.h"

namespace {

constexpr std::string_view kExportedSuffix = ".DESCRIPTION";

struct Name {
    std::string name;
    bool isFolder;
};

bool isExportedFileName(const std::string& name) {
    return name.size() > kExportedSuffix.size() &&
           upperCase(std::string_view(name).substr(name.size() - kExportedSuffix.size())) ==
               kExportedSuffix;
}

// The folder's entries, sorted; nullopt when it cannot be read.
std::optional<std::vector<Name>> readNames(const std::string& folder) {
    std::error_code ec;
    std::filesystem::directory_iterator it(folder, ec), end;
    std::vector<Name> names;
    for (; !ec && it != end; it.increment(ec)) {
        std::error_code typeEc;
        bool isFolder = it->is_directory(typeEc) && !it->is_symlink(typeEc);
        names.push_back({it->path().filename().string(), isFolder});
    }
    if (ec)
        return std::nullopt;
    std::sort(names.begin(), names.end(),
              [](const Name& a, const Name& b) { return a.name < b.name; });
    return names;
}

}  // namespace

Listing::Listing(Session& session, const std::string& top)
    : m_session(session), m_reader(session.failsafeFile(), top) {}

bool Listing::listFolder(const std::string& folder,
                         const std::function<void(const ListedEntry&)>& each) {
    auto names = readNames(folder);
    if (!names)
        return false;
    std::vector<std::string> plain;
    for (const Name& n : *names)
        plain.push_back(n.name);
    m_reader.enterFolder(folder, plain);
    const std::string failsafe = m_session.failsafeFile();
    ListedEntry entry;
    for (const Name& n : *names) {
        entry.path = folder + n.name;
        // Another entry's exported file: opening it would open that entry.
        if (isExportedFileName(n.name))
            continue;
        // A name the editor refuses has no description.
        auto target = m_session.targetPathsOf(entry.path);
        entry.name = n.name;
        entry.isFolder = n.isFolder;
        entry.found = target ? findDescription(*target, failsafe, m_reader) : FoundDescription();
        entry.text = printedText(entry.found);
        each(entry);
    }
    return true;
}

bool Listing::listTree(const std::string& folder,
                       const std::function<void(const ListedEntry&)>& each) {
    std::vector<std::string> subfolders;
    bool ok = listFolder(folder, [&](const ListedEntry& entry) {
        each(entry);
        if (entry.isFolder)
            subfolders.push_back(entry.path + "/");
    });
    for (const std::string& sub : subfolders)
        ok = listTree(sub, each) && ok;
    return ok;
}

#include "cli/listing.h"

#include <algorithm>
#include <vector>

#include "cli/json_lines.h"
#include "platform/code_page.h"
#include "platform/files.h"

namespace {

constexpr std::string_view kExportedSuffix = ".DESCRIPTION";

bool isExportedFileName(const std::string& name) {
    return name.size() > kExportedSuffix.size() &&
           upperCase(std::string_view(name).substr(name.size() - kExportedSuffix.size())) ==
               kExportedSuffix;
}

}  // namespace

bool writeJsonLine(Session& session, const ListedEntry& entry) {
    if (auto line = jsonLine({entry.path, entry.text, sourceName(entry.found.status)})) {
        session.streams.out << *line << '\n';
        return true;
    }
    session.complain(entry.path + ": the name is not UTF-8, which JSON cannot hold; left out");
    return false;
}

Listing::Listing(Session& session, const std::string& top)
    : m_session(session), m_reader(session.failsafeFile(), top) {}

bool Listing::listFolder(const std::string& folder,
                         const std::function<void(const ListedEntry&)>& each) {
    std::vector<FolderItem> items;
    if (readFolder(folder, items))
        return false;
    std::sort(items.begin(), items.end(),
              [](const FolderItem& a, const FolderItem& b) { return a.name < b.name; });
    std::vector<std::string> names;
    names.reserve(items.size());
    for (const FolderItem& item : items)
        names.push_back(item.name);
    m_reader.enterFolder(folder, names);
    const std::string failsafe = m_session.failsafeFile();
    ListedEntry entry;
    for (const FolderItem& n : items) {
        entry.path = folder + n.name;
        // Another entry's exported file: opening it would open that entry.
        if (isExportedFileName(n.name))
            continue;
        // A name the editor refuses has no description.
        auto target = m_session.targetPathsOf(entry.path, n.isLink);
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

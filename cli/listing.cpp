#include "cli/listing.h"

#include <algorithm>
#include <cstdint>
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

// A folder's entries in byte order of their names. Most names differ in their first
// eight bytes, which compare as one number; moving a pointer costs less than moving
// an item.
struct SortKey {
    std::uint64_t leading;
    const FolderItem* item;

    bool operator<(const SortKey& other) const {
        return leading != other.leading ? leading < other.leading : item->name < other.item->name;
    }
};

// The first eight bytes of the name, the first in the highest place; shorter names are
// padded with zero bytes, which sort before every byte a name can hold.
std::uint64_t leadingBytes(std::string_view name) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < 8; ++i)
        value = value << 8 | (i < name.size() ? static_cast<unsigned char>(name[i]) : 0u);
    return value;
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
    std::vector<SortKey> sorted;
    sorted.reserve(items.size());
    for (const FolderItem& item : items)
        sorted.push_back({leadingBytes(item.name), &item});
    std::sort(sorted.begin(), sorted.end());
    std::vector<std::string> names;
    names.reserve(sorted.size());
    for (const SortKey& key : sorted)
        names.push_back(key.item->name);
    m_reader.enterFolder(folder, std::move(names));
    const std::string failsafe = m_session.failsafeFile();
    ListedEntry entry;
    for (const SortKey& key : sorted) {
        const FolderItem& n = *key.item;
        entry.path.assign(folder).append(n.name);
        // Another entry's exported file: opening it would open that entry.
        if (isExportedFileName(n.name))
            continue;
        // A name the editor refuses has no description.
        auto target = m_session.targetPathsOf(entry.path, n.isLink);
        entry.name = n.name;
        entry.isFolder = n.isFolder;
        entry.found = target ? findDescription(*target, failsafe, m_reader, CommentCheck::Skip)
                             : FoundDescription();
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

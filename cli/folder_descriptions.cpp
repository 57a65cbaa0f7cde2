#include "cli/folder_descriptions.h"

#include <sys/stat.h>

#include <algorithm>
#include <vector>

#include "core/load_sequence.h"
#include "core/paths.h"
#include "platform/code_page.h"
#include "platform/files.h"
#include "platform/lookup.h"
#include "stores/descript_ion.h"

namespace {

constexpr std::string_view kExportedSuffix = ".DESCRIPTION";

bool isExportedFileName(std::string_view name) {
    return name.size() > kExportedSuffix.size() &&
           upperCase(name.substr(name.size() - kExportedSuffix.size())) == kExportedSuffix;
}

// The folder's descript.ion as descriptIonFile() finds it, from the listing in hand
// rather than by reading a large folder a second time.
std::string descriptIonIn(const std::string& folder, const std::vector<FolderItem>& items) {
    constexpr std::string_view kLower = "descript.ion";
    auto matches = [&](const std::string& name) {
        return name.size() == kLower.size() &&
               std::equal(name.begin(), name.end(), kLower.begin(),
                          [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; });
    };
    // The lower-case name first, then the least name in byte order.
    auto rank = [&](const std::string& name) { return std::pair(name != kLower, name); };
    std::string found;
    for (const FolderItem& item : items) {
        if (matches(item.name) && (found.empty() || rank(item.name) < rank(found)) &&
            fileExists(folder + item.name))
            found = item.name;
    }
    return found.empty() ? "" : folder + found;
}

}  // namespace

FileSignature FileSignature::of(const std::string& path) {
    struct stat st {};
    if (path.empty() || ::stat(path.c_str(), &st) != 0)
        return {};
    return {true, st.st_dev, st.st_ino, st.st_size,
            std::int64_t{st.st_mtim.tv_sec} * 1'000'000'000 + st.st_mtim.tv_nsec};
}

FolderDescriptions::FolderDescriptions(DataPaths data, bool mayEnterFolders)
    : m_data(std::move(data)),
      m_failsafeFile(m_data.failsafeDBpath + "ver1.7.dat"),
      m_mayEnterFolders(mayEnterFolders) {}

ItemDescription FolderDescriptions::describe(const std::string& path) {
    return std::move(describe(std::vector<std::string>{path}).front());
}

std::vector<ItemDescription> FolderDescriptions::describe(const std::vector<std::string>& paths) {
    std::vector<ItemDescription> items(paths.size());
    std::lock_guard lock(m_mutex);
    refreshFailsafe();
    // A folder's shared files are checked once for each run of its items.
    for (std::size_t begin = 0, end = 0; begin < paths.size(); begin = end) {
        const std::string_view folderPath = folderOf(paths[begin]);
        while (end < paths.size() && folderOf(paths[end]) == folderPath)
            ++end;
        Folder& folder = readerFor(std::string(folderPath));
        // Another folder's reader may have been entered since.
        folder.reader->reenterFolder();
        describeRun(folder, paths, begin, end, items);
    }
    return items;
}

void FolderDescriptions::prepare(const std::string& folder) {
    std::lock_guard lock(m_mutex);
    refreshFailsafe();
    readerFor(withTrailingSeparator(folder));
}

std::vector<std::pair<std::string, ItemDescription>> FolderDescriptions::describeFolder(
    const std::string& folderPath, std::size_t first, std::size_t count) {
    std::lock_guard lock(m_mutex);
    refreshFailsafe();
    const std::string path = withTrailingSeparator(folderPath);
    Folder& folder = readerFor(path);
    folder.reader->reenterFolder();
    const std::size_t end = std::min(folder.items.size(), first + count);
    std::vector<std::string> paths;
    for (std::size_t i = first; i < end; ++i)
        paths.push_back(path + folder.items[i].name);
    std::vector<ItemDescription> items(paths.size());
    describeRun(folder, paths, 0, paths.size(), items);
    std::vector<std::pair<std::string, ItemDescription>> described;
    described.reserve(items.size());
    for (std::size_t i = 0; i < items.size(); ++i)
        described.emplace_back(folder.items[first + i].name, std::move(items[i]));
    return described;
}

void FolderDescriptions::describeRun(Folder& folder, const std::vector<std::string>& paths,
                                     std::size_t begin, std::size_t end,
                                     std::vector<ItemDescription>& items) {
    struct Asked {
        ino_t inode;
        std::size_t index;
        const FolderItem* listed;
    };
    std::vector<Asked> run;
    run.reserve(end - begin);
    for (std::size_t i = begin; i < end; ++i) {
        const FolderItem* listed = folder.listed(lastComponent(paths[i]));
        run.push_back({listed ? listed->inode : 0, i, listed});
    }
    // The items are read in the order of their inodes, the order in which the file
    // system keeps their attributes: far fewer misses than the listing's hash order.
    std::sort(run.begin(), run.end(),
              [](const Asked& a, const Asked& b) { return a.inode < b.inode; });
    for (const Asked& asked : run)
        items[asked.index] = describeIn(folder, paths[asked.index], asked.listed);
}

ItemDescription FolderDescriptions::describeIn(Folder& folder, const std::string& path,
                                               const FolderItem* listed) {
    const std::string_view name = lastComponent(path);
    // Another item's exported file: opening it would open that item.
    if (name.empty() || isExportedFileName(name))
        return {};
    // The listing tells what the item is; only one made after it is asked about.
    bool isLink = false;
    if (listed) {
        isLink = listed->isLink;
    } else {
        struct stat st {};
        if (::lstat(path.c_str(), &st) != 0)
            return {};
        isLink = S_ISLNK(st.st_mode);
    }
    auto target = m_checker.pathsOf(path, isLink, m_data);
    if (!target)
        return {};
    FoundDescription found =
        findDescription(*target, m_failsafe->file(), *folder.reader, CommentCheck::Skip);
    return {printedText(found), std::move(found.status)};
}

// A changed database is scanned again, and every folder's reader, which holds the old
// scan, is filled again.
void FolderDescriptions::refreshFailsafe() {
    FileSignature now = FileSignature::of(m_failsafeFile);
    if (m_failsafe && now == m_failsafeSeen)
        return;
    m_folders.clear();
    m_failsafeSeen = now;
    m_failsafe = std::make_unique<FailsafeScan>(m_failsafeFile, "/");
}

FolderDescriptions::Folder& FolderDescriptions::readerFor(const std::string& path) {
    auto [it, added] = m_folders.try_emplace(path);
    Folder& folder = it->second;
    folder.lastUse = ++m_uses;
    // A new or removed entry (an exported file, a descript.ion, an index replaced
    // through a temporary file) changes the folder itself.
    FileSignature now = FileSignature::of(path);
    if (!added && now == folder.folder &&
        FileSignature::of(path + "00_index.txt") == folder.index &&
        FileSignature::of(folder.descriptIonPath) == folder.descriptIon)
        return folder;
    fill(folder, path, now);
    if (added && m_folders.size() > kFoldersKept)
        dropLeastRecent();
    return folder;
}

void FolderDescriptions::fill(Folder& folder, const std::string& path, const FileSignature& now) {
    std::vector<FolderItem>& items = folder.items;
    folder.places.clear();
    folder.next = 0;
    const bool listed = !readFolder(path, items);
    folder.folder = now;
    folder.index = FileSignature::of(path + "00_index.txt");
    folder.descriptIonPath = listed ? descriptIonIn(path, items) : descriptIonFile(path);
    folder.descriptIon = FileSignature::of(folder.descriptIonPath);
    // The reader looks among the names for exported files only.
    std::vector<std::string> names;
    for (const FolderItem& item : items) {
        if (isExportedFileName(item.name))
            names.push_back(item.name);
    }
    folder.reader = std::make_unique<BatchReader>(*m_failsafe, m_mayEnterFolders);
    folder.reader->enterFolder(path, names);
}

const FolderItem* FolderDescriptions::Folder::listed(std::string_view name) {
    if (next < items.size() && items[next].name == name)
        return &items[next++];
    if (places.empty()) {
        places.reserve(items.size());
        for (std::size_t i = 0; i < items.size(); ++i)
            places.emplace(items[i].name, i);
    }
    auto place = places.find(name);
    if (place == places.end())
        return nullptr;
    next = place->second + 1;
    return &items[place->second];
}

void FolderDescriptions::dropLeastRecent() {
    auto oldest = std::min_element(m_folders.begin(), m_folders.end(), [](auto& a, auto& b) {
        return a.second.lastUse < b.second.lastUse;
    });
    m_folders.erase(oldest);
}

#include "filemanager/description_watch.h"

#include <algorithm>

#include "filemanager/glib_adapter.h"
#include "platform/code_page.h"

namespace {

constexpr std::string_view kExportedSuffix = ".DESCRIPTION";
// A save touches several files within a moment: the items are handed over once after it.
constexpr guint kSettleMs = 150;
// Folders watched at most; the one asked about least recently goes first.
constexpr std::size_t kFoldersWatched = 64;

std::string childPath(const std::string& folder, const std::string& name) {
    return folder == "/" ? folder + name : folder + "/" + name;
}

std::string taken(char* text) {
    std::string copy = text ? text : "";
    g_free(text);
    return copy;
}

}  // namespace

DescriptionWatch::DescriptionWatch(Stale stale) : m_stale(std::move(stale)) {}

DescriptionWatch::~DescriptionWatch() {
    if (m_handOver)
        g_source_remove(m_handOver);
    for (auto& [path, folder] : m_folders)
        g_object_unref(folder.monitor);
    if (m_failsafe)
        g_object_unref(m_failsafe);
}

void DescriptionWatch::asked(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos || slash + 1 == path.size())
        return;
    const std::string_view folderPath =
        std::string_view(path).substr(0, std::max<std::size_t>(slash, 1));
    // A folder's items are asked about in a row: its entry is looked up once for them.
    if (!m_last || folderPath != m_lastPath) {
        m_last = nullptr;
        auto it = m_folders.find(std::string(folderPath));
        if (it == m_folders.end())
            it = watchFolder(std::string(folderPath));
        if (it == m_folders.end())
            return;
        m_last = &it->second;
        m_lastPath = folderPath;
    }
    m_last->names.emplace_back(path, slash + 1);
    // Asked again after each change: the repeats are dropped before they pile up.
    if (m_last->names.size() > 2 * m_last->tidied + 65536)
        (void)m_last->askedNames();
    m_last->lastUse = ++m_uses;
}

void DescriptionWatch::missed() {
    if (m_last && !columnCache().isReading(m_lastPath) &&
        g_get_monotonic_time() - m_last->readAhead > kReadAheadAgainMs * 1000)
        readAhead(m_lastPath, *m_last);
}

void DescriptionWatch::readAhead(const std::string& path, Folder& folder) {
    folder.readAhead = g_get_monotonic_time();
    readAheadColumns(path);
}

const std::vector<std::string>& DescriptionWatch::Folder::askedNames() {
    if (tidied != names.size()) {
        std::sort(names.begin(), names.end());
        names.erase(std::unique(names.begin(), names.end()), names.end());
        tidied = names.size();
    }
    return names;
}

bool DescriptionWatch::Folder::wasAsked(const std::string& name) {
    const auto& asked = askedNames();
    return std::binary_search(asked.begin(), asked.end(), name);
}

std::unordered_map<std::string, DescriptionWatch::Folder>::iterator DescriptionWatch::watchFolder(
    const std::string& folderPath) {
    if (!m_failsafe)
        m_failsafe = monitor(failsafeDatabase(), false, G_CALLBACK(onFailsafeChanged));
    // Both take a while in a large folder: the reader lists it while the watch starts.
    // The items' requests come after the watch and check the shared stores again, so a
    // change in between is not missed.
    prepareFolder(folderPath);
    GFileMonitor* folder = monitor(folderPath, true, G_CALLBACK(onFolderChanged));
    if (!folder)
        return m_folders.end();
    auto it = m_folders.try_emplace(folderPath).first;
    it->second.monitor = folder;
    // Only now: what changes from here on is forgotten as it is seen.
    readAhead(folderPath, it->second);
    if (m_folders.size() > kFoldersWatched)
        dropLeastRecent();
    return m_folders.find(folderPath);
}

GFileMonitor* DescriptionWatch::monitor(const std::string& path, bool isFolder, GCallback changed) {
    GFile* file = g_file_new_for_path(path.c_str());
    GFileMonitor* monitor =
        isFolder ? g_file_monitor_directory(file, G_FILE_MONITOR_WATCH_MOVES, nullptr, nullptr)
                 : g_file_monitor_file(file, G_FILE_MONITOR_WATCH_MOVES, nullptr, nullptr);
    g_object_unref(file);
    if (monitor)
        g_signal_connect(monitor, "changed", changed, this);
    return monitor;
}

void DescriptionWatch::dropLeastRecent() {
    auto oldest = std::min_element(m_folders.begin(), m_folders.end(), [](auto& a, auto& b) {
        return a.second.lastUse < b.second.lastUse;
    });
    g_object_unref(oldest->second.monitor);
    columnCache().forgetFolder(oldest->first);
    if (m_last == &oldest->second)
        m_last = nullptr;
    m_folders.erase(oldest);
}

void DescriptionWatch::onFolderChanged(GFileMonitor*, GFile* child, GFile* other,
                                       GFileMonitorEvent event, gpointer self) {
    if (event == G_FILE_MONITOR_EVENT_CHANGES_DONE_HINT)
        return;
    auto* watch = static_cast<DescriptionWatch*>(self);
    // A store replaced through a temporary file arrives under its own name.
    for (GFile* file : {child, other}) {
        if (!file)
            continue;
        GFile* parent = g_file_get_parent(file);
        if (!parent)
            continue;
        watch->folderChanged(taken(g_file_get_path(parent)), taken(g_file_get_basename(file)),
                             event);
        g_object_unref(parent);
    }
}

void DescriptionWatch::onFailsafeChanged(GFileMonitor*, GFile*, GFile*, GFileMonitorEvent event,
                                         gpointer self) {
    if (event == G_FILE_MONITOR_EVENT_CHANGES_DONE_HINT)
        return;
    auto* watch = static_cast<DescriptionWatch*>(self);
    columnCache().forgetAll();
    for (auto& [path, folder] : watch->m_folders)
        folder.allStale = true;
    watch->scheduleHandOver();
}

void DescriptionWatch::folderChanged(const std::string& folderPath, const std::string& name,
                                     GFileMonitorEvent event) {
    auto it = m_folders.find(folderPath);
    if (it == m_folders.end()) {
        // The watched folder itself, moved or deleted.
        columnCache().forgetFolder(childPath(folderPath, name));
        return;
    }
    Folder& folder = it->second;
    columnCache().forget(childPath(folderPath, name));
    const std::string upper = upperCase(name);
    if (upper == "00_INDEX.TXT" || upper == "DESCRIPT.ION") {
        columnCache().forgetFolder(folderPath);
        folder.allStale = true;
    } else if (upper.size() > kExportedSuffix.size() && upper.ends_with(kExportedSuffix)) {
        std::string described = name.substr(0, name.size() - kExportedSuffix.size());
        columnCache().forget(childPath(folderPath, described));
        if (folder.wasAsked(described))
            folder.stale.insert(std::move(described));
    } else if (event == G_FILE_MONITOR_EVENT_ATTRIBUTE_CHANGED && folder.wasAsked(name)) {
        // Its stream: an answer read ahead may have been handed out before the change.
        folder.stale.insert(name);
    } else {
        return;
    }
    scheduleHandOver();
}

void DescriptionWatch::scheduleHandOver() {
    if (!m_handOver)
        m_handOver = g_timeout_add(kSettleMs, handOver, this);
}

gboolean DescriptionWatch::handOver(gpointer self) {
    auto* watch = static_cast<DescriptionWatch*>(self);
    watch->m_handOver = 0;
    // Collected first: the file manager may ask about an item again while it is told,
    // which adds to these lists, or even watches another folder.
    std::vector<std::string> stale;
    for (auto& [folderPath, folder] : watch->m_folders) {
        const std::string& path = folderPath;  // for the lambda: bindings are not captured
        // The file manager asks about each of them again, one at a time.
        if (folder.allStale && !folder.names.empty())
            readAhead(path, folder);
        auto add = [&](const std::string& name) { stale.push_back(childPath(path, name)); };
        if (folder.allStale)
            std::ranges::for_each(folder.askedNames(), add);
        else
            std::ranges::for_each(folder.stale, add);
        folder.allStale = false;
        folder.stale.clear();
    }
    for (const std::string& path : stale) {
        GFile* item = g_file_new_for_path(path.c_str());
        watch->m_stale(item);
        g_object_unref(item);
    }
    return G_SOURCE_REMOVE;
}
